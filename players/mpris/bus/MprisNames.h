#pragma once

#include <string_view>

/// The names of the MPRIS D-Bus Interface Specification 2.2, of Rhythmbox's own interface and of
/// the bus itself.
namespace Corvella::MprisNames {

constexpr auto kPlayerPath = "/org/mpris/MediaPlayer2";
constexpr auto kRootInterface = "org.mpris.MediaPlayer2";
constexpr auto kPlayerInterface = "org.mpris.MediaPlayer2.Player";
constexpr auto kPropertiesInterface = "org.freedesktop.DBus.Properties";
constexpr auto kRhythmboxPath = "/org/gnome/Rhythmbox3/RhythmDB";
constexpr auto kRhythmboxInterface = "org.gnome.Rhythmbox3.RhythmDB";
constexpr auto kBusName = "org.freedesktop.DBus";
constexpr auto kBusPath = "/org/freedesktop/DBus";

}  // namespace Corvella::MprisNames
