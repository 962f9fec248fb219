#include "host/TextLabel.h"

#include <QFontMetrics>
#include <QPainter>
#include <QTextBoundaryFinder>
#include <algorithm>

#include "host/QtColors.h"
#include "host/QtFonts.h"

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

Qt::Alignment alignmentOf(NSTextAlignment alignment, bool rightToLeft) {
  if (alignment == NSTextAlignmentCenter) return Qt::AlignHCenter;
  const bool right = (alignment == NSTextAlignmentRight) != rightToLeft;
  return (right ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute;
}

/// The text as far as it fits.
QString elided(const QString& text, const QFontMetrics& metrics, int width) {
  auto room = width;
  auto shown = metrics.elidedText(text, Qt::ElideRight, room);
  if (shown == text) return shown;
  // Qt elides letter by letter; joined, as Arabic ones are, they may be wider.
  for (auto excess = metrics.horizontalAdvance(shown) - width; excess > 0 && room > 0;
       excess = metrics.horizontalAdvance(shown) - width) {
    room -= excess;
    shown = metrics.elidedText(text, Qt::ElideRight, room);
  }
  return shown;
}

/// The start of a text, in whole letters.
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
  setAlignment(alignmentOf(alignment, line.isRightToLeft()) | Qt::AlignVCenter);
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
  // No window is wide enough for more, and to lay it out would take long.
  constexpr qsizetype kMostOnALine = 500;
  constexpr qsizetype kMostInAToolTip = 2000;
  shown_ = elided(startOf(text(), kMostOnALine), fontMetrics(), width());
  // Tooltips that look like markup would be shown as such.
  const auto whole = startOf(text(), kMostInAToolTip).toHtmlEscaped();
  setToolTip(shown_ == text() ? QString() : "<span>" + whole + "</span>");
}

}  // namespace Corvella
