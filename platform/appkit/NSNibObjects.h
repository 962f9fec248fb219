#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "platform/foundation/NSObject.h"

/// The id that Interface Builder gives to a file's owner.
inline constexpr std::string_view NSNibOwnerId = "-2";

/// The objects of an interface file, and what is to be connected once all of them are there.
struct NSNibObjects {
  struct Connection {
    pugi::xml_node node;
    std::shared_ptr<NSObject> source;  ///< Null for the file's owner.
  };

  std::vector<std::shared_ptr<NSObject>> created;
  /// Null under the ids of what is not an object of its own.
  std::map<std::string, std::shared_ptr<NSObject>, std::less<>> byId;
  std::vector<Connection> connections;
};
