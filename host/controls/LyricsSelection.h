#pragma once

#include <QPointF>
#include <QString>
#include <optional>

#include "host/controls/LyricsLayout.h"
#include "host/controls/LyricsMove.h"

namespace Corvella {

/// What the user has selected of lyrics: the text between an anchor, where the selection began, and
/// a cursor, where it ends just now. Both are places in the text of the lines. Lives on the GUI
/// thread.
class LyricsSelection {
 public:
  struct Range {
    qsizetype start = 0;
    qsizetype end = 0;
  };
  /// What a drag adds to the selection at a time.
  enum class Unit { Letter, Word, Line };
  /// The layout outlives the selection.
  explicit LyricsSelection(LyricsLayout& layout) : layout_(layout) {}

  qsizetype cursor() const { return cursor_; }
  Range range() const;
  bool isEmpty() const { return anchor_ == cursor_; }
  QString text() const;

  /// Selects from one place to another, which are brought within the text.
  void select(qsizetype anchor, qsizetype cursor);

  /// Begins a selection with the unit under a point; `dragTo` extends it by such units.
  void begin(QPointF point, Unit unit);
  void dragTo(QPointF point);
  /// Has `dragTo` extend the selection that there is.
  void hold();

  /// Extends the selection as a key asks for.
  void extend(LyricsMove move);

 private:
  Range unitAt(QPointF point) const;
  Range wordAt(QPointF point) const;

  LyricsLayout& layout_;
  qsizetype anchor_ = 0;
  qsizetype cursor_ = 0;
  Unit unit_ = Unit::Letter;
  Range origin_;                  // What a drag began with; it stays selected.
  std::optional<double> column_;  // Kept while the cursor moves up and down.
};

}  // namespace Corvella
