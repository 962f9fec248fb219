#pragma once

#include <QDeadlineTimer>
#include <QFont>
#include <QPointF>
#include <QRectF>
#include <QTextLine>
#include <cstddef>
#include <map>
#include <vector>

#include "host/services/LyricsLines.h"
#include "host/services/TextParagraph.h"

namespace Corvella {

/// Where the lines of lyrics stand, one below the other. To lay them all out takes long, so their
/// heights become known from the top down, as many at a time as the caller has time for, and only
/// the lines that are being drawn stay laid out. Lives on the GUI thread.
class LyricsLayout {
 public:
  explicit LyricsLayout(LyricsLines lines = LyricsLines(), const QFont& font = {},
                        NSTextAlignment alignment = NSTextAlignmentLeft);

  const LyricsLines& lines() const { return lines_; }

  /// In pixels. Another width than before makes all heights unknown again.
  void setWidth(double width);

  /// Finds out the heights of more lines until the deadline, but of one at least if any is unknown.
  void advance(QDeadlineTimer deadline);
  qsizetype knownLines() const { return static_cast<qsizetype>(tops_.size()) - 1; }
  /// Of the known lines together, in pixels.
  double knownHeight() const { return tops_.back(); }
  bool isComplete() const { return knownLines() == lines_.count(); }

  /// Of a known line, in pixels.
  double top(qsizetype line) const { return tops_[static_cast<std::size_t>(line)]; }
  /// The known line at that height, or the one nearest to it.
  qsizetype lineAtHeight(double height) const;

  /// The line, laid out from now on.
  const TextParagraph& paragraph(qsizetype line);
  bool isLaidOut(qsizetype line) const { return laidOut_.contains(line); }
  std::size_t laidOutLines() const { return laidOut_.size(); }
  /// Forgets how lines other than those from `first` to `last` are laid out.
  void keepOnly(qsizetype first, qsizetype last);

  /// The place in the text that is nearest to a point, or that of the letter under it.
  qsizetype placeAt(QPointF point, QTextLine::CursorPosition kind);
  /// The part of a line, which wraps into rows, that holds a place; valid while the line stays laid
  /// out.
  QTextLine rowOf(qsizetype place);
  /// Where the cursor stands at a place; empty where that is not known yet.
  QRectF caretAt(qsizetype place);

 private:
  LyricsLines lines_;
  QFont font_;
  NSTextAlignment alignment_;
  double width_ = 0;
  std::vector<double> tops_{0};  // Of the known lines and of the one after them.
  std::map<qsizetype, TextParagraph> laidOut_;
};

}  // namespace Corvella
