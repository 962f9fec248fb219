#include "platform/foundation/NSAppleScript.h"

#include <string_view>

namespace {

std::string inQuotes(std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string result = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      result += {'\\', c};
    } else if (byte < 0x20 || byte == 0x7f) {
      result += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xfU]};
    } else {
      result += c;
    }
  }
  return result += '"';
}

}  // namespace

std::string NSAppleScriptErrorInformation::description() const {
  return "{NSAppleScriptErrorAppName = " + inQuotes(appName) +
         "; NSAppleScriptErrorBriefMessage = " + inQuotes(briefMessage) +
         "; NSAppleScriptErrorMessage = " + inQuotes(message) +
         "; NSAppleScriptErrorNumber = " + std::to_string(number) + ";}";
}
