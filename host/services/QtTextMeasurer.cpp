#include "host/services/QtTextMeasurer.h"

#include <algorithm>

#include "host/services/LyricsLines.h"
#include "host/services/QtFonts.h"
#include "host/services/TextParagraph.h"

namespace Corvella {

NSSize QtTextMeasurer::measure(std::string_view text, const NSFont* font, double width) const {
  const QFont qt = qtFont(font);
  const LyricsLines lines(text);
  NSSize size;
  for (qsizetype i = 0; i < lines.count(); ++i) {
    const TextParagraph paragraph(lines.line(i), qt, width);
    size.width = std::max(size.width, paragraph.naturalWidth());
    size.height += paragraph.height();
  }
  return size;
}

}  // namespace Corvella
