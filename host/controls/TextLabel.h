#pragma once

#include <QColor>
#include <QLabel>

#include "extension/WidgetSnapshot.h"

namespace Corvella {

/// One line of text. What does not fit is elided, and the whole text is the tooltip. A text that
/// reads from right to left starts on the right.
class TextLabel final : public QLabel {
  Q_OBJECT

 public:
  explicit TextLabel(QWidget* parent);

  void display(const TextFieldContent& content);
  /// The same for a text that is not the widget's.
  void display(const QString& text, const QFont& font, const QColor& color,
               NSTextAlignment alignment = NSTextAlignmentLeft);

  /// The text as it is painted.
  const QString& shownText() const { return shown_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void fit();

  QColor color_;
  QString shown_;
};

}  // namespace Corvella
