#pragma once

#include <QTextEdit>
#include <string>

#include "host/WidgetSnapshot.h"

namespace Corvella {

/// The lyrics: text to be read, selected and copied. As tall as its text, so it never scrolls by
/// itself; wheel and keys are left to those around it.
class LyricsText final : public QTextEdit {
 public:
  explicit LyricsText(QWidget* parent);

  void display(const TextContent& content);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void takeFocusWhenThereIsText();

  std::string text_;  // As given: the document normalises it.
};

}  // namespace Corvella
