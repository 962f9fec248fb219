#pragma once

#include <functional>
#include <set>
#include <string>

#include <pugixml.hpp>

#include "platform/appkit/NSControl.h"
#include "platform/appkit/NSNibDocument.h"
#include "platform/appkit/NSNibObjects.h"
#include "platform/appkit/NSViewController.h"

/// Connects the objects of an interface file with its owner. For use while the file is loaded.
class NSNibConnector {
 public:
  /// All three must outlive the connector.
  NSNibConnector(const NSNibDocument& document, const NSNibObjects& objects,
                 NSViewController& owner)
      : document_(document), objects_(objects), owner_(owner) {}

  /// Connects the actions, then the outlets, the owner's view last.
  void connect();

 private:
  void connectAction(const NSNibObjects::Connection& action);
  void connectOutlet(const pugi::xml_node& outlet);

  const NSNibDocument& document_;
  const NSNibObjects& objects_;
  NSViewController& owner_;
  std::set<NSControl*> connectedControls_;
  std::set<std::string, std::less<>> connectedOutlets_;
};
