#pragma once

#include <string_view>

class NSBundle;
class NSViewController;

/// Loads interface files.
class NSInterfaceLoader {
 public:
  virtual ~NSInterfaceLoader() = default;

  /// Creates the objects of the interface file `name`, connects the outlets and actions by name
  /// (the controller's view among them) and then tells the objects and `owner` that they are awake.
  /// `bundle` is null for the loader's own. Throws `std::runtime_error` that names the file and
  /// what is wrong with it. To be called on the main queue.
  virtual void instantiate(std::string_view name, const NSBundle* bundle,
                           NSViewController& owner) const = 0;
};
