#pragma once

#include <memory>
#include <utility>

#include "platform/foundation/NSObject.h"

/// What became of connecting an outlet or an action by name.
enum class NSOutletConnection {
  Connected,
  UnknownName,
  WrongType,  ///< The outlet or the action is for another class of objects.
};

/// Stores `object` in an outlet, a `std::shared_ptr` or `std::weak_ptr` to a class derived from
/// `NSObject`, when it is of the outlet's class.
template <template <class> class Pointer, class Class>
NSOutletConnection NSConnectOutlet(Pointer<Class>& outlet,
                                   const std::shared_ptr<NSObject>& object) {
  auto typed = std::dynamic_pointer_cast<Class>(object);
  if (!typed) return NSOutletConnection::WrongType;
  outlet = std::move(typed);
  return NSOutletConnection::Connected;
}
