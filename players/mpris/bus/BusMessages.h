#pragma once

#include "players/mpris/bus/PropertyValue.h"
#include "players/mpris/bus/SdBus.h"

namespace Corvella {

// What messages of the bus hold. Texts are cut to a length that no honest player needs. All
// functions throw std::system_error when the message holds something else.

/// Reads a variant; one that holds a type that no player property has is stepped over.
PropertyValue readVariant(sd_bus_message* message);

/// Reads names and their values, "a{sv}".
PropertyMap readProperties(sd_bus_message* message);

/// Reads a list of texts, "as", and calls `take(text)` with each of them.
template <typename Take>
void readTexts(sd_bus_message* message, Take take) {
  checkBus(sd_bus_message_enter_container(message, 'a', "s"), "a list");
  const char* text = nullptr;
  while (checkBus(sd_bus_message_read_basic(message, 's', &text), "a text") > 0) take(text);
  checkBus(sd_bus_message_exit_container(message), "a list");
}

}  // namespace Corvella
