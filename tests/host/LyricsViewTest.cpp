#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QImage>
#include <QKeySequence>
#include <QMenu>
#include <QScrollBar>
#include <QTest>
#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/controls/LyricsView.h"
#include "host/panel/TodayWindow.h"
#include "host/services/QtTextMeasurer.h"
#include "tests/support/TodayViewRig.h"

namespace Corvella {
namespace {

constexpr int kWidth = 288;
constexpr std::size_t kMebibyte = 1 << 20;
constexpr auto kAllAtOnce = std::chrono::milliseconds::max();

TextContent contentOf(const std::string& text, NSTextAlignment alignment = NSTextAlignmentCenter) {
  return {text, {.red = 1, .green = 1, .blue = 1, .alpha = 1}, nullptr, alignment};
}

std::string filled(std::size_t bytes, const std::string& part) {
  std::string text;
  while (text.size() < bytes) text += part;
  return text;
}

/// A view of that size that shows a text whole.
class WholeLyrics {
 public:
  WholeLyrics(int width, int height, const TextContent& content) {
    view.resize(width, height);
    view.display(content);
    view.setSlice(kAllAtOnce);
  }

  /// The smallest rectangle that holds all that is drawn of a part of the view in a bright colour,
  /// in pixels.
  QRect ink(const QRect& part, double scale) {
    QImage image((QSizeF(part.size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    view.render(&image, {}, QRegion(part), {});
    return TodayViewRig::brightPart(image, qRed, 0);
  }

  /// Lets a reader do something: press keys, "Shift+Left", choose an entry of the menu, "menu@1",
  /// wait for some milliseconds, "wait@500", or use the mouse at the left edge of a letter,
  /// "press@7", or at that of the view, "press@-1".
  void perform(const QString& step) {
    const std::map<QString, QEvent::Type> mouse{{"press", QEvent::MouseButtonPress},
                                                {"Shift+press", QEvent::MouseButtonPress},
                                                {"release", QEvent::MouseButtonRelease},
                                                {"double", QEvent::MouseButtonDblClick},
                                                {"move", QEvent::MouseMove}};
    const auto what = step.section('@', 0, 0);
    const auto number = step.section('@', 1).toInt();
    if (what == "wait") {
      now_ += static_cast<quint64>(number);
    } else if (what == "menu") {
      QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, view.mapToGlobal(QPoint()));
      QApplication::sendEvent(&view, &event);
      view.findChild<QMenu*>()->actions().at(number)->trigger();
    } else if (mouse.contains(what)) {
      const auto caret = view.layout().caretAt(std::max(number, 0));
      const QPointF point(number < 0 ? 1 : caret.x() + 1, caret.center().y());
      QMouseEvent event(mouse.at(what), point, view.mapToGlobal(point),
                        what == "move" ? Qt::NoButton : Qt::LeftButton, Qt::LeftButton,
                        what.startsWith("Shift") ? Qt::ShiftModifier : Qt::NoModifier);
      event.setTimestamp(now_);
      QApplication::sendEvent(&view, &event);
    } else {
      const auto keys = QKeySequence(step)[0];
      QTest::keyClick(&view, keys.key(), keys.keyboardModifiers());
    }
  }

  LyricsView view{nullptr};

 private:
  quint64 now_ = 10'000;
};

TEST(Lyrics, AreDrawnAsTallAsTheyWereMeasured) {
  struct Row {
    const char* name;
    std::string text;
    bool endsInInk = true;
  };
  const std::vector<Row> rows{
      {"empty", "", false},
      {"line feeds", "one\ntwo\n\ngypsy"},
      {"ends in a break", "one\ntwo\n", false},
      {"wrapped", filled(400, "the river says nothing and ")},
      {"right to left", "קיץ\nأغنية طويلة جدا " + filled(200, "قمر على الشرفة ")},
      {"emoji", filled(200, "👩‍👩‍👧‍👦🎉 ")},
      {"stacked", std::string("Z").append(filled(60, "\u0301\u0335"))},
      {"one word", std::string(256 * 1024, 'x')},
      {"breaks", std::string(kMebibyte, '\n')},
      {"ordinary lines", filled(kMebibyte, "the river says nothing\n")}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto measured = QtTextMeasurer().measure(row.text, nullptr, kWidth);
    const auto height = static_cast<int>(measured.height);
    EXPECT_EQ(measured.height, height);
    constexpr int kBelow = 20;
    WholeLyrics lyrics(kWidth, height + kBelow, contentOf(row.text));
    const auto& layout = lyrics.view.layout();
    EXPECT_EQ(lyrics.view.layout().knownHeight(), height);

    const auto lastTop = static_cast<int>(layout.top(layout.knownLines() - 1));
    for (const double scale : {1.0, 1.25, 1.5}) {
      const auto lastLine = lyrics.ink({0, lastTop, kWidth, height - lastTop}, scale);
      EXPECT_EQ(!lastLine.isEmpty(), row.endsInInk) << scale;
      EXPECT_TRUE(lyrics.ink({0, height, kWidth, kBelow}, scale).isEmpty()) << scale;
    }
  }
}

TEST(ALineOfLyrics, StandsOnItsSide) {
  struct Row {
    const char* text;
    NSTextAlignment alignment;
    double middle;  // Of what is drawn, as a part of the width.
  };
  const std::vector<Row> rows{{"song", NSTextAlignmentLeft, 0.05},
                              {"song", NSTextAlignmentCenter, 0.5},
                              {"song", NSTextAlignmentRight, 0.95},
                              {"שיר", NSTextAlignmentLeft, 0.95},
                              {"שיר", NSTextAlignmentCenter, 0.5}};
  for (const auto& row : rows) {
    WholeLyrics lyrics(kWidth, 40, contentOf(row.text, row.alignment));
    const QRectF ink(lyrics.ink(lyrics.view.rect(), 1));
    EXPECT_NEAR(ink.center().x() / kWidth, row.middle, 0.1) << row.text << row.alignment;
  }
}

TEST(ALongText, IsMeasuredLineByLineAndLaidOutWhereItIsSeen) {
  const auto text = filled(kMebibyte, "the river\n");
  LyricsLayout layout{LyricsLines(text), QFont()};
  layout.setWidth(kWidth);
  layout.advance(QDeadlineTimer(0));
  EXPECT_EQ(layout.knownLines(), 1);
  EXPECT_EQ(layout.laidOutLines(), 0U);

  WholeLyrics lyrics(kWidth, 100'000, contentOf(text));
  for (const int place : {0, 20'000}) {
    lyrics.ink({0, place, kWidth, static_cast<int>(10 * lyrics.view.layout().top(1))}, 1);
    EXPECT_LE(lyrics.view.layout().laidOutLines(), 12U);
    EXPECT_GE(lyrics.view.layout().laidOutLines(), 10U);
  }
}

TEST(SlowLyrics, AreCompleteInTheEnd) {
  const auto content = contentOf(filled(600, "the river says nothing\n"));
  const auto show = [](LyricsView& view) {
    view.setFixedSize(kWidth, 600);
    view.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
    view.clearFocus();  // With the focus comes the cursor.
    view.repaint();
  };
  WholeLyrics whole(kWidth, 600, content);
  show(whole.view);
  const auto expected = TodayViewRig::onScreen(whole.view);
  for (const bool comeIntoAWindow : {true, false}) {
    SCOPED_TRACE(comeIntoAWindow);
    WholeLyrics lyrics(kWidth, 600, comeIntoAWindow ? TextContent() : content);
    auto& slow = lyrics.view;
    slow.setSlice(std::chrono::milliseconds(0));  // No more than one line at once.
    show(slow);
    if (comeIntoAWindow) slow.display(content);
    EXPECT_TRUE(TodayViewRig::waitFor([&] { return TodayViewRig::onScreen(slow) == expected; }));
  }
}

TEST(TheLyricsFocus, IsThereForATextInSight) {
  LyricsView view(nullptr);
  QTest::mouseClick(&view, Qt::LeftButton);  // Nowhere yet.
  const auto takesFocus = [&](int height, const char* text) {
    view.resize(kWidth, height);
    view.display(contentOf(text));
    return view.focusPolicy() == Qt::StrongFocus;
  };
  EXPECT_FALSE(takesFocus(0, "song"));
  EXPECT_TRUE(takesFocus(40, "song"));
  EXPECT_FALSE(takesFocus(40, ""));
}

WidgetSnapshot snapshotOf(const std::string& title, const std::string& lyrics) {
  const NSRect line{{16, 1900}, {kWidth, 20}};
  const NSRect below{{16, 13}, {kWidth, 1700}};
  return {{{"songTitle", line, "", TextFieldContent{title, {}, nullptr}},
           {"lyricsView", below, "Lyrics", contentOf(lyrics)}},
          {320, 2000},
          {}};
}

TEST(AScrolledWindow, ShowsOtherLyricsOrAnotherSongFromTheStart) {
  struct Row {
    std::vector<std::string> titles;
    std::string lyrics;
    bool startsAnew;
  };
  const std::vector<Row> rows{{{"one"}, "same", false},
                              {{"No Song Playing", "one"}, "same", false},
                              {{"one"}, "other", true},
                              {{"two"}, "same", true}};
  for (const auto& row : rows) {
    TodayWindow window;
    window.setTallest(400);
    window.show();
    window.apply(snapshotOf("one", "same"));
    auto& bar = *window.findChild<QScrollArea*>()->verticalScrollBar();
    auto& lyrics = *window.findChild<LyricsView*>();
    EXPECT_LE(bar.sizeHint().width(), 12) << "it stands in the margin";
    bar.setValue(500);
    lyrics.select(0, 2);
    QTest::keyClick(&lyrics, Qt::Key_End, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_LT(bar.value(), 500) << "the cursor, which was out of sight";
    bar.setValue(500);
    for (const auto& title : row.titles) window.apply(snapshotOf(title, row.lyrics));
    EXPECT_EQ(bar.value(), row.startsAnew ? 0 : 500) << row.titles[0] << row.lyrics;
    EXPECT_EQ(lyrics.selection().isEmpty(), row.startsAnew) << row.titles[0] << row.lyrics;
  }
}

TEST(ReadersInput, SelectsWhatIsCopied) {
  /// Two lines, of which the first wraps between "two" and "three", and one from right to left.
  constexpr auto kText = "one two three\nfour\nאחת שתיים";
  struct Row {
    QString input;
    std::string selected;
    std::string text = kText;
    int width = 60;
  };
  const std::vector<Row> rows{
      {"press@2 release@2", "before"},
      {"press@4 move@16", "two three\nfo"},
      {"press@16 move@4", "two three\nfo"},
      {"double@5", "two"},
      {"double@5 move@9", "two three"},
      {"double@5 move@1", "one two"},
      {"double@9 move@8", "three"},
      {"double@9 press@9", "one two three"},
      {"double@9 wait@10000 press@9", "before"},
      {"double@9 press@16", "before"},
      {"press@4 Shift+press@7", "two"},
      {"Ctrl+A", kText},
      {"Shift+Right Shift+Right", "on"},
      {"press@12 Shift+Right Shift+Right Shift+Right", "e\nf"},
      {"press@15 Shift+Left Shift+Left Shift+Left", "e\nf"},
      {"press@1 Shift+Left Shift+Left", "חת", "אחת שתיים", 200},
      {"press@-1 Ctrl+Shift+Home", "אחת שתיים", "אחת שתיים", 200},
      {"press@-1 Shift+End", "one two", "one two", 200},
      {"Ctrl+Shift+Right Ctrl+Shift+Right", "one two "},
      {"press@8 Ctrl+Shift+Left", "two "},
      {"Shift+End Shift+End", "one two"},
      {"press@10 Shift+Home", "th"},
      {"press@8 Shift+End", "three"},
      {"Shift+Down Shift+Down", "one two three\n"},
      {"press@14 Shift+Down Shift+Up Shift+Up", "three\n"},
      {"press@5 Shift+Down Shift+Down", "line\nx\nlong ", "long line\nx\nlong line", 80},
      {"press@4 Shift+Down press@0 Shift+Down", "aaaa\n", "aaaa\nbbbb", 300},
      {"press@12 Shift+Up", " bbbbbbbbb", "aa bbbbbbbbb", 80},
      {"press@14 Ctrl+Shift+End", "four\nאחת שתיים"},
      {"press@3 Ctrl+Shift+Home", "one"},
      {"press@0 move@3 menu@0 press@0", "one"},
      {"menu@1", kText}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.input.toStdString());
    WholeLyrics lyrics(row.width, 300, {row.text, {}, NSFont::systemFontOfSize(13)});
    QApplication::clipboard()->setText("before");
    for (const auto& step : row.input.split(' ')) lyrics.perform(step);
    lyrics.perform("Ctrl+C");
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), row.selected);
  }
}

TEST(TheLyrics, AreLaidOutAnewInAnotherFont) {
  WholeLyrics lyrics(300, 300, {});
  const auto heightAt = [&](double size) {
    lyrics.view.display({"one\ntwo", {}, NSFont::systemFontOfSize(size)});
    return lyrics.view.layout().knownHeight();
  };
  const auto small = heightAt(12);
  EXPECT_GT(heightAt(24), small);
  EXPECT_EQ(heightAt(12), small);
}

TEST(TheLyrics, BreakAnewInAnotherWidth) {
  LyricsLayout layout(LyricsLines("one two three four"), QFont(), NSTextAlignmentLeft);
  const auto rowsIn = [&](double width) {
    layout.setWidth(width);
    return layout.paragraph(0).layout().lineCount();
  };
  EXPECT_EQ(rowsIn(1000), 1);
  EXPECT_GT(rowsIn(30), 1);
}

TEST(TheLyrics, KeepTheirSelectionWhenTheyAreShownAgain) {
  const auto content = contentOf("one\u00a0two\r\nthree\u2028four");
  WholeLyrics lyrics(300, 300, content);
  lyrics.view.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&lyrics.view));
  const auto before = TodayViewRig::onScreen(lyrics.view);
  lyrics.view.select(0, 3);
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return TodayViewRig::onScreen(lyrics.view) != before; }));
  lyrics.view.display(content);
  EXPECT_EQ(lyrics.view.selection().text(), "one");
  lyrics.view.display(contentOf("other"));
  EXPECT_TRUE(lyrics.view.selection().isEmpty());
}

}  // namespace
}  // namespace Corvella
