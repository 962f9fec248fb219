#include "host/LyricsText.h"

#include <QKeyEvent>
#include <QTextDocument>
#include <QTextOption>
#include <QWheelEvent>

#include "host/QtColors.h"
#include "host/QtFonts.h"

namespace Corvella {

namespace {

Qt::Alignment alignmentOf(NSTextAlignment alignment) {
  switch (alignment) {
    case NSTextAlignmentCenter:
      return Qt::AlignHCenter;
    case NSTextAlignmentRight:
      return Qt::AlignRight;
    case NSTextAlignmentLeft:
      break;
  }
  return Qt::AlignLeft;
}

}  // namespace

LyricsText::LyricsText(QWidget* parent) : QTextEdit(parent) {
  setReadOnly(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setFrameShape(QFrame::NoFrame);
  viewport()->setAutoFillBackground(false);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  document()->setDocumentMargin(0);
  document()->setUndoRedoEnabled(false);
  setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
}

void LyricsText::display(const TextContent& content) {
  const auto color = qtColor(content.color);
  setFont(qtFont(content.font.get()));
  auto option = document()->defaultTextOption();
  option.setAlignment(alignmentOf(content.alignment));
  document()->setDefaultTextOption(option);
  if (content.text != text_ || color != textColor()) {
    text_ = content.text;
    setTextColor(color);
    setPlainText(QString::fromStdString(text_));
  }
  takeFocusWhenThereIsText();
}

void LyricsText::keyPressEvent(QKeyEvent* event) {
  const bool selects =
      event->modifiers().testFlag(Qt::ShiftModifier) || event->matches(QKeySequence::SelectAll);
  if (selects || event->matches(QKeySequence::Copy)) return QTextEdit::keyPressEvent(event);
  event->ignore();
}

void LyricsText::wheelEvent(QWheelEvent* event) {
  event->ignore();
}

void LyricsText::resizeEvent(QResizeEvent* event) {
  QTextEdit::resizeEvent(event);
  takeFocusWhenThereIsText();
}

void LyricsText::takeFocusWhenThereIsText() {
  setFocusPolicy(height() > 0 && !document()->isEmpty() ? Qt::StrongFocus : Qt::NoFocus);
}

}  // namespace Corvella
