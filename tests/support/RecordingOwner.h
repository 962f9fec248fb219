#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/appkit/NSViewController.h"

/// A file's owner that has every outlet, of any class, and every action, and that writes down what
/// happens to it.
class RecordingOwner : public NSViewController {
 public:
  using NSViewController::NSViewController;

  NSOutletConnection connectOutlet(std::string_view name,
                                   const std::shared_ptr<NSObject>& object) override {
    events.push_back("outlet " + std::string(name));
    outlets[std::string(name)] = object;
    return name == "view" ? NSViewController::connectOutlet(name, object)
                          : NSOutletConnection::Connected;
  }

  NSOutletConnection connectAction(std::string_view, NSControl& control) override {
    control.setAction([](NSControl&) {});
    return NSOutletConnection::Connected;
  }

  void awakeFromNib() override { events.emplace_back("owner awake"); }

  /// The object of that outlet as a `Class`; null when it is none, or nothing is connected.
  template <class Class>
  std::shared_ptr<Class> outlet(const std::string& name) const {
    const auto found = outlets.find(name);
    return found == outlets.end() ? nullptr : std::dynamic_pointer_cast<Class>(found->second);
  }

  std::map<std::string, std::shared_ptr<NSObject>, std::less<>> outlets;
  std::vector<std::string> events;
};
