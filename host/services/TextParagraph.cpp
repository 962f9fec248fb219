#include "host/services/TextParagraph.h"

#include <QPointF>
#include <QTextOption>
#include <algorithm>

#include "host/services/QtAlignment.h"

namespace Corvella {

TextParagraph::TextParagraph(const QString& text, const QFont& font, double width,
                             NSTextAlignment alignment)
    : layout_(text, font) {
  QTextOption option(qtAlignment(alignment, text.isRightToLeft()));
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout_.setTextOption(option);
  layout_.setCacheEnabled(true);  // Without it, Qt would shape the text again to draw it.
  layout_.beginLayout();
  for (auto line = layout_.createLine(); line.isValid(); line = layout_.createLine()) {
    line.setLeadingIncluded(true);
    line.setLineWidth(width);
    line.setPosition(QPointF(0, height_));
    height_ += line.height();
  }
  layout_.endLayout();
}

double TextParagraph::naturalWidth() const {
  double widest = 0;
  for (int i = 0; i < layout_.lineCount(); ++i) {
    widest = std::max(widest, layout_.lineAt(i).naturalTextWidth());
  }
  return widest;
}

}  // namespace Corvella
