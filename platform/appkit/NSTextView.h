#pragma once

#include <memory>
#include <string>

#include "platform/appkit/NSColor.h"
#include "platform/appkit/NSFont.h"
#include "platform/appkit/NSLayoutManager.h"
#include "platform/appkit/NSText.h"
#include "platform/appkit/NSTextContainer.h"
#include "platform/appkit/NSTextStorage.h"
#include "platform/appkit/NSView.h"

/// Shows a text of many lines. Lives on the main queue.
class NSTextView : public NSView {
 public:
  /// Makes a view with neither a container nor a layout manager.
  NSTextView();
  /// `container` may be null; there is no layout manager until one is set.
  NSTextView(NSRect frame, std::shared_ptr<NSTextContainer> container);
  /// Makes a view with a container that is as wide as the view and follows it, and with a layout
  /// manager that measures by the coder's measurer. Reads the value "alignment" and the children
  /// "font" and "textColor".
  explicit NSTextView(const NSCoder& coder);

  /// The text, in UTF-8.
  const std::string& string() const { return storage_->string(); }
  /// Replaces the text. It is laid out when that is asked for; `didChangeText` is not called, as
  /// the change is the program's and not the user's.
  void setString(std::string text);
  /// To be called after the user has changed the text.
  virtual void didChangeText();

  NSColor textColor() const { return textColor_; }
  void setTextColor(NSColor color) { store(textColor_, color); }

  NSTextAlignment alignment() const { return alignment_; }
  void setAlignment(NSTextAlignment alignment) { store(alignment_, alignment); }

  /// Null for the platform's default font.
  const std::shared_ptr<const NSFont>& font() const { return storage_->font(); }
  void setFont(std::shared_ptr<const NSFont> font);

  /// Null where there is none.
  const std::shared_ptr<NSLayoutManager>& layoutManager() const { return layoutManager_; }
  /// Makes `layoutManager` lay out this view's text.
  void setLayoutManager(std::shared_ptr<NSLayoutManager> layoutManager);

  /// Null where there is none.
  const std::shared_ptr<NSTextContainer>& textContainer() const { return textContainer_; }

 protected:
  void frameSizeDidChange() override;

 private:
  std::shared_ptr<NSTextStorage> storage_ = std::make_shared<NSTextStorage>();
  std::shared_ptr<NSTextContainer> textContainer_;
  std::shared_ptr<NSLayoutManager> layoutManager_;
  NSColor textColor_ = NSColor::labelColor();
  NSTextAlignment alignment_ = NSTextAlignmentLeft;
};
