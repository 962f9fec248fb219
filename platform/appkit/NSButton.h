#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/appkit/NSControl.h"
#include "platform/appkit/NSFont.h"

/// A push button. Lives on the main queue.
class NSButton : public NSControl {
 public:
  explicit NSButton(NSRect frame = {});
  /// Reads the value "title" and the child "font" from the control's cell.
  explicit NSButton(const NSCoder& coder);

  /// The text on the button, in UTF-8.
  const std::string& title() const { return title_; }
  void setTitle(std::string title) { store(title_, std::move(title)); }

  /// Null for the platform's default font.
  const std::shared_ptr<const NSFont>& font() const { return font_; }

  /// Sends the action as a click does; a button that is not enabled does nothing.
  void performClick();

 private:
  std::string title_;
  std::shared_ptr<const NSFont> font_;
};
