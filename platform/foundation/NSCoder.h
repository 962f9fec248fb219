#pragma once

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

class NSFontFinder;
class NSTextMeasurer;

/// The keyed values of one element of an interface file: its attributes as texts, and its child
/// elements, each a coder of its own. The loader fills it; an object's constructor reads it and
/// keeps nothing of it.
///
/// A child stands under its `key` attribute or, without one, under its id or the name of its
/// element. Every decode operation gives `otherwise` where the key is missing and fails, as
/// `failForKey` does, where the value is not of the kind asked for. Lives on the main queue.
class NSCoder {
 public:
  /// `place` says where the element stands, such as "TodayViewController.xib:42", for errors. The
  /// services must outlive every object that is created from the coder.
  NSCoder(std::string place, const NSTextMeasurer& textMeasurer, const NSFontFinder& fontFinder)
      : place_(std::move(place)), textMeasurer_(textMeasurer), fontFinder_(fontFinder) {}

  void encodeString(std::string key, std::string value) {
    values_.insert_or_assign(std::move(key), std::move(value));
  }
  /// Adds an empty child, or replaces the one of that key. Owned by this coder.
  NSCoder& encodeChild(std::string key, std::string place);

  /// Whether there is a value or a child of that key.
  bool containsValueForKey(std::string_view key) const { return find(key) || childForKey(key); }

  /// Empty where the key is missing.
  std::string decodeStringForKey(std::string_view key) const;
  /// "YES" or "NO".
  bool decodeBoolForKey(std::string_view key, bool otherwise = false) const {
    return decodeCaseForKey(key, {{"YES", true}, {"NO", false}}, otherwise);
  }
  /// A finite decimal number with a full stop.
  double decodeDoubleForKey(std::string_view key, double otherwise = 0) const;
  /// The value that `cases` gives for the text.
  template <class Value>
  Value decodeCaseForKey(std::string_view key,
                         std::initializer_list<std::pair<std::string_view, Value>> cases,
                         Value otherwise) const {
    const std::string* const text = find(key);
    if (!text) return otherwise;
    for (const auto& [name, value] : cases) {
      if (*text == name) return value;
    }
    failForKey(key);
  }
  /// Null where there is no child of that key. Owned by this coder.
  const NSCoder* childForKey(std::string_view key) const;
  /// The element that holds a control's settings: its child "cell", or itself without one.
  const NSCoder& cell() const;

  /// Throws `std::runtime_error` that names the element's place, the key and its value.
  [[noreturn]] void failForKey(std::string_view key) const;

  const NSTextMeasurer& textMeasurer() const { return textMeasurer_; }
  const NSFontFinder& fontFinder() const { return fontFinder_; }

 private:
  const std::string* find(std::string_view key) const;

  std::string place_;
  const NSTextMeasurer& textMeasurer_;
  const NSFontFinder& fontFinder_;
  std::map<std::string, std::string, std::less<>> values_;
  std::map<std::string, std::unique_ptr<NSCoder>, std::less<>> children_;
};
