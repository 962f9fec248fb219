#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "players/mpris/MprisPlayer.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/ScriptedStack.h"

namespace Corvella {

/// Deadlines that no player misses unless it hangs, however busy the machine is.
constexpr MprisDeadlines patience{
    .call = longestWait, .greeting = longestWait, .connecting = longestWait};

/// A session bus with a fake player on it that plays a track, and the stack that reads it.
class AFakePlayerOnTheBus : public testing::Test {
 protected:
  AFakePlayerOnTheBus() {
    fake_.show("Title", "Playing");
    connect(patience);
  }

  /// Has the player, or only those of a name, read with such deadlines from now on.
  void connect(const MprisDeadlines& deadlines, const std::string& pinnedName = "") {
    stack_.reset();
    player_ = std::make_unique<MprisPlayer>(pinnedName, deadlines);
    stack_ = std::make_unique<ScriptedStack>(*player_);
  }

  static constexpr auto kNotUnderstood = -1708;
  static constexpr auto kNoSuchObject = -1728;
  static constexpr auto kArtwork = "tell artwork 1 of the current track to raw data";
  static constexpr auto kSetRating = "set rating of current track to 80";

  const SongController& controller() const { return stack_->controller; }
  int errorNumber(const std::string& command) { return stack_->errorNumber(command); }
  bool eventuallyShows(const std::string& title) const {
    // The question whether a player runs has the current player chosen anew.
    return eventually(
        [&] { return controller().running() && controller().songInfo().title == title; });
  }

  PrivateBus bus_;
  ScopedSessionBus session_{bus_.address()};
  FakeMprisPlayer fake_{bus_.address(), "fake"};
  std::unique_ptr<MprisPlayer> player_;
  std::unique_ptr<ScriptedStack> stack_;
};

/// The same, for what is said of other players or of all.
class ABus : public AFakePlayerOnTheBus {};

}  // namespace Corvella
