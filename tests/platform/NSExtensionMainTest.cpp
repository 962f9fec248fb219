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

std::string extensionOf(const std::string& point, const std::string& principal) {
  return "<dict><key>NSExtensionPointIdentifier</key><string>" + point +
         "</string><key>NSExtensionPrincipalClass</key>" + principal + "</dict>";
}

TEST(AnExtension, IsRefusedWithTheNameOfItsPropertyListAndTheFault) {
  const EmptyLoader loader;
  NSClassRegistry classes;
  classes.registerClass("Corvella.NoWidget", NSClass::initialised<NSViewController>([&] {
                          return std::make_shared<NSViewController>(loader);
                        }));
  classes.registerClass("Corvella.View", NSClass::decoded<NSView>());
  constexpr auto widget = "com.apple.widget-extension";
  const std::vector<std::pair<std::string, std::string>> rows{
      {"", "cannot be read"},
      {"<true/>", "NSExtension has no text 'NSExtensionPointIdentifier'"},
      {extensionOf("com.apple.share-services", "<string/>"),
       "unknown extension point 'com.apple.share-services'"},
      {extensionOf(widget, "<true/>"), "NSExtension has no text 'NSExtensionPrincipalClass'"},
      {extensionOf(widget, "<string>Corvella.Gone</string>"),
       "unknown principal class 'Corvella.Gone'"},
      // Objects of this class are created by interface files only.
      {extensionOf(widget, "<string>Corvella.View</string>"),
       "unknown principal class 'Corvella.View'"},
      {extensionOf(widget, "<string>Corvella.NoWidget</string>"),
       "the principal class is not a widget's view controller 'Corvella.NoWidget'"}};
  for (const auto& [extension, fault] : rows) {
    const Corvella::TemporaryFolder folder;
    if (!extension.empty()) {
      folder.write("Info.plist",
                   "<plist><dict><key>NSExtension</key>" + extension + "</dict></plist>");
    }
    EXPECT_THAT([&] { NSExtensionMain(NSBundle(folder.path()), classes); },
                testing::ThrowsMessage<std::runtime_error>((folder.path() / "Info.plist").string() +
                                                           ": " + fault));
  }
}

}  // namespace
