#include <memory>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include "platform/appkit/NSInterfaceLoader.h"
#include "platform/appkit/NSViewController.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSClassRegistry.h"
#include "platform/foundation/NSPropertyList.h"
#include "platform/notification_center/NCWidgetProviding.h"
#include "platform/notification_center/NSExtensionMain.h"
#include "tests/support/RowName.h"
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

struct FaultRow {
  const char* name;
  std::string extension;
  const char* error;
};

class AFaultyExtension : public AnExtension, public testing::WithParamInterface<FaultRow> {
 protected:
  std::string errorOf(const Corvella::TemporaryFolder& folder) const {
    try {
      NSExtensionMain(NSBundle(folder.path()), classes_);
      return "no error";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }
};

TEST_P(AFaultyExtension, IsRefusedWithTheNameOfItsPropertyListAndTheFault) {
  const Corvella::TemporaryFolder folder;
  const auto file = folder.write("Info.plist", "<plist><dict><key>NSExtension</key>" +
                                                   GetParam().extension + "</dict></plist>");
  EXPECT_EQ(errorOf(folder), file.string() + ": " + GetParam().error);
}

std::string extensionOf(const std::string& point, const std::string& principal) {
  return "<dict><key>NSExtensionPointIdentifier</key><string>" + point +
         "</string><key>NSExtensionPrincipalClass</key>" + principal + "</dict>";
}

FaultRow withPrincipal(const char* name, const std::string& principal, const char* error) {
  return {name, extensionOf("com.apple.widget-extension", principal), error};
}

INSTANTIATE_TEST_SUITE_P(
    , AFaultyExtension,
    testing::Values(
        FaultRow{"NoDictionary", "<true/>", "NSExtension has no text 'NSExtensionPointIdentifier'"},
        FaultRow{"AnotherPoint", extensionOf("com.apple.share-services", "<string/>"),
                 "unknown extension point 'com.apple.share-services'"},
        withPrincipal("NoPrincipalClass", "<true/>",
                      "NSExtension has no text 'NSExtensionPrincipalClass'"),
        withPrincipal("UnknownClass", "<string>Corvella.Gone</string>",
                      "unknown principal class 'Corvella.Gone'"),
        withPrincipal("ClassThatOnlyFilesCreate", "<string>Corvella.View</string>",
                      "unknown principal class 'Corvella.View'"),
        withPrincipal("NoWidget", "<string>Corvella.NoWidget</string>",
                      "the principal class is not a widget's view controller 'Corvella.NoWidget'")),
    rowName);

TEST_F(AFaultyExtension, IsRefusedWithoutAPropertyList) {
  const Corvella::TemporaryFolder folder;
  EXPECT_EQ(errorOf(folder), (folder.path() / "Info.plist").string() + ": cannot be read");
}

}  // namespace
