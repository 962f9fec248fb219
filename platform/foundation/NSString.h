#pragma once

#include <string>
#include <string_view>

/// The platform's text services for UTF-8 texts. Any thread; bytes that are not UTF-8 count as
/// U+FFFD.
namespace NSString {

/// Case-sensitive equality under which texts that differ only in their Unicode normalization are
/// equal (canonical equivalence).
bool isEqualToString(std::string_view left, std::string_view right);

/// The full Unicode lowercase form, the same in every locale.
std::string lowercaseString(std::string_view text);

/// The decimal number at the start of the text, white space before it skipped and what follows it
/// ignored: an optional sign, digits with an optional full stop, an optional exponent. 0.0 when the
/// text does not start with one; infinite beyond the range of `double`. The same in every locale.
double doubleValue(std::string_view text);

}  // namespace NSString
