#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platform/appkit/NSViewController.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSClassRegistry.h"
#include "platform/notification_center/NSExtensionMain.h"
#include "tests/support/TemporaryFolder.h"

namespace {

struct EmptyLoader final : NSInterfaceLoader {
  void instantiate(std::string_view, const NSBundle*, NSViewController&) const override {}
};

TEST(AViewController, TellsTheHostOfEachNewPreferredSizeOnce) {
  const EmptyLoader loader;
  NSViewController controller(loader);
  std::vector<NSSize> told;
  controller.setPreferredContentSizeObserver([&](NSSize size) {
    EXPECT_EQ(controller.preferredContentSize(), size);
    told.push_back(size);
  });
  for (const double height : {285.0, 285.0, std::numeric_limits<double>::infinity(), -1.0}) {
    controller.setPreferredContentSize({.width = 320, .height = height});
  }
  EXPECT_EQ(told, (std::vector<NSSize>{{.width = 320, .height = 285}, {.width = 320}}));
}

/// The property list of an extension with that element as its principal class.
std::string listWith(const std::string& principal,
                     const std::string& point = "com.apple.widget-extension") {
  return "<plist><dict><key>NSExtension</key><dict><key>NSExtensionPointIdentifier</key><string>" +
         point + "</string><key>NSExtensionPrincipalClass</key>" + principal +
         "</dict></dict></plist>";
}

TEST(AnExtension, IsRefusedWithTheNameOfItsPropertyListAndTheFault) {
  const EmptyLoader loader;
  NSClassRegistry classes;
  classes.registerClass("NoWidget", NSClass::initialised<NSViewController>([&] {
                          return std::make_shared<NSViewController>(loader);
                        }));
  classes.registerClass("View", NSClass::decoded<NSView>());
  const std::vector<std::pair<std::string, std::string>> rows{
      {"", "No document element found"},
      {"<plist/>", "no property list inside"},
      {"<other><true/></other>", "no property list inside"},
      {"<plist><dict><true/></dict></plist>", "a value without a key"},
      {"<plist><dict><key>k</key></dict></plist>", "no value for the key k"},
      {"<plist><date>2020</date></plist>", "unknown kind of value <date>"},
      {"<plist><dict/></plist>", "NSExtension has no text 'NSExtensionPointIdentifier'"},
      {"<plist><true/></plist>", "NSExtension has no text 'NSExtensionPointIdentifier'"},
      {listWith("<string/>", "com.apple.share-services"),
       "unknown extension point 'com.apple.share-services'"},
      {listWith("<true/>"), "NSExtension has no text 'NSExtensionPrincipalClass'"},
      {listWith("<string>Gone</string>"), "unknown principal class 'Gone'"},
      // Objects of this class are created by interface files only.
      {listWith("<string>View</string>"), "unknown principal class 'View'"},
      {listWith("<string>NoWidget</string>"),
       "the principal class is not a widget's view controller 'NoWidget'"}};
  const Corvella::TemporaryFolder folder;
  const auto start = [&] { NSExtensionMain(NSBundle(folder.path()), classes); };
  const auto path = (folder.path() / "Info.plist").string();
  EXPECT_THAT(start, testing::ThrowsMessage<std::runtime_error>(path + ": cannot be read"));
  for (const auto& [list, fault] : rows) {
    folder.write("Info.plist", list);
    EXPECT_THAT(start, testing::ThrowsMessage<std::runtime_error>(path + ": " + fault)) << list;
  }
}

}  // namespace
