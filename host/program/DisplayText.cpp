#include "host/program/DisplayText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include "host/services/LineReader.h"

namespace Corvella {

namespace {

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7f;
}

bool isSecondControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 && byte < 0xa0;
}

/// The text with blanks in the place of control characters. Printed, they would break the line, and
/// those that start an escape sequence could change the settings of the terminal. Control
/// characters of the second set are two bytes in UTF-8: 0xC2, and one from 0x80 to 0x9F.
std::string withoutControls(std::string text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool second = i > 0 && text[i - 1] == '\xc2' && isSecondControl(text[i]);
    if (second) text[i - 1] = ' ';
    if (second || isControl(text[i])) text[i] = ' ';
  }
  return text;
}

/// The number with at most three decimals, without zeros at the end.
std::string numberText(double number) {
  std::array<char, 400> digits{};
  const auto rounded = std::round(number * 1000) / 1000;
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(),
                    std::isfinite(rounded) ? rounded : number, std::chars_format::fixed)
          .ptr;
  return {digits.data(), end};
}

std::string sizeText(double width, double height) {
  return numberText(width) + " x " + numberText(height);
}

std::string line(std::string_view name, std::string value) {
  return std::string(name) + ": " + withoutControls(std::move(value)) + "\n";
}

/// The lines as a reader counts them: there is none after a break at the very end, and an empty
/// text has none at all.
std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  LineReader reader(text);
  while (const auto next = reader.next()) lines.push_back(*next);
  if (lines.back().empty()) lines.pop_back();
  return lines;
}

struct ContentText {
  std::string operator()(const PlainContent& /*content*/) const { return {}; }
  std::string operator()(const TextFieldContent& content) const { return content.text; }
  std::string operator()(const ButtonContent& content) const { return content.title; }
  std::string operator()(const SliderContent& content) const { return numberText(content.value); }
  std::string operator()(const RatingContent& content) const {
    return std::to_string(content.stars) + " of " + std::to_string(content.mostStars);
  }
  std::string operator()(const ProgressContent& content) const {
    return numberText(content.value) + " of " + numberText(content.maxValue);
  }
  std::string operator()(const ImageContent& content) const {
    if (!content.image) return "(none)";
    return sizeText(content.image->width(), content.image->height());
  }
  std::string operator()(const TextContent& content) const {
    const auto lines = linesOf(content.text);
    const auto first = lines.empty() ? std::string() : std::string(lines.front());
    return first + " (" + std::to_string(lines.size()) + (lines.size() == 1 ? " line)" : " lines)");
  }
};

}  // namespace

std::string displayText(const WidgetDisplay& display) {
  constexpr std::array kOutlets{"songTitle",           "songArtistAndAlbum", "albumArtView",
                                "songRatingIndicator", "playButton",         "soundVolume",
                                "progressBar",         "toggleLyricsButton", "lyricsView"};
  std::string text;
  for (const auto* outlet : kOutlets) {
    if (const auto* view = display.view(outlet)) {
      text += line(outlet, std::visit(ContentText(), view->content));
    }
  }
  if (const auto& size = display.preferredContentSize()) {
    text += line("preferredContentSize", sizeText(size->width, size->height));
  }
  return text;
}

std::string lyricsText(const WidgetDisplay& display) {
  const auto* content = display.content<TextContent>("lyricsView");
  if (content == nullptr) return {};
  std::string text;
  for (const auto line : linesOf(content->text)) text += withoutControls(std::string(line)) + '\n';
  return text;
}

}  // namespace Corvella
