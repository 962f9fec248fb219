// Lyrics as the panel breaks them into lines, measures them and lays them out: no more than the
// bounds allow, and all of them where they are to be. The first byte of an input chooses the width.

#include <QApplication>
#include <QDeadlineTimer>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz/Check.h"
#include "host/controls/LyricsLayout.h"
#include "host/services/LyricsLines.h"
#include "host/services/QtFonts.h"
#include "host/services/QtTextMeasurer.h"
#include "platform/base/Utf8.h"

namespace Corvella {
namespace {

void checkLines(const LyricsLines& lines) {
  check(lines.count() >= 1 && lines.count() <= LyricsLines::kMostLines + 1, "not too many lines");
  // Between the lines stand line feeds, and the last of them may say that the rest was left out.
  check(lines.text().size() <= LyricsLines::kMostCharacters + lines.count() + 100,
        "not too many characters");
  for (qsizetype i = 0; i < lines.count(); ++i) {
    const auto line = lines.line(i);
    check(line.size() <= LyricsLines::kMostCharactersOnALine, "no line is too long");
    check(!line.contains(u'\n') && !line.contains(u'\r'), "lines end at line breaks");
    check(line.isEmpty() || !line.back().isHighSurrogate(), "no character is cut");
    check(lines.lineAt(lines.start(i)) == i, "a line's start is on it");
    check(lines.lineAt(lines.end(i)) == i, "a line's end is on it");
  }
}

/// The place under a point is in the text, and its caret stands where it was asked for.
void checkPlaces(LyricsLayout& layout) {
  for (qsizetype line = 0; line < layout.knownLines() && line < 20; ++line) {
    for (const double x : {-1.0, 7.5, 1e6}) {
      const auto place =
          layout.placeAt({x, layout.top(line) + 1}, QTextLine::CursorBetweenCharacters);
      check(place >= 0 && place <= layout.lines().text().size(), "a place is in the text");
      check(layout.lines().lineAt(place) == layout.lineAtHeight(layout.top(line) + 1),
            "a place is on the line under the point");
      const auto caret = layout.caretAt(place);
      check(caret.height() > 0 && std::isfinite(caret.x()), "a place has a caret");
      check(caret.top() >= layout.top(line), "a caret is not above its line");
    }
  }
}

void checkLayout(std::string_view text, double width) {
  const LyricsLines lines(text);
  checkLines(lines);
  // Qt may break a text in other places the first time that it needs a font for its characters.
  QtTextMeasurer().measure(text, nullptr, width);
  const auto size = QtTextMeasurer().measure(text, nullptr, width);
  check(std::isfinite(size.width) && std::isfinite(size.height) && size.height > 0,
        "a text has a size");
  LyricsLayout layout(lines, qtFont(nullptr));
  layout.setWidth(width);
  while (!layout.isComplete()) layout.advance(QDeadlineTimer(QDeadlineTimer::Forever));
  check(layout.knownHeight() == size.height, "lyrics are as high as they were measured");
  checkPlaces(layout);
}

}  // namespace
}  // namespace Corvella

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  [[maybe_unused]] static auto* const application =
      std::make_unique<QApplication>(*argc, *argv).release();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(data + 1, data + size);
  // Texts of players are UTF-8 by then.
  Corvella::checkLayout(Corvella::repairedUtf8(text), data[0] * 4.0);
  return 0;
}
