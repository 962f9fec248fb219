#include "platform/appkit/NSNibBuilder.h"

#include <string_view>
#include <utility>

#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSNibElement.h"
#include "platform/foundation/NSClassRegistry.h"

namespace {

// The ids that Interface Builder gives to what else a file does not create.
constexpr std::string_view firstResponderId = "-1";
constexpr std::string_view applicationId = "-3";

// Far more than any interface needs; a file that goes deeper must not exhaust the stack.
constexpr int deepestView = 64;

}  // namespace

NSNibObjects NSNibBuilder::build(const NSViewController& owner) {
  objects_ = {};
  for (const auto& node : document_.objects()) {
    if (std::string_view(node.name()) == "customObject") {
      readPlaceholder(node, owner);
    } else {
      buildView(node, 1);
    }
  }
  return std::move(objects_);
}

void NSNibBuilder::readPlaceholder(const pugi::xml_node& node, const NSViewController& owner) {
  const std::string id = document_.attribute(node, "id");
  if (id != NSNibOwnerId && id != firstResponderId && id != applicationId) {
    document_.fail(node, "unknown object", id);
  }
  claimId(node, nullptr);
  if (id == NSNibOwnerId) checkOwner(node, owner);
  for (const auto& child : document_.elements(node)) {
    if (id != NSNibOwnerId || std::string_view(child.name()) != "connections") {
      document_.failForUnknownElement(child);
    }
    readConnections(child, nullptr);
  }
}

void NSNibBuilder::checkOwner(const pugi::xml_node& node, const NSViewController& owner) const {
  const std::string name = NSNibDocument::customClass(node);
  const NSClass* const ownerClass = services_.classes.classNamed(name);
  if (!ownerClass) document_.fail(node, "unknown class", name);
  if (!ownerClass->isKindOfClass(owner)) document_.fail(node, "the owner is not a", name);
}

std::shared_ptr<NSView> NSNibBuilder::buildView(const pugi::xml_node& node, int depth) {
  const NSNibElement* const element = NSNibElement::named(node.name());
  if (!element) document_.failForUnknownElement(node);
  if (depth > deepestView) document_.fail(node, "views too deep within each other", node.name());

  const NSCoder coder = decoder_.coderForView(node, *element);
  auto view = std::static_pointer_cast<NSView>(instantiate(node, element->viewClass, coder));
  for (const auto& child : document_.elements(node)) {
    const std::string_view name = child.name();
    if (name == element->cellName) buildCell(child, coder.cell(), *view);
    if (name == "subviews") buildSubviews(child, *view, depth);
    if (name == "connections") readConnections(child, view);
  }
  return view;
}

void NSNibBuilder::buildCell(const pugi::xml_node& node, const NSCoder& coder, NSView& view) {
  if (auto* const indicator = dynamic_cast<NSLevelIndicator*>(&view)) {
    static const NSClass base = NSClass::decoded<NSLevelIndicatorCell>();
    indicator->setCell(
        std::static_pointer_cast<NSLevelIndicatorCell>(instantiate(node, base, coder)));
    return;
  }
  claimId(node, nullptr);
  const std::string name = NSNibDocument::customClass(node);
  if (!name.empty()) document_.fail(node, "a cell that cannot have a class of its own", name);
}

void NSNibBuilder::buildSubviews(const pugi::xml_node& node, NSView& view, int depth) {
  for (const auto& child : document_.elements(node)) view.addSubview(buildView(child, depth + 1));
}

std::shared_ptr<NSObject> NSNibBuilder::instantiate(const pugi::xml_node& node, const NSClass& base,
                                                    const NSCoder& coder) {
  const std::string name = NSNibDocument::customClass(node);
  const NSClass* const made = name.empty() ? &base : services_.classes.classNamed(name);
  if (!made) document_.fail(node, "unknown class", name);
  auto object = made->initWithCoder ? made->initWithCoder(coder) : nullptr;
  if (!object || !base.isKindOfClass(*object)) {
    document_.fail(node, "<" + std::string(node.name()) + "> cannot be a", name);
  }
  objects_.created.push_back(object);
  claimId(node, object);
  return object;
}

void NSNibBuilder::readConnections(const pugi::xml_node& node,
                                   const std::shared_ptr<NSObject>& source) {
  for (const auto& connection : document_.elements(node)) {
    claimId(connection, nullptr);
    objects_.connections.push_back({connection, source});
  }
}

void NSNibBuilder::claimId(const pugi::xml_node& node, const std::shared_ptr<NSObject>& object) {
  const auto id = node.attribute("id");
  if (!id) return;
  if (!objects_.byId.try_emplace(id.value(), object).second) {
    document_.fail(node, "a second object has the id", id.value());
  }
}
