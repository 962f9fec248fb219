#include <span>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include "platform/foundation/NSPropertyList.h"

namespace {

NSPropertyList read(const std::string& xml) {
  return NSPropertyList::propertyListWithData(std::as_bytes(std::span(xml)), "Test.plist");
}

TEST(APropertyList, HoldsWhatIsWritten) {
  const auto list = read(
      "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>on</key><true/>"
      "<key>off</key><false/><key>names</key><array><string>a &amp; b</string></array></dict>"
      "</plist>");
  EXPECT_TRUE(*list.objectForKey("on")->boolean());
  EXPECT_FALSE(*list.objectForKey("off")->boolean());
  EXPECT_EQ(*list.objectForKey("names")->array()->at(0).string(), "a & b");
  EXPECT_EQ(list.objectForKey("names")->objectForKey("on"), nullptr);
  EXPECT_EQ(list.objectForKey("missing"), nullptr);
  EXPECT_EQ(list.string(), nullptr);
}

TEST(AMalformedPropertyList, IsRefusedWithTheNameOfItsFile) {
  for (const auto* xml :
       {"", "plain text", "<plist><dict>", "<plist/>", "<other><true/></other>",
        "<plist><dict><true/></dict></plist>", "<plist><dict><key>k</key></dict></plist>",
        "<plist><date>2020</date></plist>"}) {
    EXPECT_THAT([&] { read(xml); },
                testing::ThrowsMessage<std::runtime_error>(testing::StartsWith("Test.plist: ")))
        << xml;
  }
}

}  // namespace
