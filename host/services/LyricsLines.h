#pragma once

#include <QString>
#include <string_view>
#include <vector>

namespace Corvella {

/// The lines of lyrics that the panel measures and draws. To lay text out takes time, and what
/// calls itself lyrics may be a whole file of something else; so the panel shows no more than the
/// bounds below allow, which no song reaches. A line that is too long, as where a player joins all
/// lines into one, goes on in further lines. A text that is too long is cut, and a last line says
/// so. Both happen between two letters. A value; any thread.
class LyricsLines {
 public:
  static constexpr qsizetype kMostLines = 5'000;
  /// Characters are counted in units of UTF-16.
  static constexpr qsizetype kMostCharacters = 50'000;
  static constexpr qsizetype kMostCharactersOnALine = 3'000;
  /// Of symbols, emoji among them. The picture of an emoji is decoded whenever it is measured,
  /// which takes as long as to lay out some hundred letters.
  static constexpr qsizetype kMostSymbols = 800;
  static constexpr qsizetype kMostSymbolsOnALine = 100;

  /// The text is UTF-8. No more of it is converted than is kept.
  explicit LyricsLines(std::string_view text = {});

  /// The lines, with line feeds between them.
  const QString& text() const { return text_; }

  /// At least 1: an empty text is one empty line.
  qsizetype count() const { return static_cast<qsizetype>(starts_.size()); }
  QString line(qsizetype index) const;
  /// Where the line starts and where it ends in `text`.
  qsizetype start(qsizetype index) const { return starts_[static_cast<std::size_t>(index)]; }
  qsizetype end(qsizetype index) const;
  /// The line that holds the place in `text`.
  qsizetype lineAt(qsizetype place) const;

 private:
  /// Whether the whole line has been added.
  bool add(std::string_view line);
  /// As much of the text as goes into one more line; its symbols are counted from now on.
  QString startThatFits(const QString& text);
  void append(const QString& line);

  QString text_;
  std::vector<qsizetype> starts_;
  qsizetype symbols_ = 0;
};

}  // namespace Corvella
