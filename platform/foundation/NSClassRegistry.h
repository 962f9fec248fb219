#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/NSObject.h"

class NSCoder;

/// A class as files name it: how its objects are made, and which objects are of it.
struct NSClass {
  /// One of the two is null: objects of interface files are made from a coder, others by `init`.
  std::function<std::shared_ptr<NSObject>()> init;
  std::function<std::shared_ptr<NSObject>(const NSCoder&)> initWithCoder;
  /// Whether the object is of the class or of one derived from it.
  bool (*isKindOfClass)(const NSObject& object);

  /// A class whose objects interface files create, each from a coder.
  template <class Class>
  static NSClass decoded() {
    const auto initWithCoder = [](const NSCoder& coder) { return std::make_shared<Class>(coder); };
    return {nullptr, initWithCoder, isKindOf<Class>};
  }

  /// A class whose objects `init` makes, with the services that they need.
  template <class Class>
  static NSClass initialised(std::function<std::shared_ptr<Class>()> init) {
    return {std::move(init), nullptr, isKindOf<Class>};
  }

 private:
  template <class Class>
  static bool isKindOf(const NSObject& object) {
    return dynamic_cast<const Class*>(&object) != nullptr;
  }
};

/// The classes that interface files and property lists name. The program fills it before it loads
/// any of them; from then on any thread may read it.
class NSClassRegistry {
 public:
  /// Makes a class known under `name`: "Module.Class", or "Class" for one outside of modules. Takes
  /// the place of one of that name.
  void registerClass(std::string name, NSClass registered) {
    classes_.insert_or_assign(std::move(name), std::move(registered));
  }

  /// Null when there is none of that name. Owned by the registry.
  const NSClass* classNamed(std::string_view name) const {
    const auto found = classes_.find(name);
    return found == classes_.end() ? nullptr : &found->second;
  }

 private:
  std::map<std::string, NSClass, std::less<>> classes_;
};
