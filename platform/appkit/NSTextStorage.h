#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/appkit/NSFont.h"

/// The text that a view shows and a layout manager lays out. Shared by the two. Lives on the main
/// queue.
class NSTextStorage {
 public:
  /// The text, in UTF-8.
  const std::string& string() const { return string_; }
  /// Null for the platform's default font.
  const std::shared_ptr<const NSFont>& font() const { return font_; }

  /// Each gives whether the new value differs from the old one.
  bool setString(std::string string);
  bool setFont(std::shared_ptr<const NSFont> font);

  /// Grows whenever the text or its font is replaced by a different one.
  std::uint64_t revision() const { return revision_; }

 private:
  std::string string_;
  std::shared_ptr<const NSFont> font_;
  std::uint64_t revision_ = 0;
};
