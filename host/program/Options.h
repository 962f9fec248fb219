#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace Corvella {

/// An option of the command line. What the program understands, its help, its manual page and the
/// completions of shells are all made from this table, so that they cannot differ.
struct Option {
  /// What may stand for the argument, for completion.
  enum class Values : std::uint8_t { None, Any, Players, PngFile, OnOff };

  std::string_view name;      ///< Without the two dashes.
  char letter;                ///< The short form without its dash; '\0' when there is none.
  std::string_view argument;  ///< As the help names it; empty for an option without argument.
  Values values;
  std::string_view summary;  ///< For lists of completions: a few words.
  std::string_view help;     ///< For the help and the manual page.
};

namespace options {

using Values = Option::Values;

inline constexpr Option kPlayer{
    "player",
    '\0',
    "auto|embedded|NAME",
    Values::Players,
    "the player to show",
    "the player to show: NAME is that of a player on the session bus (see --list-players), "
    "embedded is the built-in one; auto (the default) is whichever plays on the session bus, or "
    "embedded where there is no bus"};
inline constexpr Option kToggle{"toggle",
                                '\0',
                                "",
                                Values::None,
                                "show or hide the panel",
                                "show the panel, or hide the one that is in front"};
inline constexpr Option kHidden{
    "hidden",
    '\0',
    "",
    Values::None,
    "start without showing the panel",
    "start without showing the panel, for example when the desktop starts"};
inline constexpr Option kQuit{"quit",
                              '\0',
                              "",
                              Values::None,
                              "end the running corvella",
                              "end the corvella that is running, if there is one"};
inline constexpr Option kAutostart{
    "autostart",
    '\0',
    "on|off",
    Values::OnOff,
    "start with the desktop, or no more",
    "on: have the desktop start corvella, hidden, whenever you log in, with the player that "
    "--player names; off: no more. This writes or removes corvella.desktop in your own autostart "
    "folder"};
inline constexpr Option kListPlayers{"list-players",
                                     '\0',
                                     "",
                                     Values::None,
                                     "list the players",
                                     "list the players that can be shown, and end"};
inline constexpr Option kPrint{"print",
                               '\0',
                               "",
                               Values::None,
                               "print what the panel shows",
                               "print what the panel shows, once, and end"};
inline constexpr Option kJson{
    "json",
    '\0',
    "",
    Values::None,
    "print one JSON object",
    "with --print: print one JSON object on one line, with the keys title, artist, album, state, "
    "position and length (seconds), rating and volume (0 to 100) and player, and lyrics with "
    "--lyrics"};
inline constexpr Option kFollow{
    "follow",
    '\0',
    "",
    Values::None,
    "print again at each change",
    "with --print: print again at each change but that of the position, until interrupted"};
inline constexpr Option kSnapshot{"snapshot",
                                  '\0',
                                  "FILE.png",
                                  Values::PngFile,
                                  "draw the panel into a file",
                                  "draw the panel into a file, and end; needs no display"};
inline constexpr Option kLyrics{
    "lyrics",
    '\0',
    "",
    Values::None,
    "unfold the lyrics",
    "with --print or --snapshot: unfold the lyrics; --print then prints them whole"};
inline constexpr Option kScale{"scale",
                               '\0',
                               "N",
                               Values::Any,
                               "pixels to each point",
                               "with --snapshot: pixels to each point, from 0.5 to 4"};
inline constexpr Option kHelp{"help", 'h', "", Values::None, "show the help", "show this help"};
inline constexpr Option kVersion{"version",         'v', "", Values::None, "show the version",
                                 "show the version"};

inline constexpr std::array kAll{kPlayer,      kToggle, kHidden, kQuit,   kAutostart,
                                 kListPlayers, kPrint,  kJson,   kFollow, kSnapshot,
                                 kLyrics,      kScale,  kHelp,   kVersion};

}  // namespace options

/// A key of the panel, and what it does.
struct KeyHelp {
  std::string_view key;
  std::string_view does;
};

inline constexpr std::array kKeyHelp{
    KeyHelp{"Space", "play or pause"},       KeyHelp{"P, N", "previous, next track"},
    KeyHelp{"0 to 5", "rate in stars"},      KeyHelp{"Up, Down", "volume"},
    KeyHelp{"L", "show or hide the lyrics"}, KeyHelp{"S", "choose the player"},
    KeyHelp{"Esc", "hide the panel"}};

}  // namespace Corvella
