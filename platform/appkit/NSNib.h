#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "platform/appkit/NSNibServices.h"

class NSNibDocument;
class NSViewController;

/// An interface file: an Interface Builder document in its XML form (XIB 3), of which it knows what
/// this system's own file uses. Immutable. Lives on the main queue.
///
/// Whatever is wrong with the file is a `std::runtime_error` that reads "FILE:LINE: what 'name'":
/// malformed XML, an unknown element, class, outlet or action, one of the wrong type, an id that is
/// missing or not the only one, a value that is none.
class NSNib {
 public:
  /// `fileName` is for errors.
  NSNib(std::span<const std::byte> bytes, std::string fileName);
  ~NSNib();
  NSNib(const NSNib&) = delete;
  NSNib& operator=(const NSNib&) = delete;

  /// Creates the file's objects, connects the actions and the owner's outlets, the outlet "view"
  /// last, and tells the objects and then the owner that they are awake. After an error the owner's
  /// view has not been connected.
  void instantiateWithOwner(NSViewController& owner, const NSNibServices& services) const;

 private:
  std::unique_ptr<const NSNibDocument> document_;
};
