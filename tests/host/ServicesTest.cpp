#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QImageWriter>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "extension/WidgetDisplay.h"
#include "host/program/DisplayText.h"
#include "host/services/FontconfigFinder.h"
#include "host/services/LyricsLines.h"
#include "host/services/QtImageDecoder.h"

namespace Corvella {
namespace {

TEST(AFontFinder, KnowsTheInstalledFamiliesByTheirWholeName) {
  const FontconfigFinder fonts;
  EXPECT_TRUE(fonts.hasFamily("DejaVu Sans"));
  for (const auto* other : {"DejaVu", "No Such Family", ""}) EXPECT_FALSE(fonts.hasFamily(other));
}

std::optional<NSDecodedImage> decoded(const QByteArray& file) {
  return QtImageDecoder().decode(std::as_bytes(std::span(file)));
}

QByteArray encoded(QSize size, const char* format, QImage::Format pixels = QImage::Format_RGB32) {
  QImage image(size, pixels);
  image.fill(QColor(200, 30, 40));
  QBuffer file;
  file.open(QIODevice::WriteOnly);
  EXPECT_TRUE(image.save(&file, format));
  return file.data();
}

TEST(APicture, KeepsItsSizeAndGetsABitmapThatIsNotLarge) {
  const auto expectPicture = [](const QByteArray& file, QSize size, QSize sizeOfBitmap) {
    const auto picture = decoded(file);
    ASSERT_TRUE(picture.has_value());
    const auto& bitmap = picture->bitmap;
    EXPECT_EQ(QSize(picture->width, picture->height), size);
    ASSERT_EQ(QSize(bitmap.pixelsWide, bitmap.pixelsHigh), sizeOfBitmap);
    const QColor last(bitmap.pixels.back());
    EXPECT_NEAR(last.red(), 200, 3);
    EXPECT_NEAR(last.blue(), 40, 3);
  };
  const std::vector<std::pair<QSize, QSize>> sizes{
      {{40, 30}, {40, 30}}, {{3000, 1500}, {512, 256}}, {{5000, 1}, {512, 1}}};
  for (const auto* format : {"PNG", "JPEG", "BMP", "WEBP"}) {
    SCOPED_TRACE(format);
    for (const auto& [size, ofBitmap] : sizes) {
      expectPicture(encoded(size, format), size, ofBitmap);
    }
  }
  // Read row by row, a picture may be larger.
  for (const auto* format : {"JPEG", "PNG"}) {
    expectPicture(encoded({8000, 4000}, format), {8000, 4000}, {512, 256});
  }
  expectPicture(
      "<svg xmlns='http://www.w3.org/2000/svg' width='40' height='30'>"
      "<rect width='40' height='30' fill='#c81e28'/></svg>",
      {40, 30}, {40, 30});
  expectPicture(
      "<svg xmlns='http://www.w3.org/2000/svg' width='8000' height='8000'>"
      "<rect width='8000' height='8000' fill='#c81e28'/></svg>",
      {8000, 8000}, {512, 512});
}

TEST(ABrokenPicture, IsNoneAndNothingIsPrinted) {
  const auto png = encoded({400, 300}, "PNG");
  const auto jpeg = encoded({400, 300}, "JPEG");
  const auto bmp = encoded({400, 300}, "BMP");
  constexpr int kSignature = 8;
  constexpr int kHeaderEnd = 33;
  auto flipped = png;
  flipped[flipped.size() / 2] = static_cast<char>(~flipped[flipped.size() / 2]);
  QBuffer progressive;
  QImageWriter writer(&progressive, "jpeg");
  writer.setProgressiveScanWrite(true);
  ASSERT_TRUE(writer.write(QImage({400, 300}, QImage::Format_RGB32)));
  const auto manyScans = progressive.data();
  const auto lastScan = manyScans.mid(manyScans.lastIndexOf("\xff\xda")).chopped(2);
  // The same scans, said to be of 25,000,000 pixels.
  auto enlarged = manyScans;
  const auto frame = enlarged.indexOf("\xff\xc2");
  ASSERT_GT(frame, 0);
  enlarged.replace(frame + 5, 4, "\x13\x88\x13\x88");
  // A file that could be opened, and drawn.
  const QTemporaryDir folder;
  const auto other = folder.filePath("other.png");
  ASSERT_TRUE(QImage({4, 4}, QImage::Format_RGB32).save(other));
  const auto drawing = [](const QString& content, const QString& before = {}) {
    return (before + "<svg xmlns='http://www.w3.org/2000/svg' " +
            "xmlns:xlink='http://www.w3.org/1999/xlink' width='9' height='9'>" +
            "<rect id='a' width='4' height='4'/>" + content + "</svg>")
        .toUtf8();
  };
  const QString prologue = "<?xml version='1.0' encoding='UTF-8'?>";
  EXPECT_TRUE(decoded(drawing("<use xlink:href='#a'/>", prologue)).has_value());
  constexpr QSize kHuge(5'478, 5'478);          // 30,008,484 pixels
  constexpr QSize kHugeInRows(14'143, 14'143);  // 200,024,449 pixels
  const std::vector<std::pair<const char*, QByteArray>> rows{
      {"empty", {}},
      {"text", "<html>not found</html>"},
      {"start of a WebP", "RIFF"},
      {"half a PNG", png.left(png.size() / 2)},
      {"half a JPEG", jpeg.left(jpeg.size() / 2)},
      {"half a BMP", bmp.left(bmp.size() / 2)},
      {"PNG without its last byte", png.chopped(1)},
      {"PNG with a wrong check sum", flipped},
      {"PNG of more pixels than can be counted",
       png.left(16) + QByteArray(8, '\xff') + png.mid(24)},
      {"PNG without its header", png.left(kSignature) + png.mid(kHeaderEnd)},
      {"PNG without its data", png.left(kHeaderEnd) + png.right(12)},
      {"PNG with too few rows", encoded({400, 301}, "PNG").left(kHeaderEnd) + png.mid(kHeaderEnd)},
      {"JPEG of many scans", manyScans.chopped(2) + lastScan.repeated(100) + manyScans.right(2)},
      {"large JPEG of some scans",
       enlarged.chopped(2) + lastScan.repeated(15) + manyScans.right(2)},
      {"another format", encoded({4, 4}, "PPM")},
      {"SVG with another picture", drawing("<image xlink:href='" + other + "'/>")},
      {"SVG with a reference in disguise", drawing("<image xlink:href = '" + other + "'/>")},
      {"SVG in a disguising encoding", drawing("<image xlink:+AGgAcgBlAGY-='" + other + "'/>",
                                               "<?xml version='1.0' encoding='UTF-7'?>")},
      {"SVG with entities",
       drawing("&a;", "<!DOCTYPE svg [<!ENTITY a \"<rect width='4' height='4'/>\">]>")},
      {"SVG of many uses", drawing(QString("<use xlink:href='#a'/>").repeated(21))},
      {"SVG of many parts", drawing(QString("<path/>").repeated(10'000))},
      {"huge PNG", encoded(kHugeInRows, "PNG", QImage::Format_Mono)},
      {"huge BMP", encoded(kHuge, "BMP", QImage::Format_Mono)}};
  for (const auto& [name, file] : rows) {
    testing::internal::CaptureStderr();  // The libraries behind Qt have their own ways to complain.
    EXPECT_FALSE(decoded(file).has_value()) << name;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << name;
  }
}

QString times(qsizetype count, const char* part) {
  return QString(part).repeated(count);
}

TEST(Lyrics, BreakIntoLinesAndAreCutBetweenLettersWhereTheyAreTooLong) {
  constexpr auto kRow = LyricsLines::kMostCharactersOnALine;
  constexpr auto kSymbolRow = LyricsLines::kMostSymbolsOnALine;
  constexpr auto kMostLines = LyricsLines::kMostLines;
  constexpr auto kMostCharacters = LyricsLines::kMostCharacters;
  constexpr auto kMostSymbols = LyricsLines::kMostSymbols;
  const QString cut = "The rest of these lyrics is too long to be shown here.";
  const auto row = times(kRow, "x");
  const auto symbols = times(kSymbolRow, "\u2705");
  const auto flags = "x" + times(kSymbolRow / 2, "\U0001f1e9\U0001f1ea");
  const auto most = QStringList(kMostCharacters / 1000 - 1, times(999, "x")) << times(1000, "x");
  const std::vector<std::pair<QString, QStringList>> rows{
      {"", {""}},
      {"a\nb\n\nc", {"a", "b", "", "c"}},
      {"a\rb\r\rc", {"a", "b", "", "c"}},
      {"a\r\nb\r\n\r\nc", {"a", "b", "", "c"}},
      {"a\n\rb", {"a", "", "b"}},
      {"a\u0085b\u2028c\u2029d", {"a", "b", "c", "d"}},
      {"a\nb\r\n", {"a", "b", ""}},
      {"a\u2027b\u00c5c", {"a\u2027b\u00c5c"}},
      // Lines that are as long as they may be, or go on in further lines.
      {row, {row}},
      {symbols, {symbols}},
      {row + "x\nnext", {row, "x", "next"}},
      {row.chopped(1) + "\U0001d11e", {row.chopped(1), "\U0001d11e"}},
      {row.chopped(1) + "e\u0301y", {row.chopped(1), "e\u0301y"}},
      {times(2 * kRow, "\u96e8"), QStringList(2, times(kRow, "\u96e8"))},
      {symbols + "\u2705x", {symbols, "\u2705x"}},
      {flags + "\U0001f1e9", {flags, "\U0001f1e9"}},
      // Texts that are as long as they may be, or are cut.
      {times(kMostLines - 1, "x\n"), QStringList(kMostLines - 1, "x") << ""},
      {most.join('\n'), most},
      {most.join('\n') + "\n", most + QStringList("")},
      {"a\nZ" + times(kRow, "\u0335"), {"a", cut}},
      {times(kMostLines, "x\n"), QStringList(kMostLines, "x") << cut},
      {times(kMostLines - 1, "x\n") + row + "x", QStringList(kMostLines - 1, "x") << row << cut},
      {(times(1000, "x") + "\n").repeated(kMostCharacters / 1000),
       QStringList(kMostCharacters / 1000 - 1, times(1000, "x")) << times(1000 - 48, "x") << cut},
      {times(2 * kMostCharacters, "x"), QStringList(16, row) << times(2000 - 15, "x") << cut},
      {times(kMostSymbols + 1, "\u2705"), QStringList(kMostSymbols / kSymbolRow, symbols) << cut},
      {times(kMostSymbols + 1, "\U0001f389\n"), QStringList(kMostSymbols, "\U0001f389") << cut}};
  for (const auto& [text, expected] : rows) {
    SCOPED_TRACE(text.left(20).toStdString() + " of " + std::to_string(text.size()));
    const LyricsLines lines(text.toStdString());
    EXPECT_TRUE(lines.text() == expected.join('\n'));
    ASSERT_EQ(lines.count(), expected.size());
    for (qsizetype i = 0; i < lines.count(); ++i) {
      ASSERT_EQ(lines.line(i).toStdString(), expected[i].toStdString());
    }
  }
}

TEST(PrintedLyrics, HaveTheirLinesAndNoControls) {
  struct Row {
    std::string text;
    std::string summary;  // Of the lyrics, as --print tells it.
    std::string printed;  // The lyrics, as --print --lyrics does.
  };
  const std::vector<Row> rows{{"", " (0 lines)", ""},
                              {"one", "one (1 line)", "one\n"},
                              {"a\nb\r\n", "a (2 lines)", "a\nb\n"},
                              {"\u2028\r", " (2 lines)", "\n\n"},
                              {"\u0080\u009f\u00a0x", "  \u00a0x (1 line)", "  \u00a0x\n"},
                              {"\u202ea\u2069\u200f", " a \u200f (1 line)", " a \u200f\n"},
                              {"a\tb\x1b\nc\u0090", "a b  (2 lines)", "a b \nc \n"}};
  for (const auto& row : rows) {
    WidgetDisplay display;
    display.apply({{{"lyricsView", {}, {}, TextContent{row.text, {}, nullptr}}}, {}, {}});
    EXPECT_EQ(displayText(display), "lyricsView: " + row.summary + "\n");
    EXPECT_EQ(lyricsText(display), row.printed);
  }
}

}  // namespace
}  // namespace Corvella
