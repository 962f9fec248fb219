#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include <gmock/gmock.h>

#include "players/mpris/MprisPlayer.h"
#include "tests/support/BusClient.h"
#include "tests/support/Eventually.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RealMpv.h"
#include "tests/support/ScriptedStack.h"
#include "tests/support/TaggedTrack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

constexpr auto kCover = CORVELLA_RESOURCES "/covers/harbour.png";

/// mpv with two tracks on a bus of its own, paused at the start of the first.
class ARealPlayerOnTheBus : public testing::Test {
 protected:
  ARealPlayerOnTheBus() {
    const auto first = folder_.path() / "first #1 100%.flac";
    const auto second = folder_.path() / "second.flac";
    makeTrack(first, {.title = "Größe \u266b",
                      .artist = "The Larks",
                      .album = "Dawn",
                      .lyrics = "[00:01.00]one\n[00:02.00]two",
                      .cover = kCover,
                      .seconds = 60});
    makeTrack(second,
              {.title = "Second", .artist = "", .album = "", .lyrics = "", .cover = kCover});
    mpv_ = std::make_unique<RealMpv>(bus_.address(),
                                     RealMpv::Options{.files = {first, second}, .paused = true});
    player_ = std::make_unique<MprisPlayer>();
    stack_ = std::make_unique<ScriptedStack>(*player_);
  }

  const SongController& controller() const { return stack_->controller; }
  std::string seen(const std::string& property) {
    return client_.text(mpv_->busName(), property).value_or("");
  }

  TemporaryFolder folder_;
  PrivateBus bus_;
  ScopedSessionBus session_{bus_.address()};
  BusClient client_{bus_.address()};
  std::unique_ptr<RealMpv> mpv_;
  std::unique_ptr<MprisPlayer> player_;
  std::unique_ptr<ScriptedStack> stack_;
};

TEST_F(ARealPlayerOnTheBus, IsShownAsItsFileIsTagged) {
  const auto song = controller().songInfo();
  EXPECT_EQ(song.title, "Größe \u266b");
  EXPECT_EQ(song.artist, "The Larks");
  EXPECT_EQ(song.album, "Dawn");
  EXPECT_EQ(song.lyrics, "one\ntwo");
  EXPECT_EQ(song.finish, "60.0");
  EXPECT_EQ(controller().songLyrics(), "one\ntwo");

  const auto artwork =
      stack_->runner.run("tell app \"iTunes\" to tell artwork 1 of the current track to raw data");
  const auto cover = NSBundle("/").dataForResource(std::string_view(kCover).substr(1));
  ASSERT_TRUE(artwork.result && cover);
  EXPECT_TRUE(std::ranges::equal(artwork.result->data(), *cover));
}

TEST_F(ARealPlayerOnTheBus, ObeysAsAnotherProgramSees) {
  EXPECT_EQ(controller().playerState(), "paused");
  controller().playback(PlaybackRequest::Play);
  EXPECT_TRUE(eventually([&] { return seen("PlaybackStatus") == "Playing"; }));
  EXPECT_EQ(controller().playerState(), "playing");
  EXPECT_TRUE(eventually([&] { return controller().playerPosition() > "0.0"; }));

  controller().playback(PlaybackRequest::Next);
  EXPECT_TRUE(
      eventually([&] { return client_.metadata(mpv_->busName())["xesam:title"] == "Second"; }));
  EXPECT_EQ(controller().songInfo().artist, "");
  controller().playback(PlaybackRequest::Previous);
  EXPECT_TRUE(eventually([&] { return controller().songInfo().album == "Dawn"; }));

  controller().setSoundVolume(35);
  EXPECT_TRUE(eventually([&] { return seen("Volume") == "0.350000"; }));
  EXPECT_EQ(controller().songInfo().volume, 35);
  controller().playback(PlaybackRequest::Pause);
  EXPECT_TRUE(eventually([&] { return seen("PlaybackStatus") == "Paused"; }));
}

TEST_F(ARealPlayerOnTheBus, ThatIsKilledIsNotRunningWithoutAStall) {
  EXPECT_TRUE(controller().running());
  mpv_->kill();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(controller().songInfo().title, "No Song Playing");
  EXPECT_EQ(controller().playerPosition(), std::nullopt);
  EXPECT_LT(std::chrono::steady_clock::now() - start, MprisBus::kDeadline);
  EXPECT_TRUE(eventually([&] { return !controller().running(); }));
}

}  // namespace
}  // namespace Corvella
