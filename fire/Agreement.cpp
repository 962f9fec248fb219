#include "fire/Agreement.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace Corvella {

namespace {

std::string at(const Fields& fields, const std::string& name) {
  const auto found = fields.find(name);
  return found != fields.end() ? found->second : "(nothing)";
}

bool isPlaying(const Fields& players, const std::string& name) {
  return at(players, name + " status") == "Playing";
}

/// The name of the player that calls itself like that; empty when there is none.
std::string bearerOf(const Fields& players, const std::string& identity) {
  const auto found = std::ranges::find_if(players, [&](const auto& entry) {
    return entry.first.ends_with(" identity") && entry.second == identity;
  });
  return found != players.end() ? found->first.substr(0, found->first.find(' ')) : "";
}

bool someonePlays(const Fields& players) {
  return std::ranges::any_of(players, [](const auto& entry) { return entry.second == "Playing"; });
}

std::string shows(const std::string& what, const std::string& shown, const std::string& there) {
  return shown == there ? ""
                        : "shows " + what + " \"" + shown + "\" instead of \"" + there + "\"; ";
}

std::string lieAbout(const std::string& player, const Fields& panel, const Fields& players) {
  const auto truth = [&](const char* what) { return at(players, player + " " + what); };
  const auto isPlayed = isPlaying(players, player);
  auto lies = shows("the title", at(panel, "songTitle"), truth("title")) +
              shows("the artist", at(panel, "songArtistAndAlbum"), truth("artist") + " - Album") +
              shows("the sign to", at(panel, "playButton"), isPlayed ? "Pause" : "Play") +
              shows("the volume", at(panel, "soundVolume"), truth("volume"));
  const auto number = [](const std::string& text) { return std::strtod(text.c_str(), nullptr); };
  const auto stars = number(at(panel, "songRatingIndicator"));
  if (stars != number(truth("stars"))) {
    lies += shows("the stars", std::to_string(stars), truth("stars"));
  }
  constexpr double kSeconds = 1.5;
  if (std::abs(number(at(panel, "progressBar")) - number(truth("position"))) > kSeconds) {
    lies += shows("the position", at(panel, "progressBar"), truth("position"));
  }
  return lies;
}

}  // namespace

std::string disagreement(const Fields& panel, const Fields& players, const std::string& choice) {
  if (at(panel, "visible") != "1") return "is not there";
  const auto heading = at(panel, "player");
  const auto player = bearerOf(players, heading);
  if (player.empty()) {
    const bool nobodyIsRight =
        choice.empty() && heading.ends_with("is not running") &&
        !players.contains(heading.substr(0, heading.find(' ')) + " identity");
    if (!nobodyIsRight) return "says \"" + heading + "\"";
    return shows("the title", at(panel, "songTitle"), "No Song Playing");
  }
  if (choice == "auto" && someonePlays(players) && !isPlaying(players, player)) {
    return "shows " + player + ", which does not play, though another one does";
  }
  if (!choice.empty() && choice != "auto" && choice != player) {
    return "shows " + player + " instead of " + choice;
  }
  return lieAbout(player, panel, players);
}

}  // namespace Corvella
