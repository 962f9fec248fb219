#include "platform/appkit/NSNibConnector.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/appkit/NSControl.h"
#include "platform/appkit/NSOutletConnection.h"

namespace {

bool isView(const pugi::xml_node& outlet) {
  return std::string_view(outlet.attribute("property").value()) == "view";
}

}  // namespace

void NSNibConnector::connect() {
  std::vector<pugi::xml_node> outlets;
  for (const auto& connection : objects_.connections) {
    const std::string_view kind = connection.node.name();
    if (kind == "action" && connection.source) {
      connectAction(connection);
    } else if (kind == "outlet" && !connection.source) {
      outlets.push_back(connection.node);
    } else {
      document_.failForUnknownElement(connection.node);
    }
  }
  std::stable_partition(outlets.begin(), outlets.end(), std::not_fn(isView));
  for (const auto& outlet : outlets) connectOutlet(outlet);
}

void NSNibConnector::connectAction(const NSNibObjects::Connection& action) {
  const std::string selector = document_.attribute(action.node, "selector");
  const std::string target = document_.attribute(action.node, "target");
  if (target != NSNibOwnerId)
    document_.fail(action.node, "only the owner is a target, not", target);

  auto* const control = dynamic_cast<NSControl*>(action.source.get());
  if (!control) document_.fail(action.node, "not a control, so it has no action", selector);
  if (!connectedControls_.insert(control).second) {
    document_.fail(action.node, "a second action of a control", selector);
  }
  switch (owner_.connectAction(selector, *control)) {
    case NSOutletConnection::Connected:
      return;
    case NSOutletConnection::UnknownName:
      document_.fail(action.node, "unknown action", selector);
    case NSOutletConnection::WrongType:
      document_.fail(action.node, "a control of the wrong class for the action", selector);
  }
}

void NSNibConnector::connectOutlet(const pugi::xml_node& outlet) {
  const std::string property = document_.attribute(outlet, "property");
  const std::string destination = document_.attribute(outlet, "destination");
  const auto object = objects_.byId.find(destination);
  if (object == objects_.byId.end() || !object->second) {
    document_.fail(outlet, "no object has the id", destination);
  }
  if (!connectedOutlets_.insert(property).second) {
    document_.fail(outlet, "a second object for the outlet", property);
  }
  switch (owner_.connectOutlet(property, object->second)) {
    case NSOutletConnection::Connected:
      return;
    case NSOutletConnection::UnknownName:
      document_.fail(outlet, "unknown outlet", property);
    case NSOutletConnection::WrongType:
      document_.fail(outlet, "an object of the wrong class for the outlet", property);
  }
}
