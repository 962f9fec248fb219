#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Corvella {

/// The current track as the widget shows it. All texts are UTF-8, exactly as the player answered.
struct SongInfo {
  std::string title;
  std::string artist;
  std::string album;
  std::string lyrics;                 ///< May be empty.
  std::int32_t ratings = 0;           ///< In the player's points, 0..100.
  std::int32_t volume = 0;            ///< The player's sound volume, 0..100.
  std::optional<std::string> finish;  ///< Seconds as text; absent when the player gives none.

  bool operator==(const SongInfo&) const = default;
};

}  // namespace Corvella
