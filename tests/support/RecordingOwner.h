#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/appkit/NSViewController.h"

/// A file's owner that has every outlet, of any class, and every action, but for those of the name
/// "nonesuch", and that writes down what happens to it.
class RecordingOwner : public NSViewController {
 public:
  using NSViewController::NSViewController;

  bool connectOutlet(std::string_view name, const std::shared_ptr<NSObject>& object) override {
    events.push_back("outlet " + std::string(name));
    outlets[std::string(name)] = object;
    if (name == "view") return NSViewController::connectOutlet(name, object);
    return name != "nonesuch";
  }

  bool connectAction(std::string_view selector, NSControl&) override {
    events.push_back("action " + std::string(selector));
    return selector != "nonesuch";
  }

  void awakeFromNib() override { events.emplace_back("owner awake"); }

  std::map<std::string, std::shared_ptr<NSObject>, std::less<>> outlets;
  std::vector<std::string> events;
};
