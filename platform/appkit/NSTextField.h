#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/appkit/NSColor.h"
#include "platform/appkit/NSControl.h"
#include "platform/appkit/NSFont.h"
#include "platform/appkit/NSText.h"

/// A line of text. Lives on the main queue.
class NSTextField : public NSControl {
 public:
  explicit NSTextField(NSRect frame = {});
  /// Reads the children "font" and "textColor" and the values "title" and "alignment" from the
  /// control's cell.
  explicit NSTextField(const NSCoder& coder);

  /// The text, in UTF-8.
  const std::string& stringValue() const { return stringValue_; }
  void setStringValue(std::string text) { store(stringValue_, std::move(text)); }

  NSColor textColor() const { return textColor_; }
  /// Null for the platform's default font.
  const std::shared_ptr<const NSFont>& font() const { return font_; }
  NSTextAlignment alignment() const { return alignment_; }

 private:
  std::string stringValue_;
  NSColor textColor_ = NSColor::labelColor();
  std::shared_ptr<const NSFont> font_;
  NSTextAlignment alignment_ = NSTextAlignmentLeft;
};
