#include <QApplication>
#include <QImage>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/controls/LyricsView.h"
#include "host/panel/TodayWindow.h"
#include "host/services/QtTextMeasurer.h"
#include "tests/support/RowName.h"
#include "tests/support/TodayViewRig.h"

namespace Corvella {
namespace {

constexpr int kWidth = 288;
constexpr std::size_t kMebibyte = 1 << 20;
constexpr auto kAllAtOnce = std::chrono::milliseconds::max();

TextContent contentOf(const std::string& text, NSTextAlignment alignment = NSTextAlignmentCenter) {
  return {.text = text,
          .color = {.red = 1, .green = 1, .blue = 1, .alpha = 1},
          .font = nullptr,
          .alignment = alignment};
}

std::string filled(std::size_t bytes, const std::string& part) {
  std::string text;
  while (text.size() < bytes) text += part;
  return text;
}

/// A part of the view as it is drawn at a scale.
QImage drawn(LyricsView& view, const QRect& part, double scale) {
  QImage image((QSizeF(part.size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(scale);
  image.fill(Qt::transparent);
  view.render(&image, {}, QRegion(part), {});
  return image;
}

/// The smallest rectangle that holds all that is drawn, in pixels of the image.
QRect inkOf(const QImage& image) {
  QRect ink;
  for (int i = 0; i < image.width() * image.height(); ++i) {
    const QPoint pixel(i % image.width(), i / image.width());
    if (qAlpha(image.pixel(pixel)) > 0) ink |= QRect(pixel, QSize(1, 1));
  }
  return ink;
}

struct LyricsRow {
  const char* name;
  std::string text;
  bool endsInInk = true;
};

class Lyrics : public testing::TestWithParam<LyricsRow> {};

TEST_P(Lyrics, AreDrawnAsTallAsTheyWereMeasured) {
  const auto measured = QtTextMeasurer().measure(GetParam().text, nullptr, kWidth);
  const auto height = static_cast<int>(measured.height);
  EXPECT_EQ(measured.height, height);
  constexpr int kBelow = 20;
  LyricsView view(nullptr);
  view.resize(kWidth, height + kBelow);
  view.display(contentOf(GetParam().text));
  view.setSlice(kAllAtOnce);
  EXPECT_EQ(view.layout().knownHeight(), height);

  const auto& layout = view.layout();
  const auto lastTop = static_cast<int>(layout.top(layout.knownLines() - 1));
  const QRect lastLine(0, lastTop, kWidth, height - lastTop);
  const QRect below(0, height, kWidth, kBelow);
  for (const double scale : {1.0, 1.25, 1.5}) {
    EXPECT_EQ(!inkOf(drawn(view, lastLine, scale)).isEmpty(), GetParam().endsInInk) << scale;
    EXPECT_TRUE(inkOf(drawn(view, below, scale)).isEmpty()) << scale;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Host, Lyrics,
    testing::Values(LyricsRow{"Empty", "", false}, LyricsRow{"LineFeeds", "one\ntwo\n\ngypsy"},
                    LyricsRow{"EndsInABreak", "one\ntwo\n", false},
                    LyricsRow{"Wrapped", filled(400, "the river says nothing and ")},
                    LyricsRow{"RightToLeft",
                              "קיץ\nأغنية طويلة جدا " + filled(200, "قمر على الشرفة ")},
                    LyricsRow{"Emoji", filled(200, "👩‍👩‍👧‍👦🎉 ")},
                    LyricsRow{"Stacked", "Z" + filled(60, "\u0301\u0335")},
                    LyricsRow{"OneWord", std::string(256 * 1024, 'x')},
                    LyricsRow{"Breaks", std::string(kMebibyte, '\n')},
                    LyricsRow{"OrdinaryLines", filled(kMebibyte, "the river says nothing\n")}),
    rowName);

struct SideRow {
  const char* name;
  std::string text;
  NSTextAlignment alignment;
  double middle;  // Of what is drawn, as a part of the width.
};

class ALineOfLyrics : public testing::TestWithParam<SideRow> {};

TEST_P(ALineOfLyrics, StandsOnItsSide) {
  LyricsView view(nullptr);
  view.resize(kWidth, 40);
  view.display(contentOf(GetParam().text, GetParam().alignment));
  view.setSlice(kAllAtOnce);
  const auto ink = inkOf(drawn(view, view.rect(), 1));
  constexpr double kShare = 0.1;
  EXPECT_NEAR(QRectF(ink).center().x() / kWidth, GetParam().middle, kShare);
}

INSTANTIATE_TEST_SUITE_P(Host, ALineOfLyrics,
                         testing::Values(SideRow{"Left", "song", NSTextAlignmentLeft, 0.05},
                                         SideRow{"Center", "song", NSTextAlignmentCenter, 0.5},
                                         SideRow{"Right", "song", NSTextAlignmentRight, 0.95},
                                         SideRow{"Hebrew", "שיר", NSTextAlignmentLeft, 0.95},
                                         SideRow{"HebrewCentered", "שיר", NSTextAlignmentCenter,
                                                 0.5}),
                         rowName);

TEST(ALongText, IsMeasuredLineByLineAndLaidOutWhereItIsSeen) {
  LyricsLayout layout(LyricsLines(filled(kMebibyte, "the river\n")), QFont());
  layout.setWidth(kWidth);
  layout.advance(QDeadlineTimer(0));
  EXPECT_EQ(layout.knownLines(), 1);
  EXPECT_EQ(layout.laidOutLines(), 0U);

  LyricsView view(nullptr);
  view.resize(kWidth, 100'000);
  view.display(contentOf(filled(kMebibyte, "the river\n")));
  view.setSlice(kAllAtOnce);
  for (const int place : {0, 20'000}) {
    const auto row = view.layout().top(1);
    drawn(view, {0, place, kWidth, static_cast<int>(10 * row)}, 1);
    EXPECT_LE(view.layout().laidOutLines(), 12U);
    EXPECT_GE(view.layout().laidOutLines(), 10U);
  }
}

/// Lyrics in a window, which have no time at all for more than one line at once.
class SlowLyrics : public testing::Test {
 protected:
  SlowLyrics() {
    LyricsView whole(nullptr);
    whole.setSlice(kAllAtOnce);
    whole.display(content_);
    show(whole);
    expected_ = onScreen(whole);
    slow_.setSlice(std::chrono::milliseconds(0));
  }

  static void show(LyricsView& view) {
    view.setFixedSize(kWidth, 600);
    view.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
    view.clearFocus();  // With the focus comes the cursor.
    view.repaint();
  }
  static QImage onScreen(const LyricsView& view) {
    return view.screen()->grabWindow(view.winId()).toImage();
  }
  void expectCompleteInTheEnd() {
    EXPECT_TRUE(TodayViewRig::waitFor([this] { return onScreen(slow_) == expected_; }));
  }

  const TextContent content_ = contentOf(filled(600, "the river says nothing\n"));
  LyricsView slow_{nullptr};
  QImage expected_;
};

TEST_F(SlowLyrics, AreCompleteInTheEndWhenTheyComeIntoAWindow) {
  show(slow_);
  slow_.display(content_);
  expectCompleteInTheEnd();
}

TEST_F(SlowLyrics, AreCompleteInTheEndWhenTheWindowShowsThemAllAtOnce) {
  slow_.display(content_);
  slow_.setSlice(kAllAtOnce);
  slow_.setSlice(std::chrono::milliseconds(0));
  show(slow_);
  expectCompleteInTheEnd();
}

TEST(TheLyricsFocus, IsThereForATextInSight) {
  LyricsView view(nullptr);
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
  const NSRect line{.origin = {.x = 16, .y = 1900}, .size = {.width = kWidth, .height = 20}};
  const NSRect below{.origin = {.x = 16, .y = 13}, .size = {.width = kWidth, .height = 1700}};
  WidgetSnapshot snapshot;
  snapshot.size = {.width = 320, .height = 2000};
  snapshot.views = {
      {"songTitle", line, "", TextFieldContent{.text = title, .color = {}, .font = nullptr}},
      {"lyricsView", below, "Lyrics", contentOf(lyrics)}};
  return snapshot;
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
    bar.setValue(500);
    lyrics.select(0, 2);
    for (const auto& title : row.titles) window.apply(snapshotOf(title, row.lyrics));
    EXPECT_EQ(bar.value(), row.startsAnew ? 0 : 500) << row.titles[0] << row.lyrics;
    EXPECT_EQ(lyrics.selection().isEmpty(), row.startsAnew) << row.titles[0] << row.lyrics;
  }
}

}  // namespace
}  // namespace Corvella
