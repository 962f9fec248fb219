#include "platform/foundation/NSCoder.h"

#include <charconv>
#include <cmath>
#include <stdexcept>
#include <system_error>

NSCoder& NSCoder::encodeChild(std::string key, std::string place) {
  auto child = std::make_unique<NSCoder>(std::move(place), textMeasurer_, fontFinder_);
  return *children_.insert_or_assign(std::move(key), std::move(child)).first->second;
}

std::string NSCoder::decodeStringForKey(std::string_view key) const {
  const std::string* const text = find(key);
  return text ? *text : std::string();
}

double NSCoder::decodeDoubleForKey(std::string_view key, double otherwise) const {
  const std::string* const text = find(key);
  if (!text) return otherwise;
  double number = 0;
  const char* const end = text->data() + text->size();
  const auto [rest, error] = std::from_chars(text->data(), end, number);
  if (error != std::errc() || rest != end || !std::isfinite(number)) failForKey(key);
  return number;
}

const NSCoder* NSCoder::childForKey(std::string_view key) const {
  const auto child = children_.find(key);
  return child == children_.end() ? nullptr : child->second.get();
}

const NSCoder& NSCoder::cell() const {
  const NSCoder* const cell = childForKey("cell");
  return cell ? *cell : *this;
}

void NSCoder::failForKey(std::string_view key) const {
  throw std::runtime_error(place_ + ": " + std::string(key) + " cannot be '" +
                           decodeStringForKey(key) + "'");
}

const std::string* NSCoder::find(std::string_view key) const {
  const auto value = values_.find(key);
  return value == values_.end() ? nullptr : &value->second;
}
