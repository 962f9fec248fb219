#include "model/SongController.h"

#include <cstddef>
#include <utility>

#include "platform/foundation/NSAppleEventDescriptor.h"
#include "scripting/FetchRequestType.h"

namespace Corvella {

namespace {

constexpr auto kNoTitle = "No Song Playing";
constexpr auto kNoArtist = "Artist";
constexpr auto kNoAlbum = "Album";

std::optional<std::string> textOf(const std::optional<NSAppleEventDescriptor>& answer) {
  return answer ? answer->stringValue() : std::nullopt;
}

std::optional<std::string> textItem(const NSAppleEventDescriptor& list, std::size_t index) {
  const auto* item = list.descriptorAtIndex(index);
  return item != nullptr ? item->stringValue() : std::nullopt;
}

std::int32_t numberItem(const NSAppleEventDescriptor& list, std::size_t index) {
  const auto* item = list.descriptorAtIndex(index);
  return item != nullptr ? item->int32Value() : 0;
}

SongInfo noSong(std::int32_t volume) {
  return {.title = kNoTitle,
          .artist = kNoArtist,
          .album = kNoAlbum,
          .lyrics = "",
          .ratings = 0,
          .volume = volume,
          .finish = std::nullopt};
}

}  // namespace

SongController::SongController(ScriptRunner& runner, const NSBundle& bundle,
                               const NSImageDecoder& decoder)
    : bundle_(bundle),
      decoder_(decoder),
      scriptController(std::make_unique<AppleScriptController>(runner)) {}

bool SongController::running() const {
  return scriptController->isRunning().value_or(false);
}

std::optional<std::string> SongController::playerPosition() const {
  return textOf(scriptController->fetch(FetchRequestType::PlayerPosition));
}

std::optional<std::string> SongController::playerState() const {
  return scriptController->playerState();
}

std::shared_ptr<const NSImage> SongController::songArtwork() const {
  if (const auto answer = scriptController->fetch(FetchRequestType::Artwork)) {
    if (auto image = NSImage::initWithData(answer->data(), decoder_)) return image;
  }
  return placeholderArtwork();
}

std::string SongController::songLyrics() const {
  return textOf(scriptController->fetch(FetchRequestType::Lyrics)).value_or("");
}

SongInfo SongController::songInfo() const {
  const auto song = scriptController->fetchSongInfo();
  const auto volumeAnswer = scriptController->fetch(FetchRequestType::Volume);
  const std::int32_t volume = volumeAnswer ? volumeAnswer->int32Value() : 0;
  if (!song) return noSong(volume);

  auto title = textItem(*song, 1);
  auto artist = textItem(*song, 2);
  auto album = textItem(*song, 3);
  auto lyrics = textItem(*song, 4);
  const std::int32_t ratings = numberItem(*song, 5);
  auto finish = textItem(*song, 6);
  if (!title) return noSong(volume);

  return {.title = *std::move(title),
          .artist = std::move(artist).value_or(kNoArtist),
          .album = std::move(album).value_or(kNoAlbum),
          .lyrics = std::move(lyrics).value_or(""),
          .ratings = ratings,
          .volume = volume,
          .finish = std::move(finish)};
}

void SongController::setSongRating(std::int64_t rating) const {
  scriptController->updateRating(rating);
}

void SongController::setSoundVolume(std::int64_t volume) const {
  scriptController->updateVolume(volume);
}

void SongController::playback(PlaybackRequest request) const {
  scriptController->controlPlayback(request);
}

std::shared_ptr<const NSImage> SongController::placeholderArtwork() const {
  auto image = NSImage::imageNamed("empty_artwork.png", bundle_, decoder_);
  return image ? image : std::make_shared<const NSImage>();
}

}  // namespace Corvella
