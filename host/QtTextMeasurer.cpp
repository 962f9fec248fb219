#include "host/QtTextMeasurer.h"

#include <QString>
#include <QStringView>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>

#include "host/QtFonts.h"

namespace Corvella {

namespace {

/// Lays out one paragraph and adds its extent to `size`.
void addParagraph(const QString& text, const QFont& font, double width, NSSize& size) {
  QTextLayout layout(text, font);
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  layout.beginLayout();
  for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLeadingIncluded(true);  // As text documents do, which show what was measured.
    line.setLineWidth(width);
    size.width = std::max(size.width, line.naturalTextWidth());
    size.height += line.height();
  }
  layout.endLayout();
}

}  // namespace

NSSize QtTextMeasurer::measure(std::string_view text, const NSFont* font, double width) const {
  const QFont qt = qtFont(font);
  const auto whole = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  NSSize size;
  for (const auto& paragraph : QStringView(whole).split(u'\n')) {
    addParagraph(paragraph.toString(), qt, width, size);
  }
  return size;
}

}  // namespace Corvella
