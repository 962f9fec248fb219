#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/foundation/NSObject.h"

class NSCoder;

/// A class as files name it: how its objects are made, and which objects are of it.
struct NSClass {
  /// Null when an object is made from a coder only, and the other way round.
  std::function<std::shared_ptr<NSObject>()> init;
  std::function<std::shared_ptr<NSObject>(const NSCoder&)> initWithCoder;
  /// Whether the object is of the class or of one derived from it.
  bool (*isKindOfClass)(const NSObject& object);

  /// A class that interface files create: its objects are made from a coder.
  template <class Class>
  static NSClass decoded() {
    return {.init = nullptr,
            .initWithCoder = [](const NSCoder& coder) { return std::make_shared<Class>(coder); },
            .isKindOfClass = isKindOf<Class>};
  }

  /// A class whose objects `init` makes, with the services that they need.
  template <class Class>
  static NSClass initialised(std::function<std::shared_ptr<Class>()> init) {
    return {.init = std::move(init), .initWithCoder = nullptr, .isKindOfClass = isKindOf<Class>};
  }

 private:
  template <class Class>
  static bool isKindOf(const NSObject& object) {
    return dynamic_cast<const Class*>(&object) != nullptr;
  }
};
