#include <QString>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "extension/WidgetDisplay.h"
#include "host/program/DisplayText.h"
#include "host/services/LyricsLines.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

struct TextRow {
  const char* name;
  std::string text;
  std::string drawn;  // Its lines, with line feeds between them.
};

class AText : public testing::TestWithParam<TextRow> {};

TEST_P(AText, BreaksIntoItsLines) {
  EXPECT_EQ(LyricsLines(GetParam().text).text().toStdString(), GetParam().drawn);
}

INSTANTIATE_TEST_SUITE_P(
    Host, AText,
    testing::Values(TextRow{"Empty", "", ""}, TextRow{"LineFeeds", "a\nb\n\nc", "a\nb\n\nc"},
                    TextRow{"CarriageReturns", "a\rb\r\rc", "a\nb\n\nc"},
                    TextRow{"BothAsOne", "a\r\nb\r\n\r\nc", "a\nb\n\nc"},
                    TextRow{"BothTheOtherWayRound", "a\n\rb", "a\n\nb"},
                    TextRow{"NextLine", "a\u0085b", "a\nb"},
                    TextRow{"Separators", "a\u2028b\u2029c", "a\nb\nc"},
                    TextRow{"EndsInABreak", "a\nb\r\n", "a\nb\n"},
                    TextRow{"LikeABreak", "a\u2027b\u00c5c", "a\u2027b\u00c5c"}),
    rowName);

struct PrintedRow {
  const char* name;
  std::string text;
  std::string summary;  // Of the lyrics, as --print tells it.
  std::string printed;  // The lyrics, as --print --lyrics does.
};

class APrintedText : public testing::TestWithParam<PrintedRow> {};

TEST_P(APrintedText, HasItsLinesAndNoControls) {
  const auto& row = GetParam();
  WidgetSnapshot snapshot;
  snapshot.views = {{.identifier = "lyricsView",
                     .frame = {},
                     .accessibilityLabel = {},
                     .content = TextContent{.text = row.text, .color = {}, .font = nullptr}}};
  WidgetDisplay display;
  display.apply(snapshot);
  EXPECT_EQ(displayText(display), "lyricsView: " + row.summary + "\n");
  EXPECT_EQ(lyricsText(display), row.printed);
}

INSTANTIATE_TEST_SUITE_P(
    Host, APrintedText,
    testing::Values(PrintedRow{"Empty", "", " (0 lines)", ""},
                    PrintedRow{"OneLine", "one", "one (1 line)", "one\n"},
                    PrintedRow{"EndsInABreak", "a\nb\r\n", "a (2 lines)", "a\nb\n"},
                    PrintedRow{"BreaksAlone", "\u2028\r", " (2 lines)", "\n\n"},
                    PrintedRow{"EndsOfTheSecondSetOfControls", "\u0080\u009f\u00a0x",
                               "    \u00a0x (1 line)", "    \u00a0x\n"},
                    PrintedRow{"OtherControls", "a\tb\x1b\nc\u0090", "a b  (2 lines)",
                               "a b \nc  \n"}),
    rowName);

std::string times(qsizetype count, const std::string& part) {
  return QString::fromStdString(part).repeated(count).toStdString();
}

using Lines = std::vector<std::string>;

Lines drawnLines(const std::string& text) {
  const LyricsLines lines(text);
  Lines drawn;
  for (qsizetype i = 0; i < lines.count(); ++i) drawn.push_back(lines.line(i).toStdString());
  return drawn;
}

struct LongRow {
  const char* name;
  std::string text;
  Lines lines;
};

class ALineThatIsTooLong : public testing::TestWithParam<LongRow> {};

TEST_P(ALineThatIsTooLong, GoesOnInFurtherLinesBetweenLetters) {
  EXPECT_EQ(drawnLines(GetParam().text), GetParam().lines);
}

constexpr auto kRow = LyricsLines::kMostCharactersOnALine;
constexpr auto kSymbolRow = LyricsLines::kMostSymbolsOnALine;

INSTANTIATE_TEST_SUITE_P(
    Host, ALineThatIsTooLong,
    testing::Values(
        LongRow{"Letters", times(kRow + 1, "x") + "\nnext", {times(kRow, "x"), "x", "next"}},
        LongRow{"Surrogates",
                times(kRow - 1, "x") + "\U0001d11e",
                {times(kRow - 1, "x"), "\U0001d11e"}},
        LongRow{"Accent", times(kRow - 1, "x") + "e\u0301y", {times(kRow - 1, "x"), "e\u0301y"}},
        LongRow{"ThreeBytesEach", times(2 * kRow, "\u96e8"), Lines(2, times(kRow, "\u96e8"))},
        LongRow{"Emoji",
                times(kSymbolRow + 1, "\u2705") + "x",
                {times(kSymbolRow, "\u2705"), "\u2705x"}},
        LongRow{"Flags",
                "x" + times(kSymbolRow / 2, "\U0001f1e9\U0001f1ea") + "\U0001f1e9",
                {"x" + times(kSymbolRow / 2, "\U0001f1e9\U0001f1ea"), "\U0001f1e9"}}),
    rowName);

struct CutRow {
  const char* name;
  std::string text;
  std::size_t shownLines;
  std::string lastShown;  // Before the line which says that the rest is left out.
};

class ATextThatIsTooLong : public testing::TestWithParam<CutRow> {};

TEST_P(ATextThatIsTooLong, IsCutBetweenLettersAndSaysSo) {
  const auto& row = GetParam();
  const auto lines = drawnLines(row.text);
  ASSERT_EQ(lines.size(), row.shownLines + 1);
  EXPECT_EQ(lines[row.shownLines], "The rest of these lyrics is too long to be shown here.");
  EXPECT_EQ(lines[row.shownLines - 1], row.lastShown);
}

constexpr auto kMostLines = LyricsLines::kMostLines;
constexpr auto kMostCharacters = LyricsLines::kMostCharacters;
constexpr auto kMostSymbols = LyricsLines::kMostSymbols;

INSTANTIATE_TEST_SUITE_P(
    Host, ATextThatIsTooLong,
    testing::Values(CutRow{"AnEndlessLetter", "a\nZ" + times(kRow, "\u0335"), 1, "a"},
                    CutRow{"Lines", times(kMostLines, "x\n"), kMostLines, "x"},
                    CutRow{"LinesOfOneLine", times(kMostLines - 1, "x\n") + times(kRow + 1, "x"),
                           kMostLines, times(kRow, "x")},
                    CutRow{"Letters", times(kMostCharacters / 1000, times(1000, "x") + "\n"),
                           kMostCharacters / 1000, times(1000 - 48, "x")},
                    CutRow{"OneLine", times(2 * kMostCharacters, "x"), 17, times(2000 - 15, "x")},
                    CutRow{"EmojiOfOneLine", times(kMostSymbols + 1, "\u2705"),
                           kMostSymbols / kSymbolRow, times(kSymbolRow, "\u2705")},
                    CutRow{"Emoji", times(kMostSymbols + 1, "\U0001f389\n"), kMostSymbols,
                           "\U0001f389"}),
    rowName);

TEST(ATextThatJustFits, IsShownWhole) {
  const auto most = times(kMostCharacters / 1000 - 1, times(999, "x") + "\n") + times(1000, "x");
  for (const auto& text : {times(kRow, "x"), times(kSymbolRow, "\u2705"),
                           times(kMostLines - 1, "x\n"), most, most + "\n"}) {
    EXPECT_EQ(LyricsLines(text).text().toStdString(), text);
  }
}

}  // namespace
}  // namespace Corvella
