// Whether the panel says the truth: players do at random what players do, and after each step the
// panel comes to agree with the one that it says it shows.

#include <QElapsedTimer>
#include <QTest>
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/panel/TodayView.h"
#include "host/program/Composition.h"
#include "host/program/DisplayText.h"
#include "players/mpris/MprisPlayer.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RealMpv.h"
#include "tests/support/TaggedTrack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

/// A player as it is, beside the fake that tells so.
struct Truth {
  std::string title;
  std::string artist = "Artist";
  std::string status = "Stopped";
  int volume = 100;
  int stars = 0;
  int position = 0;  // Seconds.
  bool hangs = false;
  std::unique_ptr<FakeMprisPlayer> fake;

  /// Has the fake say all that, and announce one property of it, or nothing.
  std::string tell(const std::string& property) const {
    fake->set("Position", INT64_C(1'000'000) * position);
    fake->setMetadata(
        {{"xesam:title", title}, {"xesam:artist", artist}, {"mpris:length", INT64_C(200'000'000)}});
    fake->set("Volume", volume / 100.0);
    fake->set("Rating", stars / 5.0);
    fake->set("PlaybackStatus", status);
    if (!property.empty()) fake->announce(property);
    return "announces its " + property;
  }

  /// What is wrong with the text of a display of this player; empty when nothing is.
  std::string lieOf(const std::string& display) const {
    const auto song =
        "songTitle: " + title + "\nsongArtistAndAlbum: " + artist + " - Unknown Album\n";
    const auto state = "songRatingIndicator: " + std::to_string(stars) +
                       " of 5\nplayButton: " + (status == "Playing" ? "\u275a\u275a" : "\u25b6") +
                       "\nsoundVolume: " + std::to_string(volume) +
                       "\nprogressBar: " + std::to_string(position) + " of 200\n";
    const bool isTrue = display.starts_with(song) && display.find(state) != std::string::npos;
    return isTrue ? "" : "shows\n" + display + "for\n" + song + state;
  }
};

class RandomPlayers {
 public:
  explicit RandomPlayers(const std::string& address) : address_(address) {
    for (auto& player : players_) start(player);
  }

  /// Lets one player do something, and says what.
  std::string step() {
    auto& player = players_[pick(players_.size())];
    const auto name = "player " + std::to_string(&player - players_.data()) + " ";
    if (!player.fake) return start(player), name + "starts";
    if (player.hangs) {
      player.hangs = false;
      player.fake->behave({});
      return name + "answers again";
    }
    switch (pick(8)) {
      case 0:
        player.hangs = true;
        player.fake->behave({.hangs = true});
        return name + "hangs";
      case 1:
        player.fake.reset();
        return name + "leaves";
      case 2:
        player.volume = static_cast<int>(pick(101));
        // One that plays is looked at each second, so that it need not say so.
        return name + player.tell(player.status == "Playing" && pick(2) == 0 ? "" : "Volume");
      case 3:
        player.stars = static_cast<int>(pick(6));
        return name + player.tell("Rating");
      case 4:  // To another track, maybe of the same title.
        (pick(2) == 0 ? player.title : player.artist) = "Name " + std::to_string(++tracks_);
        player.position = static_cast<int>(pick(200));
        return name + player.tell("Metadata");
      default:
        player.status = std::array{"Playing", "Paused", "Stopped"}[pick(3)];
        return name + player.tell("PlaybackStatus");
    }
  }

  /// What is wrong with the display; empty when nothing is.
  std::string lieOf(const TodayView& view) const {
    const auto shown = view.players().current;
    const auto display = displayText(view.display());
    if (!shown.exists()) {
      if (players_[0].fake || players_[1].fake) return "shows no player";
      return display.starts_with("songTitle: No Song Playing\n") ? "" : "shows a song of nobody";
    }
    const bool someonePlays = std::ranges::any_of(players_, [](const auto& player) {
      return player.fake && !player.hangs && player.status == "Playing";
    });
    const auto& player = players_[static_cast<std::size_t>(shown.name.back() - '0')];
    if (!player.fake) return "shows a player that has left";
    // It may not have been asked since it hung; nobody can know better.
    if (player.hangs) return someonePlays && shown.silent ? "shows a player that hangs" : "";
    if (someonePlays && player.status != "Playing") return "does not show the one that plays";
    return player.lieOf(display);
  }

 private:
  std::size_t pick(std::size_t count) { return random_() % count; }

