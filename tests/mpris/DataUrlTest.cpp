#include <algorithm>
#include <iterator>
#include <optional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "players/mpris/DataUrl.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

std::optional<std::string> textOfDataUrl(const std::string& url) {
  const auto bytes = bytesOfDataUrl(url);
  if (!bytes) return std::nullopt;
  std::string text;
  std::transform(bytes->begin(), bytes->end(), std::back_inserter(text),
                 [](std::byte byte) { return static_cast<char>(byte); });
  return text;
}

struct Row {
  const char* name;
  std::string url;
  std::optional<std::string> content;
};

void PrintTo(const Row& row, std::ostream* out) {
  *out << row.url;
}

class ADataAddress : public testing::TestWithParam<Row> {};

TEST_P(ADataAddress, HoldsTheseBytes) {
  EXPECT_EQ(textOfDataUrl(GetParam().url), GetParam().content);
}

INSTANTIATE_TEST_SUITE_P(
    Base64, ADataAddress,
    testing::Values(Row{"ThreeBytes", "data:image/png;base64,QUJD", "ABC"},
                    Row{"Padded", "data:image/png;base64,QUI=", "AB"},
                    Row{"PaddedTwice", "data:image/png;base64,QQ==", "A"},
                    Row{"Unpadded", "data:image/png;base64,QUJDRA", "ABCD"},
                    Row{"AllDigits", "data:;base64,+/+/", "\xFB\xFF\xBF"},
                    Row{"NoMediaType", "data:;base64,QUJD", "ABC"},
                    Row{"Parameters", "data:image/png;name=a.png;base64,QUJD", "ABC"},
                    Row{"Capitals", "DATA:image/PNG;BASE64,QUJD", "ABC"},
                    Row{"Blanks", "data:image/png; base64, QU\r\n\tJ D ", "ABC"},
                    Row{"EscapedDigits", "data:;base64,QUI%3D%0A", "AB"},
                    Row{"Nothing", "data:;base64,", ""},
                    Row{"OneDigitTooMany", "data:;base64,QUJDR", std::nullopt},
                    Row{"ForeignDigit", "data:;base64,QU-D", std::nullopt},
                    Row{"ByteBeyondAscii", "data:;base64,QUJ\xC3\xA9", std::nullopt},
                    Row{"PaddingInside", "data:;base64,QQ==QUJD", std::nullopt},
                    Row{"PaddingAlone", "data:;base64,====", std::nullopt},
                    Row{"PaddingThatFillsNoGroup", "data:;base64,QUJD=", std::nullopt}),
    rowName);

INSTANTIATE_TEST_SUITE_P(Percent, ADataAddress,
                         testing::Values(Row{"Escapes", "data:image/png,%89PNG%0d%0A",
                                             "\x89PNG\r\n"},
                                         Row{"Nul", "data:,a%00b", std::string("a\0b", 3)},
                                         Row{"FurtherCommas", "data:text/plain,a,b", "a,b"},
                                         Row{"BlanksKept", "data:,a b", "a b"},
                                         Row{"Base64WithoutSemicolon", "data:base64,QUJD", "QUJD"},
                                         Row{"BadEscape", "data:image/png,%8", std::nullopt},
                                         Row{"NoHexadecimal", "data:image/png,%zz", std::nullopt},
                                         Row{"NoComma", "data:image/png;base64", std::nullopt},
                                         Row{"OtherScheme", "date:,A", std::nullopt}),
                         rowName);

}  // namespace
}  // namespace Corvella
