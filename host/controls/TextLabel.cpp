#include "host/controls/TextLabel.h"

#include <QFontMetrics>
#include <QPainter>
#include <QTextBoundaryFinder>
#include <algorithm>

#include "host/services/QtAlignment.h"
#include "host/services/QtColors.h"
#include "host/services/QtFonts.h"

namespace Corvella {

namespace {

QString onOneLine(QString text) {
  std::replace_if(
      text.begin(), text.end(),
      [](QChar c) {
        return c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
               c == QChar::ParagraphSeparator;
      },
      QChar(u' '));
  return text;
}

/// The start of the text that fits into the width, followed by an ellipsis unless it is the whole.
QString elided(const QString& text, const QFontMetrics& metrics, int width) {
  auto room = width;
  auto shown = metrics.elidedText(text, Qt::ElideRight, room);
  if (shown == text) return shown;
  // Qt adds up the widths of single letters. Those that join, as Arabic ones do, may be wider
  // together, and the text would still be cut at the edge.
  for (auto excess = metrics.horizontalAdvance(shown) - width; excess > 0 && room > 0;
       excess = metrics.horizontalAdvance(shown) - width) {
    room -= excess;
    shown = metrics.elidedText(text, Qt::ElideRight, room);
  }
  return shown;
}

/// The start of a text with an ellipsis, or the text itself when it is not longer than that. No
/// letter that consists of several characters is cut in two.
QString startOf(const QString& text, qsizetype longest) {
  if (text.size() <= longest) return text;
  QTextBoundaryFinder letters(QTextBoundaryFinder::Grapheme, text.left(longest));
  letters.toEnd();
  return text.left(letters.toPreviousBoundary()) + u'\u2026';
}

}  // namespace

TextLabel::TextLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
}

void TextLabel::display(const TextFieldContent& content) {
  display(QString::fromStdString(content.text), qtFont(content.font.get()), qtColor(content.color),
          content.alignment);
}

void TextLabel::display(const QString& text, const QFont& font, const QColor& color,
                        NSTextAlignment alignment) {
  const auto line = onOneLine(text);
  setFont(font);
  color_ = color;
  setAlignment(qtAlignment(alignment, line.isRightToLeft()) | Qt::AlignVCenter);
  setText(line);
  fit();
}

void TextLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setFont(font());
  painter.setPen(color_);
  painter.setLayoutDirection(text().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
  painter.drawText(rect(), static_cast<int>(alignment()) | Qt::TextSingleLine, shown_);
}

void TextLabel::resizeEvent(QResizeEvent* /*event*/) {
  if (!text().isEmpty()) fit();
}

void TextLabel::fit() {
  // A title may be as long as a whole file. Laying out more than any window is wide enough for
  // would only hold up the window.
  constexpr qsizetype kMostOnALine = 500;
  constexpr qsizetype kMostInAToolTip = 2000;
  shown_ = elided(startOf(text(), kMostOnALine), fontMetrics(), width());
  // Qt would take a tooltip that contains tags for markup.
  const auto whole = startOf(text(), kMostInAToolTip).toHtmlEscaped();
  setToolTip(shown_ == text() ? QString() : "<span>" + whole + "</span>");
}

}  // namespace Corvella
