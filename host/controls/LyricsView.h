#pragma once

#include <QBasicTimer>
#include <QColor>
#include <QFont>
#include <QMenu>
#include <QPointF>
#include <QRect>
#include <QTextLayout>
#include <QWidget>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "extension/WidgetSnapshot.h"
#include "host/controls/LyricsLayout.h"
#include "host/controls/LyricsSelection.h"

namespace Corvella {

/// The lyrics: text to be read, selected and copied. As tall as its text, so it never scrolls by
/// itself; wheel and keys are left to those around it.
///
/// Lives on the GUI thread and never keeps it for long, however long the text is: what takes more
/// than a slice of time goes on in later turns of the event loop.
class LyricsView final : public QWidget {
  Q_OBJECT

 public:
  explicit LyricsView(QWidget* parent);

  void display(const TextContent& content);

  /// How long the view may lay out and paint in one turn of the event loop; the rest follows in
  /// later turns. `milliseconds::max()` sets no limit, for a picture that is painted but once.
  void setSlice(std::chrono::milliseconds slice);

  LyricsLayout& layout() { return layout_; }
  const LyricsSelection& selection() const { return selection_; }
  /// Selects from one place to another in the text of the lines.
  void select(qsizetype anchor, qsizetype cursor);

 signals:
  /// There are other lyrics to read now.
  void textReplaced();
  /// The user has moved the cursor by a key, or while selecting with the mouse; where it stands in
  /// this view.
  void cursorMoved(const QRect& cursor);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  struct Click {
    quint64 milliseconds = 0;
    QPointF place;
  };

  void replaceText(const std::string& text);
  void replaceLayout(LyricsLines lines);
  void layOutMore();
  void paintLater(const QRect& area);
  void paintLine(QPainter& painter, qsizetype line, const QRect& exposed);
  QTextLayout::FormatRange selectedIn(qsizetype line) const;
  bool isThirdClick(const QMouseEvent& event) const;
  /// The one way to change the selection: shows and tells what has become of it.
  template <typename Change>
  void changeSelection(Change change);
  void copy() const;
  void offerSelection() const;
  void selectAll();
  void takeFocusWhenThereIsText();

  std::string text_;  // As given, to tell whether it is another one.
  QFont font_;
  NSTextAlignment alignment_ = NSTextAlignmentLeft;
  QColor color_;
  LyricsLayout layout_;
  LyricsSelection selection_{layout_};
  QBasicTimer nextSlice_;
  QRect unpainted_;  // To be painted in the next slice.
  std::chrono::milliseconds slice_{5};
  std::optional<Click> doubleClick_;  // The newest.
  std::unique_ptr<QMenu> menu_;
};

}  // namespace Corvella
