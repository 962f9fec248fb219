#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>

#include <gmock/gmock.h>

#include "tests/support/FakePlayerOnTheBus.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using testing::ElementsAre;
using Value = FakeMprisPlayer::Value;
using Write = FakeMprisPlayer::Write;

TEST_F(AFakePlayerOnTheBus, IsReadThroughTheWholeStack) {
  fake_.set("Volume", 0.33299);
  fake_.set("Position", INT64_C(12'345'011));
  EXPECT_TRUE(controller().running());
  EXPECT_EQ(controller().playerState(), "playing");
  EXPECT_EQ(controller().playerPosition(), "12.345011");
  EXPECT_EQ(controller().songInfo(),
            (SongInfo{"Title", "Someone, Else", "Somewhere", "", 0, 33, "215.5"}));
}

TEST_F(AFakePlayerOnTheBus, IsAskedOncePerScriptAndOnlyForWhatIsNeeded) {
  controller().songInfo();  // Learns what the player lists.
  fake_.forgetCalls();
  controller().playerPosition();
  controller().songInfo();
  controller().playerState();
  controller().songLyrics();
  controller().running();
  EXPECT_THAT(fake_.calls(),
              ElementsAre("Get Position", "Get Metadata", "Get Volume", "GetAll", "Get Metadata"));

  // A track that must go by the name of its player costs one more question.
  fake_.set("Identity", "Radio");
  fake_.setMetadata({{"mpris:length", INT64_C(5'000'000)}});
  fake_.forgetCalls();
  controller().songLyrics();
  controller().playerState();
  EXPECT_THAT(fake_.calls(), ElementsAre("Get Metadata", "Get Identity", "GetAll"));
}

TEST_F(AFakePlayerOnTheBus, ObeysCommandsButIsNotToldToPlayWhileItPlays) {
  controller().playback(PlaybackRequest::Play);
  EXPECT_EQ(fake_.received("Play"), 0);
  for (const auto request : {PlaybackRequest::Pause, PlaybackRequest::Play, PlaybackRequest::Next,
                             PlaybackRequest::Previous}) {
    controller().playback(request);
  }
  controller().setSoundVolume(55);
  EXPECT_THAT(fake_.writes(), ElementsAre(Write{"Volume", 0.55}));
  for (const auto* method : {"Pause", "Play", "Next", "Previous"}) {
    EXPECT_EQ(fake_.received(method), 1) << method;
  }
}

TEST_F(AFakePlayerOnTheBus, TakesARatingOnlyWhereItListsOneAndHasATrack) {
  EXPECT_EQ(errorNumber(kSetRating), kNotUnderstood);
  EXPECT_EQ(fake_.received("Set Rating"), 0);

  fake_.set("Rating", 0.4);
  fake_.announce("Rating");
  ASSERT_TRUE(eventually([&] { return controller().songInfo().ratings == 40; }));
  EXPECT_EQ(errorNumber(kSetRating), 0);
  EXPECT_THAT(fake_.writes(), ElementsAre(Write{"Rating", 0.8}));
  EXPECT_EQ(controller().songInfo().ratings, 80);

  fake_.setMetadata({});
  EXPECT_EQ(errorNumber(kSetRating), kNoSuchObject);
  EXPECT_EQ(fake_.received("Set Rating"), 1);
}

TEST_F(ABus, HasRhythmboxKeepARatingByItsOwnInterface) {
  FakeMprisPlayer fake(bus_.address(), "rhythmbox");
  fake.setMetadata({{"xesam:title", "T"}, {"xesam:url", "file:///a%20b.ogg"}});
  MprisPlayer player("", patience);
  ScriptedStack stack(player);
  EXPECT_EQ(stack.errorNumber("set rating of current track to 80"), 0);
  EXPECT_THAT(fake.writes(), ElementsAre(Write{"rating of file:///a%20b.ogg", 4.0}));
  EXPECT_TRUE(player.description().keepsRating);
}

TEST_F(AFakePlayerOnTheBus, ShowsTheVolumeThatItHasAndTakesNoneWhereItHasNone) {
  EXPECT_EQ(errorNumber("set sound volume to 90"), 0);
  fake_.set("Volume", 0.4);
  EXPECT_EQ(controller().songInfo().volume, 40);

  fake_.remove("Volume");
  EXPECT_EQ(controller().playerState(), "playing");  // Learns that there is no volume now.
  EXPECT_EQ(controller().songInfo().volume, 100);
  EXPECT_EQ(errorNumber("set sound volume to 5"), kNotUnderstood);
  EXPECT_EQ(fake_.received("Set Volume"), 1);
}

TEST_F(AFakePlayerOnTheBus, GivesWayToOneThatPlays) {
  const auto twoPlay = [&] {
    return std::ranges::count(player_->candidates(), PlayerState::Playing,
                              &PlayerRoster::Player::state) == 2;
  };
  EXPECT_EQ(controller().songInfo().title, "Title");
  auto other = std::make_unique<FakeMprisPlayer>(bus_.address(), "other");
  other->show("Other", "Stopped");
  ASSERT_TRUE(eventually([&] { return other->received("Get PlaybackStatus") == 1; }));
  other->set("PlaybackStatus", "Playing");
  other->announce("PlaybackStatus", false);
  ASSERT_TRUE(eventually(twoPlay));
  EXPECT_EQ(controller().songInfo().title, "Title");

  fake_.set("PlaybackStatus", "Paused");
  fake_.announce("PlaybackStatus");
  EXPECT_TRUE(eventuallyShows("Other"));
  other.reset();
  EXPECT_TRUE(eventuallyShows("Title"));
}

TEST_F(ABus, IsNeverMadeToStartAPlayer) {
  const TemporaryFolder folder;
  const auto mark = folder.path() / "started";
  bus_.addActivatableName("org.mpris.MediaPlayer2.sleeping", "/usr/bin/touch " + mark.string());
  MprisPlayer player("sleeping", patience);
  const ScriptedStack stack(player);
  EXPECT_FALSE(stack.controller.running());
  EXPECT_EQ(stack.controller.songInfo().title, "No Song Playing");
  stack.controller.playback(PlaybackRequest::Play);
  EXPECT_FALSE(std::filesystem::exists(mark));
}

}  // namespace
}  // namespace Corvella
