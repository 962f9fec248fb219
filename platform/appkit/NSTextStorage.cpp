#include "platform/appkit/NSTextStorage.h"

#include <utility>

bool NSTextStorage::setString(std::string string) {
  if (string == string_) return false;
  string_ = std::move(string);
  ++revision_;
  return true;
}

bool NSTextStorage::setFont(std::shared_ptr<const NSFont> font) {
  if (NSFont::areEqual(font.get(), font_.get())) return false;
  font_ = std::move(font);
  ++revision_;
  return true;
}
