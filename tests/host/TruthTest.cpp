// Whether the panel says the truth: players do at random what players do, and after each step the
// panel comes to agree with the one that it says it shows.

#include <QApplication>
#include <QTest>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/panel/TodayView.h"
#include "host/program/Composition.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/PrivateBus.h"

namespace Corvella {
namespace {

/// A player as it is, beside the fake that tells so.
struct Truth {
  std::string title;
  std::string artist;
  std::string status = "Stopped";
  int volume = 100;
  int stars = 0;
  int position = 0;  // Seconds.
  bool hangs = false;
  std::unique_ptr<FakeMprisPlayer> fake;
};

class RandomPlayers {
 public:
  RandomPlayers(const std::string& address, unsigned seed) : address_(address), random_(seed) {
    for (auto& player : players_) start(player);
  }

  /// Lets one player do something, and says what.
  std::string step() {
    auto& player = players_[pick(players_.size())];
    const auto name = "player " + std::to_string(&player - players_.data()) + ": ";
    if (!player.fake) return start(player), name + "starts";
    if (player.hangs) {
      player.hangs = false;
      player.fake->behave({});
      return name + "answers again";
    }
    switch (pick(9)) {
      case 0:
        return setStatus(player, "Playing"), name + "plays";
      case 1:
        return setStatus(player, "Paused"), name + "pauses";
      case 2:
        return setStatus(player, "Stopped"), name + "stops";
      case 3:
        player.volume = static_cast<int>(pick(101));
        return tell(player, "Volume"), name + "changes its volume";
      case 4:
        player.stars = static_cast<int>(pick(6));
        return tell(player, "Rating"), name + "rates the track";
      case 5:  // Another track of the same title.
        player.artist = "Artist " + std::to_string(++tracks_);
        player.position = 0;
        return tell(player, "Metadata"), name + "goes to a track of the same title";
      case 6:
        player.hangs = true;
        player.fake->behave({.hangs = true});
        return name + "hangs";
      case 7:
        player.fake.reset();
        return name + "leaves";
      default:
        player.title = "Song " + std::to_string(++tracks_);
        player.position = static_cast<int>(pick(200));
        return tell(player, "Metadata"), name + "goes on";
    }
  }

  /// What is wrong with the display; empty when nothing is.
  std::string lieOf(const TodayView& view) const {
    const auto shown = view.players().current;
    const bool somebodyPlays = std::ranges::any_of(players_, [](const auto& player) {
      return player.fake && !player.hangs && player.status == "Playing";
    });
    if (!shown.exists()) {
      const bool thereIsOne =
          std::ranges::any_of(players_, [](const auto& player) { return player.fake != nullptr; });
      return thereIsOne ? "shows no player" : lieAboutNobody(view);
    }
    const auto& player = players_[static_cast<std::size_t>(shown.name.back() - '0')];
    if (!player.fake) return "shows a player that has left";
    // It may not have been asked since it hung; nobody can know better.
    if (player.hangs) return somebodyPlays && shown.silent ? "shows a player that hangs" : "";
    if (somebodyPlays && player.status != "Playing") return "does not show the one that plays";
    return lieAbout(player, view.display());
  }

 private:
  std::size_t pick(std::size_t count) { return random_() % count; }

  std::string start(Truth& player) {
    const auto number = &player - players_.data();
    player = Truth();
    player.title = "Song " + std::to_string(++tracks_);
    player.artist = "Artist";
    player.fake = std::make_unique<FakeMprisPlayer>(address_, "fake" + std::to_string(number));
    player.fake->set("Identity", "Fake " + std::to_string(number));
    for (const auto* property : {"Metadata", "Volume", "Rating", "PlaybackStatus"}) {
      tell(player, property);
    }
    return {};
  }

  void setStatus(Truth& player, const std::string& status) {
    player.status = status;
    tell(player, "PlaybackStatus");
  }

  static void tell(const Truth& player, const std::string& property) {
    auto& fake = *player.fake;
    fake.set("Position", FakeMprisPlayer::Value(std::int64_t{player.position} * 1'000'000));
    if (property == "Metadata") {
      fake.setMetadata({{"xesam:title", player.title},
                        {"xesam:artist", player.artist},
                        {"mpris:length", std::int64_t{200'000'000}}});
    } else if (property == "PlaybackStatus") {
      fake.set(property, player.status);
    } else {
      fake.set(property, property == "Volume" ? player.volume / 100.0 : player.stars / 5.0);
    }
    fake.announce(property);
  }

  static std::string lieAboutNobody(const TodayView& view) {
    const auto* title = view.display().content<TextFieldContent>("songTitle");
    return title != nullptr && title->text == "No Song Playing" ? "" : "shows a song of nobody";
  }

  static std::string lieAbout(const Truth& player, const WidgetDisplay& display) {
    const auto* title = display.content<TextFieldContent>("songTitle");
    if (title == nullptr) return "shows nothing";
    std::ostringstream lie;
    const auto compare = [&lie](const char* what, const auto& shown, const auto& truth) {
      if (shown != truth) lie << what << " " << shown << " for " << truth << "; ";
    };
    compare("title", title->text, player.title);
    compare("line", display.content<TextFieldContent>("songArtistAndAlbum")->text,
            player.artist + " - Unknown Album");
    compare("sign", display.content<ButtonContent>("playButton")->title,
            std::string(player.status == "Playing" ? "\u275a\u275a" : "\u25b6"));
    compare("volume", display.content<SliderContent>("soundVolume")->value, player.volume);
    compare("stars", display.content<RatingContent>("songRatingIndicator")->stars, player.stars);
    compare("position", display.content<ProgressContent>("progressBar")->value, player.position);
    compare("end", display.content<ProgressContent>("progressBar")->maxValue, 200);
    return lie.str();
  }

  const std::string address_;
  std::minstd_rand random_;
  int tracks_ = 0;
  std::array<Truth, 2> players_;
};

TEST(ThePanel, ComesToAgreeWithThePlayerAfterWhateverItDoes) {
  const auto* const wanted = std::getenv("CORVELLA_TRUTH_STEPS");  // A long walk is for a person.
  const int steps = wanted != nullptr ? std::atoi(wanted) : 60;
  constexpr unsigned kSeed = 20261123;
  const PrivateBus bus;
  const ScopedSessionBus session(bus.address());
  RandomPlayers players(bus.address(), kSeed);
  const Composition composition;
  TodayView view(composition.starter(), "auto");
  view.open();
  std::chrono::milliseconds longest{0};
  for (int step = 0; step < steps; ++step) {
    const auto what = players.step();
    const auto start = std::chrono::steady_clock::now();
    const bool agrees = QTest::qWaitFor([&] { return players.lieOf(view).empty(); },
                                        longestWait / std::chrono::milliseconds{1});
    ASSERT_TRUE(agrees) << "step " << step << ", " << what << ": the panel " << players.lieOf(view);
    longest = std::max(longest, std::chrono::duration_cast<std::chrono::milliseconds>(
                                    std::chrono::steady_clock::now() - start));
  }
  std::cout << steps << " steps; the panel agreed after " << longest.count() << " ms at most\n";
}

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
