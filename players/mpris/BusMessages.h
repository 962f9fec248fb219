#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include "players/mpris/PropertyValue.h"

namespace Corvella {

// What messages of the bus hold, read for `MprisBus` and for nobody else. Both throw `sdbus::Error`
// when the message holds something else.

/// Reads a variant; one that holds a type that no player property has is stepped over.
PropertyValue readVariant(sdbus::Message& message);

/// Reads names and their values, "a{sv}".
PropertyMap readProperties(sdbus::Message& message);

}  // namespace Corvella
