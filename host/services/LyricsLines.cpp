#include "host/services/LyricsLines.h"

#include <QChar>
#include <QList>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <cstddef>

#include "host/services/LineReader.h"

namespace Corvella {

namespace {

constexpr QLatin1String kRestIsLeftOut("The rest of these lyrics is too long to be shown here.");

/// The start of a line: as many characters as asked for and at least one more, if the line has
/// them, so that the caller can tell whether it goes on. A character takes at most three bytes of
/// UTF-8.
QString startOf(std::string_view line, qsizetype characters) {
  const auto bytes = line.substr(0, 4 * static_cast<std::size_t>(characters + 1));
  return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

/// Whether the character may be an emoji or a part of one, such as a skin tone, which is a
/// modifier. Emoji that are newer than Qt have no category yet.
bool isSymbol(char32_t character) {
  const auto category = QChar::category(character);
  if (category == QChar::Symbol_Other || category == QChar::Mark_Enclosing) return true;
  return QChar::requiresSurrogates(character) &&
         (category == QChar::Symbol_Modifier || category == QChar::Other_NotAssigned);
}

struct Room {
  qsizetype characters = 0;
  qsizetype symbols = 0;
};

/// How much room the start of a text takes that fits into a room.
Room takenBy(const QString& text, Room room) {
  Room taken;
  for (const auto character : text.left(room.characters + 1).toUcs4()) {
    const qsizetype units = QChar::requiresSurrogates(character) ? 2 : 1;
    const qsizetype symbols = isSymbol(character) ? 1 : 0;
    if (taken.characters + units > room.characters || taken.symbols + symbols > room.symbols) break;
    taken.characters += units;
    taken.symbols += symbols;
  }
  return taken;
}

/// The start of a text, without a letter that would be cut in two: a letter may consist of several
/// characters. Whether one ends at `longest` shows in the character that follows.
QString wholeLetters(const QString& text, qsizetype longest) {
  QTextBoundaryFinder letters(QTextBoundaryFinder::Grapheme, text.left(longest + 2));
  letters.setPosition(longest);
  if (!letters.isAtBoundary()) letters.toPreviousBoundary();
  return text.left(letters.position());
}

}  // namespace

LyricsLines::LyricsLines(std::string_view text) {
  LineReader reader(text);
  bool isWhole = true;
  for (auto line = reader.next(); line && isWhole; line = reader.next()) {
    isWhole = add(*line);
  }
  if (!isWhole) append(kRestIsLeftOut);
}

bool LyricsLines::add(std::string_view line) {
  auto rest = startOf(line, std::max<qsizetype>(kMostCharacters - text_.size(), 0));
  do {
    if (count() == kMostLines) return false;
    const auto piece = startThatFits(rest);
    if (piece.isEmpty() && !rest.isEmpty()) return false;
    append(piece);
    rest.remove(0, piece.size());
  } while (!rest.isEmpty());
  return true;
}

QString LyricsLines::startThatFits(const QString& text) {
  const auto characters = std::max<qsizetype>(kMostCharacters - text_.size(), 0);
  const Room room{.characters = std::min(kMostCharactersOnALine, characters),
                  .symbols = std::min(kMostSymbolsOnALine, kMostSymbols - symbols_)};
  auto piece = wholeLetters(text, takenBy(text, room).characters);
  symbols_ += takenBy(piece, room).symbols;
  return piece;
}

void LyricsLines::append(const QString& line) {
  if (!starts_.empty()) text_ += u'\n';
  starts_.push_back(text_.size());
  text_ += line;
}

qsizetype LyricsLines::end(qsizetype index) const {
  return index + 1 < count() ? start(index + 1) - 1 : text_.size();
}

QString LyricsLines::line(qsizetype index) const {
  return text_.sliced(start(index), end(index) - start(index));
}

qsizetype LyricsLines::lineAt(qsizetype place) const {
  return std::ranges::upper_bound(starts_, place) - starts_.begin() - 1;
}

}  // namespace Corvella
