#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platform/appkit/NSInterfaceLoader.h"
#include "platform/appkit/NSViewController.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSClassRegistry.h"
#include "platform/foundation/NSPropertyList.h"
#include "platform/notification_center/NCWidgetProviding.h"
#include "platform/notification_center/NSExtensionMain.h"
#include "tests/support/TemporaryFolder.h"

namespace {

/// Connects an empty view, whatever the file.
class EmptyViewLoader final : public NSInterfaceLoader {
 public:
  void instantiate(std::string_view, const NSBundle*, NSViewController& owner) const override {
    owner.connectOutlet("view", std::make_shared<NSView>());
  }
};

class Widget final : public NSViewController, public NCWidgetProviding {
 public:
  using NSViewController::NSViewController;
  void widgetPerformUpdateWithCompletionHandler(CompletionHandler) override {}
};

class AnExtension : public testing::Test {
 protected:
  AnExtension() {
    registerPrincipal<Widget>("Corvella.TodayViewController");
    registerPrincipal<NSViewController>("Corvella.NoWidget");
    classes_.registerClass("Corvella.View", NSClass::decoded<NSView>());
  }

  template <class Class>
  void registerPrincipal(const char* name) {
    classes_.registerClass(
        name, NSClass::initialised<Class>([this] { return std::make_shared<Class>(loader_); }));
  }

  EmptyViewLoader loader_;
  NSClassRegistry classes_;
};

TEST_F(AnExtension, StartsAsItsPropertyListSays) {
  const auto controller = NSExtensionMain(NSBundle(CORVELLA_RESOURCES), classes_);
  EXPECT_NE(std::dynamic_pointer_cast<Widget>(controller), nullptr);
  EXPECT_TRUE(controller->isViewLoaded());
}

std::string extensionOf(const std::string& point, const std::string& principal) {
  return "<dict><key>NSExtensionPointIdentifier</key><string>" + point +
         "</string><key>NSExtensionPrincipalClass</key>" + principal + "</dict>";
}

TEST_F(AnExtension, IsRefusedWithTheNameOfItsPropertyListAndTheFault) {
  constexpr auto widget = "com.apple.widget-extension";
  const std::vector<std::pair<std::string, std::string>> rows{
      {"", "cannot be read"},
      {"<true/>", "NSExtension has no text 'NSExtensionPointIdentifier'"},
      {extensionOf("com.apple.share-services", "<string/>"),
       "unknown extension point 'com.apple.share-services'"},
      {extensionOf(widget, "<true/>"), "NSExtension has no text 'NSExtensionPrincipalClass'"},
      {extensionOf(widget, "<string>Corvella.Gone</string>"),
       "unknown principal class 'Corvella.Gone'"},
      // Only interface files create this one.
      {extensionOf(widget, "<string>Corvella.View</string>"),
       "unknown principal class 'Corvella.View'"},
      {extensionOf(widget, "<string>Corvella.NoWidget</string>"),
       "the principal class is not a widget's view controller 'Corvella.NoWidget'"}};
  for (const auto& [extension, fault] : rows) {
    const Corvella::TemporaryFolder folder;
    const auto file = folder.path() / "Info.plist";
    if (!extension.empty()) {
      folder.write("Info.plist",
                   "<plist><dict><key>NSExtension</key>" + extension + "</dict></plist>");
    }
    try {
      NSExtensionMain(NSBundle(folder.path()), classes_);
      ADD_FAILURE() << "was started; expected: " << fault;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), file.string() + ": " + fault);
    }
  }
}

}  // namespace
