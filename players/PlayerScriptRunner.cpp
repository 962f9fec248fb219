#include "players/PlayerScriptRunner.h"

#include <algorithm>
#include <new>
#include <utility>
#include <variant>
#include <vector>

#include "platform/foundation/NSAppleEventDescriptor.h"

namespace Corvella {

namespace {

constexpr std::string_view kPlayerName = "iTunes";
constexpr std::string_view kPlayerIdentifier = "com.apple.iTunes";
constexpr std::string_view kPlaybackGroup = "com.apple.iTunes.playback";
constexpr std::string_view kLibraryGroup = "com.apple.iTunes.library.read-write";

// The platform's error numbers for scripts and application events.
constexpr int kSyntaxError = -2741;
constexpr int kNotRunning = -600;
constexpr int kNoSuchObject = -1728;
constexpr int kNotUnderstood = -1708;
constexpr int kTimedOut = -1712;
constexpr int kNotPermitted = -1743;

using Descriptor = NSAppleEventDescriptor;

NSAppleScriptExecution failed(int number, std::string reason, std::string application) {
  auto message = application.empty() ? reason : application + " got an error: " + reason;
  return {.result = std::nullopt,
          .error = NSAppleScriptErrorInformation{.number = number,
                                                 .message = std::move(message),
                                                 .briefMessage = std::move(reason),
                                                 .appName = std::move(application)}};
}

NSAppleScriptExecution failed(PlayerFailure failure) {
  const std::string application(kPlayerName);
  switch (failure) {
    case PlayerFailure::NotRunning:
      return failed(kNotRunning, "Application isn't running.", application);
    case PlayerFailure::NoSuchObject:
      return failed(kNoSuchObject, "Can't get that object.", application);
    case PlayerFailure::NotUnderstood:
      return failed(kNotUnderstood, "The player doesn't understand the command.", application);
    case PlayerFailure::TimedOut:
      return failed(kTimedOut, "The player did not answer in time.", application);
  }
  return {};
}

NSAppleScriptExecution notPermitted(std::string application) {
  return failed(kNotPermitted, "Not authorized to send Apple events.", std::move(application));
}

NSAppleScriptExecution answered(Descriptor result) {
  return {.result = std::move(result), .error = std::nullopt};
}

/// The player's value made a descriptor, or its failure made error information.
template <typename Value, typename Conversion>
NSAppleScriptExecution answered(PlayerAnswer<Value> answer, Conversion toDescriptor) {
  if (!answer) return failed(answer.failure());
  return answered(toDescriptor(*std::move(answer)));
}

Descriptor stateDescriptor(PlayerState state) {
  switch (state) {
    case PlayerState::Playing:
      return Descriptor::descriptorWithString("playing");
    case PlayerState::Paused:
      return Descriptor::descriptorWithString("paused");
    case PlayerState::Stopped:
      break;
  }
  return Descriptor::descriptorWithString("stopped");
}

Descriptor secondsDescriptor(std::optional<std::chrono::microseconds> seconds) {
  return seconds ? Descriptor::descriptorWithReal(*seconds) : Descriptor::nullDescriptor();
}

/// A track whose end is not known ends at 0, so that no end of an earlier track stays in force.
Descriptor finishDescriptor(std::optional<std::chrono::microseconds> finish) {
  return finish ? Descriptor::descriptorWithReal(*finish) : Descriptor::descriptorWithInt32(0);
}

Descriptor songInfoDescriptor(Track track) {
  std::vector<Descriptor> items;
  items.reserve(6);
  items.push_back(Descriptor::descriptorWithString(std::move(track.name)));
  items.push_back(Descriptor::descriptorWithString(std::move(track.artist)));
  items.push_back(Descriptor::descriptorWithString(std::move(track.album)));
  items.push_back(Descriptor::descriptorWithString(std::move(track.lyrics)));
  items.push_back(Descriptor::descriptorWithInt32(track.rating));
  items.push_back(finishDescriptor(track.finish));
  return Descriptor::listDescriptor(std::move(items));
}

int percent(std::int64_t number) {
  return static_cast<int>(std::clamp<std::int64_t>(number, 0, 100));
}

/// One script of a `PlayerScriptRunner`.
class PlayerScript final : public NSAppleScript {
 public:
  PlayerScript(PlayerScriptRunner& runner, std::string source)
      : runner_(runner), source_(std::move(source)) {}

  NSAppleScriptExecution executeAndReturnError() override { return runner_.run(source_); }

