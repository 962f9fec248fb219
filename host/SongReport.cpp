#include "host/SongReport.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace Corvella {

namespace {

/// Control characters would break the line, or worse, the terminal.
std::string onOneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7f;
      },
      ' ');
  return text;
}

std::string line(std::string_view name, std::string value) {
  return std::string(name) + ": " + onOneLine(std::move(value)) + "\n";
}

std::string optionalLine(std::string_view name, const std::optional<std::string>& value) {
  return line(name, value.value_or("(none)"));
}

std::string artworkText(const NSImage& artwork) {
  return std::to_string(artwork.width()) + " x " + std::to_string(artwork.height()) + ", " +
         std::to_string(artwork.encodedSize()) + " bytes";
}

std::string lyricsText(const std::string& lyrics) {
  if (lyrics.empty()) return "0 lines";
  const auto feeds = std::count(lyrics.begin(), lyrics.end(), '\n');
  const auto lines = lyrics.back() == '\n' ? feeds : feeds + 1;
  return std::to_string(lines) + (lines == 1 ? " line" : " lines");
}

}  // namespace

std::string songReport(const SongController& controller) {
  std::string report;
  report += line("running", controller.running() ? "true" : "false");
  report += optionalLine("state", controller.playerState());
  const auto song = controller.songInfo();
  report += line("title", song.title);
  report += line("artist", song.artist);
  report += line("album", song.album);
  report += line("rating", std::to_string(song.ratings));
  report += line("volume", std::to_string(song.volume));
  report += optionalLine("position", controller.playerPosition());
  report += optionalLine("finish", song.finish);
  report += line("artwork", artworkText(*controller.songArtwork()));
  report += line("lyrics", lyricsText(controller.songLyrics()));
  return report;
}

}  // namespace Corvella