  void start(Truth& player) {
    const auto number = std::to_string(&player - players_.data());
    player = Truth();
    player.title = "Name " + std::to_string(++tracks_);
    player.fake = std::make_unique<FakeMprisPlayer>(address_, "fake" + number);
    player.fake->set("Identity", "Fake " + number);
    player.tell("PlaybackStatus");
  }

  const std::string address_;
  std::minstd_rand random_{20261123};
  int tracks_ = 0;
  std::array<Truth, 2> players_;
};

/// A real player that does at random what players do, as another program sees and commands it.
class RandomMpv {
 public:
  explicit RandomMpv(const std::string& address) : address_(address) {
    for (const std::string number : {"1", "2", "3"}) {
      files_.push_back(folder_.path() / (number + ".flac"));
      const std::string cover = CORVELLA_RESOURCES "/covers/harbour.png";
      makeTrack(files_.back(), {"Song " + number, "Artist", "Album", "", cover, 600});
    }
    start();
  }

  std::string step() {
    if (!mpv_) return start(), "starts";
    if (std::exchange(hangs_, false)) return mpv_->send(SIGCONT), "goes on";
    switch (random_() % 7) {
      case 0:
        hangs_ = true;
        return mpv_->send(SIGSTOP), "hangs";
      case 1:
        return mpv_.reset(), "is killed";
      case 2:
        volume_ = static_cast<int>(random_() % 101);
        return seen_.setSoundVolume(volume_), "gets another volume";
      case 3:
        return seen_.perform(PlaybackRequest::Previous), "goes back";
      case 4:
        return seen_.perform(PlaybackRequest::Next), "goes to the next track";
      case 5:
        return seen_.perform(PlaybackRequest::Play), "plays";
      default:
        return seen_.perform(PlaybackRequest::Pause), "pauses";
    }
  }

  std::string lieOf(const TodayView& view) {
    const auto display = displayText(view.display());
    if (!mpv_) return view.players().current.exists() ? "shows one that has left" : "";
    if (hangs_) return "";
    if (!seen_.running()) return "is not seen by anyone";
    const auto position = seen_.playerPosition();
    const auto state = seen_.playerState();
    const auto track = seen_.currentTrack();
    const auto title = track ? track->name : "No Song Playing";
    const auto sign = state && *state == PlayerState::Playing ? "\u275a\u275a" : "\u25b6";
    for (const auto& line : {"songTitle: " + title, "playButton: " + std::string(sign),
                             "soundVolume: " + std::to_string(volume_)}) {
      if (display.find(line + "\n") == std::string::npos) return "lacks " + line;
    }
    const auto shown = view.display().content<ProgressContent>("progressBar")->value;
    const auto there =
        position && *position ? std::chrono::duration<double>(**position).count() : 0;
    return std::abs(shown - there) <= 1.5 ? "" : "is at " + std::to_string(shown);
  }

 private:
  void start() {
    volume_ = 100;
    mpv_.emplace(address_, RealMpv::Options{.files = files_});
  }

  const std::string address_;
  const TemporaryFolder folder_;
  std::vector<std::string> files_;
  std::minstd_rand random_{20261124};
  std::optional<RealMpv> mpv_;
  bool hangs_ = false;
  int volume_ = 100;
  MprisPlayer seen_{"mpv"};
};

template <typename Players>
class ThePanel : public testing::Test {};
using AllPlayers = testing::Types<RandomPlayers, RandomMpv>;
TYPED_TEST_SUITE(ThePanel, AllPlayers);

TYPED_TEST(ThePanel, ComesToAgreeWithItsPlayersWhateverTheyDo) {
  const auto* const wanted = std::getenv("CORVELLA_TRUTH_STEPS");  // A long walk is for a person.
  const int steps = wanted != nullptr ? std::atoi(wanted) : 40;
  const PrivateBus bus;
  const ScopedSessionBus session(bus.address());
  TypeParam players(bus.address());
  const Composition composition;
  TodayView view(composition.starter(), "auto");
  view.open();
  qint64 longest = 0;
  for (int step = 0; step < steps; ++step) {
    const auto what = players.step();
    QElapsedTimer time;
    time.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return players.lieOf(view).empty(); },
                                longestWait / std::chrono::milliseconds{1}))
        << "step " << step << ", " << what << ": the panel " << players.lieOf(view);
    longest = std::max(longest, time.elapsed());
  }
  if (wanted != nullptr) std::printf("it took at most %lld ms to agree\n", longest);
}

}  // namespace
}  // namespace Corvella
