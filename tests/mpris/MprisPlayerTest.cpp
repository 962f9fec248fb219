#include <csignal>
#include <cstdint>
#include <filesystem>
#include <memory>

#include <gmock/gmock.h>

#include "tests/support/FakePlayerOnTheBus.h"
#include "tests/support/MediaFile.h"
#include "tests/support/RealMpv.h"
#include "tests/support/TaggedTrack.h"

namespace Corvella {
namespace {

using enum PlaybackRequest;
using testing::ElementsAre;
using Write = FakeMprisPlayer::Write;

TEST_F(AFakePlayerOnTheBus, IsReadThroughTheWholeStackByTheQuestionsThatAreNeeded) {
  fake_.set("Volume", 0.33299);
  fake_.set("Position", INT64_C(12'345'011));
  controller().songInfo();  // Learns what the player lists.
  fake_.forgetCalls();
  EXPECT_EQ(controller().playerPosition(), "12.345011");
  EXPECT_EQ(controller().songInfo(),
            (SongInfo{"Title", "Someone, Else", "Somewhere", "", 0, 33, "215.5"}));
  EXPECT_EQ(controller().playerState(), "playing");
  EXPECT_EQ(controller().songLyrics(), "");
  EXPECT_TRUE(controller().running());
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
  controller().songInfo();
  fake_.forgetCalls();
  for (const auto request : {Play, Pause, Play, Next, Previous}) controller().playback(request);
  EXPECT_THAT(fake_.calls(), ElementsAre("Get PlaybackStatus", "Pause", "Get PlaybackStatus",
                                         "Play", "Next", "Previous"));
}

TEST_F(AFakePlayerOnTheBus, ShowsTheVolumeThatItHasAndTakesNoneWhereItHasNone) {
  EXPECT_EQ(errorNumber("set sound volume to 55"), 0);
  fake_.set("Volume", 0.4);
  EXPECT_EQ(controller().songInfo().volume, 40);

  fake_.remove("Volume");
  EXPECT_EQ(controller().playerState(), "playing");  // Learns that there is no volume now.
  EXPECT_EQ(controller().songInfo().volume, 100);
  EXPECT_EQ(errorNumber("set sound volume to 5"), kNotUnderstood);
  EXPECT_THAT(fake_.writes(), ElementsAre(Write{"Volume", 0.55}));
  EXPECT_EQ(fake_.received("Set Volume"), 1);
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

TEST_F(AFakePlayerOnTheBus, GivesWayToOneThatPlays) {
  EXPECT_EQ(controller().songInfo().title, "Title");
  auto other = std::make_unique<FakeMprisPlayer>(bus_.address(), "other");
  other->show("Other", "Stopped");
  ASSERT_TRUE(eventually([&] { return other->received("Get PlaybackStatus") == 1; }));
  other->set("PlaybackStatus", "Playing");
  other->announce("PlaybackStatus", false);
  ASSERT_TRUE(
      eventually([&] { return player_->candidates().back().state == PlayerState::Playing; }));
  EXPECT_EQ(controller().songInfo().title, "Title");

  fake_.set("PlaybackStatus", "Paused");
  fake_.announce("PlaybackStatus");
  EXPECT_TRUE(eventuallyShows("Other"));
  other.reset();
  EXPECT_TRUE(eventuallyShows("Title"));
}

TEST_F(ABus, HasRhythmboxKeepARatingByItsOwnInterface) {
  FakeMprisPlayer fake(bus_.address(), "rhythmbox");
  fake.setMetadata({{"xesam:title", "T"}, {"xesam:url", "file:///a%20b.ogg"}});
  connect(patience, "rhythmbox");
  EXPECT_EQ(errorNumber(kSetRating), 0);
  EXPECT_THAT(fake.writes(), ElementsAre(Write{"rating of file:///a%20b.ogg", 4.0}));
  EXPECT_TRUE(player_->description().keepsRating);
}

TEST_F(ABus, IsNeverMadeToStartAPlayer) {
  const TemporaryFolder folder;
  const auto mark = folder.path() / "started";
  bus_.addActivatableName("org.mpris.MediaPlayer2.sleeping", "/usr/bin/touch " + mark.string());
  connect(patience, "sleeping");
  EXPECT_FALSE(controller().running());
  EXPECT_EQ(controller().songInfo().title, "No Song Playing");
  controller().playback(Play);
  EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST_F(ABus, HasARealPlayerShownAndObeyAsAnotherProgramSees) {
  const TemporaryFolder folder;
  const auto first = folder.path() / "first #1 100%.flac";
  makeTrack(first, {.title = "Größe \u266b",
                    .artist = "The Larks",
                    .album = "Dawn",
                    .lyrics = "[00:01.00]one\n[00:02.00]two",
                    .cover = CORVELLA_RESOURCES "/covers/harbour.png",
                    .seconds = 60});
  RealMpv mpv(bus_.address(), {.files = {first, makeTrack(folder, {}, "flac")}, .paused = true});
  connect(patience, "mpv");
  const auto eventuallyTells = [&](const char* property, const char* text) {
    return eventually([&] { return mpv.tells(property, text); });
  };
  EXPECT_EQ(controller().songInfo(),
            (SongInfo{"Größe \u266b", "The Larks", "Dawn", "one\ntwo", 0, 100, "60.0"}));
  EXPECT_EQ(*player_->artworkOfCurrentTrack(),
            NSBundle(CORVELLA_RESOURCES).dataForResource("covers/harbour.png"));

  EXPECT_EQ(controller().playerState(), "paused");
  controller().playback(Play);
  EXPECT_TRUE(eventuallyTells("PlaybackStatus", "Playing"));
  EXPECT_TRUE(eventually([&] { return controller().playerPosition() > "0.0"; }));
  controller().playback(Next);
  EXPECT_TRUE(eventuallyShows("track.flac"));
  controller().playback(Previous);
  EXPECT_TRUE(eventuallyShows("Größe \u266b"));
  controller().setSoundVolume(35);
  EXPECT_TRUE(eventuallyTells("Volume", "double 0.35"));
  controller().playback(Pause);
  EXPECT_TRUE(eventuallyTells("PlaybackStatus", "Paused"));
  mpv.send(SIGKILL);
  EXPECT_TRUE(eventually([&] { return !controller().running(); }));
}

}  // namespace
}  // namespace Corvella
