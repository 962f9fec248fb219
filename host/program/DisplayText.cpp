#include "host/program/DisplayText.h"

#include <QList>
#include <QString>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include "host/services/LineReader.h"

namespace Corvella {

namespace {

bool mustNotBePrinted(char32_t character) {
  const auto isAmong = [character](char32_t first, char32_t last) {
    return character >= first && character <= last;
  };
  return character < 0x20 || isAmong(0x7f, 0x9f) || isAmong(0x202a, 0x202e) ||
         isAmong(0x2066, 0x2069);
}

std::string blank(char32_t /*character*/) {
  return " ";
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

std::string line(std::string_view name, const std::string& value) {
  return std::string(name) + ": " + withoutControls(value, blank) + "\n";
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

std::string withoutControls(std::string_view text, std::string (*replace)(char32_t character)) {
  QString printable;
  for (const char32_t character : QString::fromUtf8(text.data(), std::ssize(text)).toUcs4()) {
    printable += mustNotBePrinted(character) ? QString::fromStdString(replace(character))
                                             : QString::fromUcs4(&character, 1);
  }
  return printable.toStdString();
}

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
  for (const auto line : linesOf(content->text)) text += withoutControls(line, blank) + '\n';
  return text;
}

}  // namespace Corvella