 private:
  PlayerScriptRunner& runner_;
  std::string source_;
};

}  // namespace

PlayerScriptRunner::PlayerScriptRunner(MusicPlayer& player, const ScriptingTargets& targets,
                                       PlayerNewsListener* listener)
    : player_(player),
      listener_(listener),
      mayAddress_(targets.grants(kPlayerIdentifier)),
      mayControlPlayback_(targets.grants(kPlayerIdentifier, kPlaybackGroup)),
      mayUseLibrary_(targets.grants(kPlayerIdentifier, kLibraryGroup)) {}

std::unique_ptr<NSAppleScript> PlayerScriptRunner::initWithSource(std::string source) {
  return std::make_unique<PlayerScript>(*this, std::move(source));
}

NSAppleScriptExecution PlayerScriptRunner::run(std::string_view source) try {
  auto parsed = parseScript(source);
  if (auto* error = std::get_if<ScriptTextError>(&parsed)) {
    if (error->kind == ScriptTextError::Kind::Syntax) {
      return failed(kSyntaxError, std::move(error->message), std::move(error->application));
    }
    // What an application understands is told only to those who may address it.
    if (!mayAddress(error->application)) return notPermitted(std::move(error->application));
    return failed(kNotUnderstood, std::move(error->message), std::move(error->application));
  }
  auto& command = std::get<ScriptCommand>(parsed);
  if (!isGranted(command)) return notPermitted(std::move(command.application));
  return answer(command);
} catch (const std::bad_alloc&) {
  // What a player says may be larger than the memory that is left. Without its answer the widget
  // goes on; an exception would end the program.
  return failed(PlayerFailure::NotUnderstood);
}

bool PlayerScriptRunner::mayAddress(std::string_view application) const {
  return application == kPlayerName && mayAddress_;
}

bool PlayerScriptRunner::isGranted(const ScriptCommand& command) const {
  if (!mayAddress(command.application)) return false;
  switch (command.verb) {
    case ScriptVerb::Running:
      return true;
    case ScriptVerb::GetSongInfo:
    case ScriptVerb::GetArtwork:
    case ScriptVerb::GetLyrics:
    case ScriptVerb::GetRating:
    case ScriptVerb::SetRating:
      return mayUseLibrary_;
    case ScriptVerb::GetPlayerState:
    case ScriptVerb::GetPlayerPosition:
    case ScriptVerb::GetSoundVolume:
    case ScriptVerb::SetSoundVolume:
    case ScriptVerb::Play:
    case ScriptVerb::Pause:
    case ScriptVerb::PreviousTrack:
    case ScriptVerb::NextTrack:
      return mayControlPlayback_;
  }
  return false;
}

NSAppleScriptExecution PlayerScriptRunner::answer(const ScriptCommand& command) {
  switch (command.verb) {
    case ScriptVerb::Running:
      return answered(Descriptor::descriptorWithBoolean(player_.running()));
    case ScriptVerb::GetPlayerState:
      return answered(player_.playerState(), stateDescriptor);
    case ScriptVerb::GetSongInfo:
      return answered(player_.currentTrack(), songInfoDescriptor);
    case ScriptVerb::GetArtwork:
      return answered(player_.artworkOfCurrentTrack(), Descriptor::descriptorWithData);
    case ScriptVerb::GetLyrics:
      return answered(player_.lyricsOfCurrentTrack(), Descriptor::descriptorWithString);
    case ScriptVerb::GetPlayerPosition:
      return answered(player_.playerPosition(), secondsDescriptor);
    case ScriptVerb::GetRating:  // The script names no track, and a player itself has no rating.
      return failed(player_.running() ? PlayerFailure::NoSuchObject : PlayerFailure::NotRunning);
    case ScriptVerb::GetSoundVolume:
      return answered(player_.soundVolume(), Descriptor::descriptorWithInt32);
    case ScriptVerb::SetRating:
      return obeyed(player_.setRatingOfCurrentTrack(percent(command.number)));
    case ScriptVerb::SetSoundVolume:
      return obeyed(player_.setSoundVolume(percent(command.number)));
    case ScriptVerb::Play:
      return obeyed(player_.perform(PlaybackRequest::Play));
    case ScriptVerb::Pause:
      return obeyed(player_.perform(PlaybackRequest::Pause));
    case ScriptVerb::PreviousTrack:
      return obeyed(player_.perform(PlaybackRequest::Previous));
    case ScriptVerb::NextTrack:
      return obeyed(player_.perform(PlaybackRequest::Next));
  }
  return {};
}

NSAppleScriptExecution PlayerScriptRunner::obeyed(PlayerAnswer<Done> answer) {
  if (listener_ != nullptr) {
    listener_->playerNews(answer ? PlayerNews::Commanded : PlayerNews::Refused);
  }
  return answered(answer, [](Done) { return Descriptor::nullDescriptor(); });
}

}  // namespace Corvella
