#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include <gmock/gmock.h>

#include "scripting/AppleScriptController.h"
#include "tests/support/RecordingScriptRunner.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Descriptor = NSAppleEventDescriptor;

constexpr auto kStateQuery = "get player state as string";
constexpr auto kStateScript = "tell app \"iTunes\" to get player state as string";

struct RequestRow {
  std::string name;
  std::function<void(const AppleScriptController&)> request;
  std::string text;
};

class ARequest : public testing::TestWithParam<RequestRow> {};

TEST_P(ARequest, SendsExactlyItsOneText) {
  RecordingScriptRunner runner;
  const AppleScriptController controller(runner);
  GetParam().request(controller);
  EXPECT_THAT(runner.scripts(), ElementsAre(GetParam().text));
}

RequestRow fetchRow(std::string name, FetchRequestType type, std::string text) {
  return {std::move(name), [type](const auto& controller) { controller.fetch(type); },
          std::move(text)};
}

RequestRow playbackRow(std::string name, PlaybackRequest request, std::string text) {
  return {std::move(name),
          [request](const auto& controller) { controller.controlPlayback(request); },
          std::move(text)};
}

RequestRow ratingRow(std::string name, std::int64_t rating, const std::string& number) {
  return {std::move(name), [rating](const auto& controller) { controller.updateRating(rating); },
          "tell app \"iTunes\" to set rating of current track to " + number};
}

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, ARequest,
    testing::Values(
        RequestRow{"Running", [](const auto& c) { c.isRunning(); },
                   "tell app \"iTunes\" to running"},
        RequestRow{"State", [](const auto& c) { c.playerState(); }, kStateScript},
        RequestRow{"SongInfo", [](const auto& c) { c.fetchSongInfo(); },
                   "tell app \"iTunes\" to get (name, artist, album, lyrics, rating, finish) of "
                   "current track"},
        fetchRow("Artwork", FetchRequestType::Artwork,
                 "tell app \"iTunes\" to tell artwork 1 of the current track to raw data"),
        fetchRow("Lyrics", FetchRequestType::Lyrics,
                 "tell app \"iTunes\" to get lyrics of current track"),
        fetchRow("Position", FetchRequestType::PlayerPosition,
                 "tell app \"iTunes\" to player position"),
        fetchRow("Rating", FetchRequestType::Rating, "tell app \"iTunes\" to get rating"),
        fetchRow("Volume", FetchRequestType::Volume, "tell app \"iTunes\" to get sound volume"),
        playbackRow("Play", PlaybackRequest::Play, "tell app \"iTunes\" to play"),
        playbackRow("Pause", PlaybackRequest::Pause, "tell app \"iTunes\" to pause"),
        playbackRow("Previous", PlaybackRequest::Previous, "tell app \"iTunes\" to previous track"),
        playbackRow("Next", PlaybackRequest::Next, "tell app \"iTunes\" to next track"),
        ratingRow("RatingNone", 0, "0"), ratingRow("RatingNegative", -20, "-20"),
        ratingRow("RatingBeyondTheScale", 1'000'000, "1000000"),
        ratingRow("RatingSmallest", std::numeric_limits<std::int64_t>::min(),
                  "-9223372036854775808"),
        RequestRow{"SetVolume", [](const auto& c) { c.updateVolume(35); },
                   "tell app \"iTunes\" to set sound volume to 35"}),
    rowName);

TEST(RequestKinds, AreNumberedInOrderAndServeAsKeys) {
  EXPECT_EQ(hashValue(PlaybackRequest::Play), 0);
  EXPECT_EQ(hashValue(PlaybackRequest::Next), 3);
  EXPECT_EQ(hashValue(FetchRequestType::Artwork), 0);
  EXPECT_EQ(hashValue(FetchRequestType::Volume), 4);
  static_assert(sizeof(PlaybackRequest) == 1 && sizeof(FetchRequestType) == 1);
  static_assert(std::is_same_v<decltype(hashValue(PlaybackRequest::Play)), std::int64_t>);
  const std::unordered_set<FetchRequestType> keys{FetchRequestType::Rating,
                                                  FetchRequestType::Rating};
  EXPECT_EQ(keys.size(), 1U);
}

struct RunningRow {
  std::string name;
  NSAppleScriptExecution execution;
  bool running;
};

class TheRunningQuery : public testing::TestWithParam<RunningRow> {};

TEST_P(TheRunningQuery, IsTrueForThatWordAloneAndNeverPrints) {
  RecordingScriptRunner runner;
  runner.answer("running", GetParam().execution);
  testing::internal::CaptureStdout();
  EXPECT_EQ(AppleScriptController(runner).isRunning(), GetParam().running);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_THAT(runner.scripts(), ElementsAre("tell app \"iTunes\" to running"));
}

INSTANTIATE_TEST_SUITE_P(
    ForEachAnswer, TheRunningQuery,
    testing::Values(
        RunningRow{"True", {Descriptor::descriptorWithString("true"), {}}, true},
        RunningRow{"TrueWithAnError",
                   {Descriptor::descriptorWithBoolean(true), NSAppleScriptErrorInformation()},
                   true},
        RunningRow{"Capital", {Descriptor::descriptorWithString("True"), {}}, false},
        RunningRow{"WithABlank", {Descriptor::descriptorWithString("true "), {}}, false},
        RunningRow{"NoText", {Descriptor::listDescriptor({}), {}}, false},
        RunningRow{"Nothing", {}, false},
        RunningRow{"AnErrorAlone", {{}, NSAppleScriptErrorInformation()}, false}),
    rowName);

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
  EXPECT_EQ(runner.asked(), 4);
}

struct DiagnosticRow {
  std::string name;
  NSAppleScriptExecution state;
  bool prints;
};

class AFailedScript : public testing::TestWithParam<DiagnosticRow> {
 protected:
  static std::string errorLine() {
    return RecordingScriptRunner::errorInformation(-1728).description() + "\n";
  }
};

TEST_P(AFailedScript, IsReportedOnceUnlessThePlayerIsStopped) {
  RecordingScriptRunner runner;
  const AppleScriptController controller(runner);
  runner.fail("get lyrics of current track");
  runner.answer(kStateQuery, GetParam().state);

  testing::internal::CaptureStdout();
  const auto result = controller.fetch(FetchRequestType::Lyrics);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), GetParam().prints ? errorLine() : "");

  EXPECT_FALSE(result.has_value());
  EXPECT_THAT(runner.scripts(),
              ElementsAre("tell app \"iTunes\" to get lyrics of current track", kStateScript));
}

INSTANTIATE_TEST_SUITE_P(
    InEachState, AFailedScript,
    testing::Values(
        DiagnosticRow{"Playing", {Descriptor::descriptorWithString("playing"), {}}, true},
        DiagnosticRow{"Stopped", {Descriptor::descriptorWithString("stopped"), {}}, false},
        DiagnosticRow{
            "StoppedWithAnError",
            {Descriptor::descriptorWithString("stopped"), NSAppleScriptErrorInformation()},
            false},
        DiagnosticRow{
            "StoppedWithACapital", {Descriptor::descriptorWithString("Stopped"), {}}, true},
        DiagnosticRow{"Unknown", {{}, NSAppleScriptErrorInformation()}, true}),
    rowName);

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
  EXPECT_THAT(runner.scripts(), ElementsAre("tell app \"iTunes\" to pause"));
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

  const auto line = RecordingScriptRunner::errorInformation(-1728).description() + "\n";
  std::string expected;
  for (int i = 0; i < 2 * kRounds; ++i) expected += line;
  EXPECT_EQ(printed, expected);
}

}  // namespace
}  // namespace Corvella
