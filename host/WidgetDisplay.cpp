#include "host/WidgetDisplay.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>

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

/// Blanks in the place of control characters, which would break the line, or worse, the terminal;
/// those of the second set come as two bytes, 0xC2 and 0x80 to 0x9F.
std::string withoutControls(std::string text, bool keepsLineFeeds) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool second = i > 0 && text[i - 1] == '\xc2' && isSecondControl(text[i]);
    if (second) text[i - 1] = ' ';
    if (second || (isControl(text[i]) && !(keepsLineFeeds && text[i] == '\n'))) text[i] = ' ';
  }
  return text;
}

/// At most three decimals, none of them a zero at the end.
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
  return std::string(name) + ": " + withoutControls(std::move(value), false) + "\n";
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
    const auto lines = lineCount(content.text);
    return content.text.substr(0, content.text.find('\n')) + " (" + std::to_string(lines) +
           (lines == 1 ? " line)" : " lines)");
  }

 private:
  static std::ptrdiff_t lineCount(const std::string& text) {
    if (text.empty()) return 0;
    const auto feeds = std::count(text.begin(), text.end(), '\n');
    return text.back() == '\n' ? feeds : feeds + 1;
  }
};

}  // namespace

void WidgetDisplay::apply(WidgetSnapshot snapshot) {
  for (auto& view : snapshot.views) views_.insert_or_assign(view.identifier, std::move(view));
  size_ = snapshot.size;
  preferredContentSize_ = snapshot.preferredContentSize;
}

const ViewSnapshot* WidgetDisplay::view(const std::string& identifier) const {
  const auto found = views_.find(identifier);
  return found == views_.end() ? nullptr : &found->second;
}

std::string displayText(const WidgetDisplay& display) {
  constexpr std::array outlets{"songTitle",           "songArtistAndAlbum", "albumArtView",
                               "songRatingIndicator", "playButton",         "soundVolume",
                               "progressBar",         "toggleLyricsButton", "lyricsView"};
  std::string text;
  for (const auto* outlet : outlets) {
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
  if (content == nullptr || content->text.empty()) return {};
  auto text = withoutControls(content->text, true);
  if (text.back() != '\n') text += '\n';
  return text;
}

}  // namespace Corvella
