#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "scripting/AppleScriptController.h"
#include "tests/support/RecordingScriptRunner.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

using Descriptor = NSAppleEventDescriptor;

const auto text = &Descriptor::descriptorWithString;

constexpr auto kStateQuery = "get player state as string";

std::string scriptOf(const std::string& command) {
  return "tell app \"iTunes\" to " + command;
}

TEST(ARequest, SendsExactlyItsOneText) {
  using enum FetchRequestType;
  using enum PlaybackRequest;
  RecordingScriptRunner runner;
  const AppleScriptController controller(runner);
  controller.isRunning();
  controller.playerState();
  controller.fetchSongInfo();
  for (const auto type : {Artwork, Lyrics, PlayerPosition, Rating, Volume}) controller.fetch(type);
  for (const auto request : {Play, Pause, Previous, Next}) controller.controlPlayback(request);
  controller.updateRating(1'000'000);
  controller.updateRating(std::numeric_limits<std::int64_t>::min());
  controller.updateVolume(35);

  std::vector<std::string> expected;
  for (const auto* command :
       {"running", kStateQuery,
        "get (name, artist, album, lyrics, rating, finish) of current track",
        "tell artwork 1 of the current track to raw data", "get lyrics of current track",
        "player position", "get rating", "get sound volume", "play", "pause", "previous track",
        "next track", "set rating of current track to 1000000",
        "set rating of current track to -9223372036854775808", "set sound volume to 35"}) {
    expected.push_back(scriptOf(command));
  }
  EXPECT_EQ(runner.scripts(), expected);
}

TEST(RequestKinds, AreNumberedInOrder) {
  EXPECT_EQ(hashValue(PlaybackRequest::Play), 0);
  EXPECT_EQ(hashValue(PlaybackRequest::Next), 3);
  EXPECT_EQ(hashValue(FetchRequestType::Artwork), 0);
  EXPECT_EQ(hashValue(FetchRequestType::Volume), 4);
  static_assert(sizeof(PlaybackRequest) == 1 && sizeof(FetchRequestType) == 1);
}

TEST(TheRunningQuery, IsTrueForThatWordAloneAndNeverPrints) {
  const NSAppleScriptErrorInformation error;
  const std::vector<std::pair<NSAppleScriptExecution, bool>> rows{
      {{text("true"), {}}, true},
      {{Descriptor::descriptorWithBoolean(true), error}, true},
      {{text("True"), {}}, false},
      {{text("true "), {}}, false},
      {{Descriptor::listDescriptor({}), {}}, false},
      {{}, false},
      {{{}, error}, false}};
  for (std::size_t row = 0; row < rows.size(); ++row) {
    RecordingScriptRunner runner;
    runner.answer("running", rows[row].first);
    testing::internal::CaptureStdout();
    EXPECT_EQ(AppleScriptController(runner).isRunning(), rows[row].second) << row;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_THAT(runner.scripts(), ElementsAre(scriptOf("running")));
  }
}

TEST(TheStateQuery, IsAbsentAndSilentWhenItsScriptFails) {
  RecordingScriptRunner runner;
  const AppleScriptController controller(runner);
  runner.fail(kStateQuery);
  testing::internal::CaptureStdout();
  EXPECT_EQ(controller.playerState(), std::nullopt);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

  runner.answer(kStateQuery, Descriptor::listDescriptor({}));
  EXPECT_EQ(controller.playerState(), std::nullopt);
  runner.answerText(kStateQuery, "Fast Forwarding");
  EXPECT_EQ(controller.playerState(), "Fast Forwarding");
}

TEST(AScriptService, ThatMakesNoScriptsYieldsAbsenceWithoutAFurtherQuery) {
  RecordingScriptRunner runner;
  runner.refuseToMakeScripts();
  const AppleScriptController controller(runner);
  testing::internal::CaptureStdout();
  EXPECT_EQ(controller.isRunning(), false);
  EXPECT_EQ(controller.playerState(), std::nullopt);
  EXPECT_FALSE(controller.fetchSongInfo().has_value());
  controller.controlPlayback(PlaybackRequest::Play);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(runner.scripts().size(), 4U);
}

const std::string kErrorLine = RecordingScriptRunner::errorInformation(-1728).description() + "\n";

TEST(AFailedScript, IsReportedOnceUnlessThePlayerIsStopped) {
  const NSAppleScriptErrorInformation error;
  const std::vector<std::pair<NSAppleScriptExecution, std::string>> rows{
      {{text("playing"), {}}, kErrorLine},
      {{text("stopped"), {}}, ""},
      {{text("stopped"), error}, ""},
      {{text("Stopped"), {}}, kErrorLine},
      {{{}, error}, kErrorLine}};
  for (std::size_t row = 0; row < rows.size(); ++row) {
    RecordingScriptRunner runner;
    runner.fail("get lyrics of current track");
    runner.answer(kStateQuery, rows[row].first);

    testing::internal::CaptureStdout();
    EXPECT_FALSE(AppleScriptController(runner).fetch(FetchRequestType::Lyrics).has_value());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), rows[row].second) << row;

    EXPECT_THAT(runner.scripts(),
                ElementsAre(scriptOf("get lyrics of current track"), scriptOf(kStateQuery)));
  }
}

TEST(AScriptWithAResultAndAnError, YieldsTheResultAndIsReported) {
  RecordingScriptRunner runner;
  const AppleScriptController controller(runner);
  runner.answer("get sound volume",
                {Descriptor::descriptorWithInt32(40), NSAppleScriptErrorInformation()});
  testing::internal::CaptureStdout();
  const auto volume = controller.fetch(FetchRequestType::Volume);
  EXPECT_NE(testing::internal::GetCapturedStdout(), "");
  ASSERT_TRUE(volume.has_value());
  EXPECT_EQ(volume->int32Value(), 40);
}

TEST(ADerivedController, DecidesWhichStateAFailedScriptSees) {
  class Stopped final : public AppleScriptController {
   public:
    using AppleScriptController::AppleScriptController;
    std::optional<std::string> playerState() const override { return "stopped"; }
  };
  RecordingScriptRunner runner;
  runner.answerText(kStateQuery, "playing");
  runner.fail("pause");
  testing::internal::CaptureStdout();
  Stopped(runner).controlPlayback(PlaybackRequest::Pause);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_THAT(runner.scripts(), ElementsAre(scriptOf("pause")));
}

TEST(TwoThreadsWithFailedScripts, NeverMixTheirLines) {
  RecordingScriptRunner runner;
  runner.fail("play");
  runner.answerText(kStateQuery, "playing");
  const AppleScriptController controller(runner);
  constexpr int kRounds = 200;
  const auto work = [&] {
    for (int i = 0; i < kRounds; ++i) controller.controlPlayback(PlaybackRequest::Play);
  };

  testing::internal::CaptureStdout();
  std::thread other(work);
  work();
  other.join();
  const auto printed = testing::internal::GetCapturedStdout();

  std::string expected;
  for (int i = 0; i < 2 * kRounds; ++i) expected += kErrorLine;
  EXPECT_EQ(printed, expected);
}

}  // namespace
}  // namespace Corvella
