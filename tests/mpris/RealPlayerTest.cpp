#include <algorithm>
#include <filesystem>
#include <memory>

#include <gmock/gmock.h>

#include "tests/support/FakePlayerOnTheBus.h"
#include "tests/support/RealMpv.h"
#include "tests/support/TaggedTrack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

constexpr auto kCover = CORVELLA_RESOURCES "/covers/harbour.png";

/// mpv with two tracks on a bus of its own, paused at the start of the first.
class ARealPlayerOnTheBus : public ABus {
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
    player_ = std::make_unique<MprisPlayer>("", patience);
    stack_ = std::make_unique<ScriptedStack>(*player_);
  }

  const SongController& controller() const { return stack_->controller; }
  bool mpvTells(const char* property, const std::string& value) const {
    return eventually([&] { return mpv_->property(property).find(value) != value.npos; });
  }

  TemporaryFolder folder_;
  std::unique_ptr<RealMpv> mpv_;
  std::unique_ptr<MprisPlayer> player_;
  std::unique_ptr<ScriptedStack> stack_;
};

TEST_F(ARealPlayerOnTheBus, IsShownAsItsFileIsTagged) {
  EXPECT_EQ(controller().songInfo(),
            (SongInfo{"Größe \u266b", "The Larks", "Dawn", "one\ntwo", 0, 100, "60.0"}));
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
  EXPECT_TRUE(mpvTells("PlaybackStatus", "Playing"));
  EXPECT_EQ(controller().playerState(), "playing");
  EXPECT_TRUE(eventually([&] { return controller().playerPosition() > "0.0"; }));

  controller().playback(PlaybackRequest::Next);
  EXPECT_TRUE(eventually([&] { return controller().songInfo().title == "Second"; }));
  EXPECT_EQ(controller().songInfo().artist, "Unknown Artist");
  controller().playback(PlaybackRequest::Previous);
  EXPECT_TRUE(eventually([&] { return controller().songInfo().album == "Dawn"; }));

  controller().setSoundVolume(35);
  EXPECT_TRUE(mpvTells("Volume", "double 0.35"));
  EXPECT_EQ(controller().songInfo().volume, 35);
  controller().playback(PlaybackRequest::Pause);
  EXPECT_TRUE(mpvTells("PlaybackStatus", "Paused"));
}

TEST_F(ARealPlayerOnTheBus, IsGoneWhenItIsKilled) {
  EXPECT_TRUE(controller().running());
  mpv_->kill();
  EXPECT_TRUE(eventually([&] { return !controller().running(); }));
}

}  // namespace
}  // namespace Corvella
