#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "players/mpris/artwork/DataUrl.h"
#include "tests/support/Bytes.h"

namespace Corvella {
namespace {

std::optional<std::string> textIn(const std::string& url) {
  return textOf(bytesOfDataUrl(url));
}

TEST(ADataAddress, HoldsTheseBytes) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"data:image/png;base64,QUJD", "ABC"},
      {"data:image/png;base64,QUI=", "AB"},
      {"data:;base64,QQ==", "A"},
      {"data:image/png;base64,QUJDRA", "ABCD"},  // without its padding
      {"data:;base64,+/+/", "\xFB\xFF\xBF"},
      {"data:image/png;name=a.png;base64,QUJD", "ABC"},
      {"DATA:image/PNG;BASE64,QUJD", "ABC"},
      {"data:image/png; base64, QU\r\n\tJ D ", "ABC"},
      {"data:;base64,QUI%3D%0A", "AB"},
      {"data:;base64,", ""},
      {"data:image/png,%89PNG%0d%0A", "\x89PNG\r\n"},
      {"data:,a%00b", std::string("a\0b", 3)},
      {"data:text/plain,a, b", "a, b"},
      {"data:base64,QUJD", "QUJD"}};  // without the semicolon
  for (const auto& [url, bytes] : rows) EXPECT_EQ(textIn(url), bytes) << url;
}

TEST(ADataAddress, HoldsNothingWhereItIsMalformed) {
  for (const char* digits : {"QUJDR", "QU-D", "QUJ\xC3\xA9", "QQ==QUJD", "====", "QUJD="}) {
    EXPECT_EQ(textIn(std::string("data:;base64,") + digits), std::nullopt) << digits;
  }
  for (const char* url : {"data:,%8", "data:,%zz", "data:image/png;base64", "date:,A"}) {
    EXPECT_EQ(textIn(url), std::nullopt) << url;
  }
}

}  // namespace
}  // namespace Corvella
