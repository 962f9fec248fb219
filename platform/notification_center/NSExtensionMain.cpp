#include "platform/notification_center/NSExtensionMain.h"

#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/appkit/NSViewController.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSClassRegistry.h"
#include "platform/foundation/NSPropertyList.h"
#include "platform/notification_center/NCWidgetProviding.h"

namespace {

constexpr std::string_view widgetExtensionPoint = "com.apple.widget-extension";

/// The property list that describes an extension.
class Description {
 public:
  explicit Description(const NSBundle& bundle) : path_(bundle.pathForResource("Info.plist")) {
    const auto bytes = bundle.dataForResource("Info.plist");
    if (!bytes) fail("cannot be read");
    content_ = NSPropertyList::propertyListWithData(*bytes, path_);
  }

  [[noreturn]] void fail(const std::string& problem) const {
    throw std::runtime_error(path_ + ": " + problem);
  }

  std::string extensionText(std::string_view key) const {
    const NSPropertyList* const extension = content_.objectForKey("NSExtension");
    const NSPropertyList* const text = extension ? extension->objectForKey(key) : nullptr;
    if (!text || !text->string()) fail("NSExtension has no text '" + std::string(key) + "'");
    return *text->string();
  }

 private:
  std::string path_;
  NSPropertyList content_;
};

std::shared_ptr<NSViewController> makePrincipal(const Description& description,
                                                const NSClassRegistry& classes) {
  const std::string name = description.extensionText("NSExtensionPrincipalClass");
  const NSClass* const principal = classes.classNamed(name);
  if (!principal || !principal->init) description.fail("unknown principal class '" + name + "'");

  auto controller = std::dynamic_pointer_cast<NSViewController>(principal->init());
  if (!std::dynamic_pointer_cast<NCWidgetProviding>(controller)) {
    description.fail("the principal class is not a widget's view controller '" + name + "'");
  }
  return controller;
}

}  // namespace

std::shared_ptr<NSViewController> NSExtensionMain(const NSBundle& bundle,
                                                  const NSClassRegistry& classes) {
  const Description description(bundle);
  const std::string point = description.extensionText("NSExtensionPointIdentifier");
  if (point != widgetExtensionPoint) description.fail("unknown extension point '" + point + "'");

  auto controller = makePrincipal(description, classes);
  controller->view();
  return controller;
}
