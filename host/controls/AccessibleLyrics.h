#pragma once

#include <QAccessibleWidget>

#include "host/controls/LyricsView.h"

namespace Corvella {

/// Gives assistive technology the lyrics to read and to select. Lives on the GUI thread, no longer
/// than the view.
class AccessibleLyrics final : public QAccessibleWidget, public QAccessibleTextInterface {
 public:
  explicit AccessibleLyrics(LyricsView& view);

  void* interface_cast(QAccessible::InterfaceType type) override;
  QAccessible::State state() const override;
  QString text(QAccessible::Text kind) const override;

  QString text(int startOffset, int endOffset) const override;
  int characterCount() const override;
  QRect characterRect(int offset) const override;
  int offsetAtPoint(const QPoint& point) const override;
  QString attributes(int offset, int* startOffset, int* endOffset) const override;

  int cursorPosition() const override;
  void setCursorPosition(int position) override;
  int selectionCount() const override;
  void selection(int selectionIndex, int* startOffset, int* endOffset) const override;
  void addSelection(int startOffset, int endOffset) override;
  void setSelection(int selectionIndex, int startOffset, int endOffset) override;
  void removeSelection(int selectionIndex) override;
  /// The view does not scroll by itself.
  void scrollToSubstring(int /*startIndex*/, int /*endIndex*/) override {}

 private:
  const QString& wholeText() const { return view_.layout().lines().text(); }

  LyricsView& view_;
};

}  // namespace Corvella
