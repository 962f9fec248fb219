#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "scripting/AppleScriptController.h"
#include "tests/support/RecordingScriptRunner.h"

namespace Corvella {
namespace {

using Descriptor = NSAppleEventDescriptor;

const auto text = &Descriptor::descriptorWithString;
const auto list = &Descriptor::listDescriptor;
const NSAppleScriptErrorInformation error = RecordingScriptRunner::failure();
const std::string errorLine = error.description() + "\n";

std::string scriptOf(const std::string& command) {
  return "tell app \"iTunes\" to " + command;
}

class AScriptController : public testing::Test {
 protected:
  AScriptController() { testing::internal::CaptureStdout(); }
  ~AScriptController() override { EXPECT_EQ(testing::internal::GetCapturedStdout(), ""); }

  /// What has been printed since the last call. Nothing else may be when a test ends.
  static std::string printed() {
    auto output = testing::internal::GetCapturedStdout();
    testing::internal::CaptureStdout();
    return output;
  }

  RecordingScriptRunner runner_;
  AppleScriptController controller_{runner_};
};

TEST_F(AScriptController, SendsExactlyOneTextForEachRequest) {
  using enum FetchRequestType;
  using enum PlaybackRequest;
  controller_.isRunning();
  controller_.playerState();
  controller_.fetchSongInfo();
  for (const auto type : {Artwork, Lyrics, PlayerPosition, Rating, Volume}) controller_.fetch(type);
  for (const auto request : {Play, Pause, Previous, Next}) controller_.controlPlayback(request);
  controller_.updateRating(1'000'000);
  controller_.updateRating(std::numeric_limits<std::int64_t>::min());
  controller_.updateVolume(35);

  std::vector<std::string> expected;
  for (const auto* command :
       {"running", "get player state as string",
        "get (name, artist, album, lyrics, rating, finish) of current track",
        "tell artwork 1 of the current track to raw data", "get lyrics of current track",
        "player position", "get rating", "get sound volume", "play", "pause", "previous track",
        "next track", "set rating of current track to 1000000",
        "set rating of current track to -9223372036854775808", "set sound volume to 35"}) {
    expected.push_back(scriptOf(command));
  }
  EXPECT_EQ(runner_.scripts(), expected);
}

TEST_F(AScriptController, TakesThePlayerForRunningAtOneWordAndItsStateAsItIsAndNeverPrints) {
  const std::vector<std::pair<NSAppleScriptExecution, std::optional<std::string>>> rows{
      {{text("true"), {}}, "true"},   {{Descriptor::descriptorWithBoolean(true), error}, "true"},
      {{text("True"), {}}, "True"},   {{text("true "), {}}, "true "},
      {{list({}), {}}, std::nullopt}, {{}, std::nullopt},
      {{{}, error}, std::nullopt}};
  for (const auto& [answer, state] : rows) {
    runner_.answer("running", answer);
    runner_.answer("get player state as string", answer);
    EXPECT_EQ(controller_.isRunning(), state == "true") << state.value_or("absent");
    EXPECT_EQ(controller_.playerState(), state);
  }
  EXPECT_EQ(runner_.scripts().size(), 2 * rows.size());
}

TEST_F(AScriptController, OfAServiceThatMakesNoScriptsYieldsAbsenceWithoutAFurtherQuery) {
  runner_.refuses = true;
  EXPECT_EQ(controller_.isRunning(), false);
  EXPECT_EQ(controller_.playerState(), std::nullopt);
  EXPECT_FALSE(controller_.fetchSongInfo().has_value());
  EXPECT_EQ(runner_.scripts().size(), 3U);
}

TEST_F(AScriptController, ReportsAFailedScriptOnceWithItsResultUnlessThePlayerIsStopped) {
  const std::vector<std::pair<NSAppleScriptExecution, std::string>> rows{
      {{text("playing"), {}}, errorLine},
      {{text("stopped"), {}}, ""},
      {{text("stopped"), error}, ""},
      {{text("Stopped"), {}}, errorLine},
      {{{}, error}, errorLine}};
  for (const auto& [state, line] : rows) {
    RecordingScriptRunner runner;
    runner.answer("get lyrics of current track", {text("La"), error});
    runner.answer("get player state as string", state);
    const auto lyrics = AppleScriptController(runner).fetch(FetchRequestType::Lyrics);
    EXPECT_EQ(lyrics.value_or(text("absent")).stringValue(), "La");
    EXPECT_EQ(printed(), line);
    EXPECT_THAT(runner.scripts(), testing::ElementsAre(scriptOf("get lyrics of current track"),
                                                       scriptOf("get player state as string")));
  }
}

TEST_F(AScriptController, AsksItsOverrideForTheStateThatAFailedScriptSees) {
  class Stopped final : public AppleScriptController {
   public:
    using AppleScriptController::AppleScriptController;
    std::optional<std::string> playerState() const override { return "stopped"; }
  };
  runner_.fail("pause");
  Stopped(runner_).controlPlayback(PlaybackRequest::Pause);
}

TEST_F(AScriptController, NeverMixesTheLinesOfTwoThreads) {
  runner_.fail("play");
  const auto work = [&] {
    for (int i = 0; i < 200; ++i) controller_.controlPlayback(PlaybackRequest::Play);
  };
  std::thread other(work);
  work();
  other.join();
  std::string expected;
  for (int i = 0; i < 400; ++i) expected += errorLine;
  EXPECT_EQ(printed(), expected);
}

}  // namespace
}  // namespace Corvella
