#include "scripting/AppleScriptController.h"

#include <cstdio>
#include <utility>

#include "platform/foundation/NSString.h"

namespace Corvella {

namespace {

std::string_view command(FetchRequestType type) {
  switch (type) {
    case FetchRequestType::Artwork:
      return "tell artwork 1 of the current track to raw data";
    case FetchRequestType::Lyrics:
      return "get lyrics of current track";
    case FetchRequestType::PlayerPosition:
      return "player position";
    case FetchRequestType::Rating:
      return "get rating";
    case FetchRequestType::Volume:
      return "get sound volume";
  }
  return {};
}

std::string_view command(PlaybackRequest request) {
  switch (request) {
    case PlaybackRequest::Play:
      return "play";
    case PlaybackRequest::Pause:
      return "pause";
    case PlaybackRequest::Previous:
      return "previous track";
    case PlaybackRequest::Next:
      return "next track";
  }
  return {};
}

/// Writes a line in one piece, whatever other threads write.
void printLine(std::string_view line) {
  flockfile(stdout);
  for (const char c : line) std::putchar(static_cast<unsigned char>(c));
  std::putchar('\n');
  funlockfile(stdout);
}

}  // namespace

AppleScriptController::AppleScriptController(ScriptRunner& runner) : runner_(runner) {}

std::optional<bool> AppleScriptController::isRunning() const {
  const auto answer = textAnswer("running");
  return answer && NSString::isEqualToString(*answer, "true");
}

std::optional<std::string> AppleScriptController::playerState() const {
  return textAnswer("get player state as string");
}

std::optional<NSAppleEventDescriptor> AppleScriptController::fetchSongInfo() const {
  return executeScript(
      scriptText("get (name, artist, album, lyrics, rating, finish) of current track"));
}

std::optional<NSAppleEventDescriptor> AppleScriptController::fetch(FetchRequestType type) const {
  return executeScript(scriptText(command(type)));
}

void AppleScriptController::controlPlayback(PlaybackRequest request) const {
  executeScript(scriptText(command(request)));
}

void AppleScriptController::updateRating(std::int64_t rating) const {
  executeScript(scriptText("set rating of current track to " + std::to_string(rating)));
}

void AppleScriptController::updateVolume(std::int64_t volume) const {
  executeScript(scriptText("set sound volume to " + std::to_string(volume)));
}

std::optional<NSAppleEventDescriptor> AppleScriptController::executeScript(
    std::string source) const {
  const auto script = runner_.initWithSource(std::move(source));
  if (!script) return std::nullopt;
  auto [result, error] = script->executeAndReturnError();
  if (error) {
    const auto state = playerState();
    if (!state || !NSString::isEqualToString(*state, "stopped")) printLine(error->description());
  }
  return std::move(result);
}

std::string AppleScriptController::scriptText(std::string_view command) const {
  constexpr std::string_view opening = "tell app ";
  constexpr std::string_view link = " to ";
  std::string text;
  text.reserve(opening.size() + appName.size() + link.size() + command.size());
  return text.append(opening).append(appName).append(link).append(command);
}

/// The text that a query answers, its error information ignored.
std::optional<std::string> AppleScriptController::textAnswer(std::string_view command) const {
  const auto script = runner_.initWithSource(scriptText(command));
  if (!script) return std::nullopt;
  const auto answer = script->executeAndReturnError().result;
  return answer ? answer->stringValue() : std::nullopt;
}

}  // namespace Corvella
