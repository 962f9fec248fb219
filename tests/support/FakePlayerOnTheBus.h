#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "players/mpris/MprisPlayer.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/Patience.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/ScriptedStack.h"

namespace Corvella {

/// A session bus of the test's own.
class ABus : public testing::Test {
 protected:
  PrivateBus bus_;
  ScopedSessionBus session_{bus_.address()};
};

/// A fake player that plays a track, and the stack that reads it.
class AFakePlayerOnTheBus : public ABus {
 protected:
  AFakePlayerOnTheBus() {
    fake_.show("Title", "Playing");
    connect(patience);
  }

  /// Has the player read with such deadlines from now on.
  void connect(const MprisDeadlines& deadlines) {
    stack_.reset();
    player_ = std::make_unique<MprisPlayer>("", deadlines);
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

  FakeMprisPlayer fake_{bus_.address(), "fake"};
  std::unique_ptr<MprisPlayer> player_;
  std::unique_ptr<ScriptedStack> stack_;
};

}  // namespace Corvella
