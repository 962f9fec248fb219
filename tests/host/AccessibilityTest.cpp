#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "host/controls/PositionBar.h"
#include "tests/support/TodayViewRig.h"

namespace Corvella {
namespace {

class AnUnfoldedTodayView : public testing::Test, public TodayViewRig {
 protected:
  AnUnfoldedTodayView() {
    open();
    EXPECT_NE(unfold(), nullptr);
  }
};

TEST_F(AnUnfoldedTodayView, IsWalkedThroughByTabInReadingOrder) {
  std::vector<std::string> names;
  for (int i = 0; i < 9; ++i) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    names.push_back(QApplication::focusWidget()->objectName().toStdString());
  }
  std::rotate(names.begin(), std::ranges::find(names, "songRatingIndicator"), names.end());
  EXPECT_THAT(names, testing::ElementsAre("songRatingIndicator", "previousButton", "playButton",
                                          "nextButton", "soundVolume", "toggleLyricsButton",
                                          "lyricsView", "player", "close"));
}

TEST_F(AnUnfoldedTodayView, TellsTheRoleTheNameAndTheValueOfEachControl) {
  struct Row {
    const char* control;
    QAccessible::Role role;
    QString name;
    QString value = {};
  };
  const auto track = embeddedTracks()[0].track;
  const std::vector<Row> rows{
      {"songTitle", QAccessible::StaticText, QString::fromStdString(track.name)},
      {"playButton", QAccessible::Button, "Pause"},
      {"toggleLyricsButton", QAccessible::Button, "Hide Lyrics"},
      {"songRatingIndicator", QAccessible::Slider, "Rating", "4 of 5 stars"},
      {"soundVolume", QAccessible::Slider, "Volume", "80"},
      {"albumArtView", QAccessible::Graphic, "Album artwork"},
      {"lyricsView", QAccessible::StaticText, "Lyrics", QString::fromStdString(track.lyrics)},
      {"progressBar", QAccessible::ProgressBar, "Play position"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.control);
    auto* const accessible = QAccessible::queryAccessibleInterface(find(row.control));
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->role(), row.role);
    EXPECT_EQ(accessible->text(QAccessible::Name), row.name);
    const auto value = accessible->text(QAccessible::Value);
    EXPECT_TRUE(row.value.isEmpty() || value == row.value) << value.toStdString();
  }
  EXPECT_EQ(find("songTitle")->accessibleDescription(), "Song title");
  auto* const frame = QAccessible::queryAccessibleInterface(&window);
  EXPECT_EQ(frame->role(), QAccessible::Window);
  EXPECT_EQ(frame->text(QAccessible::Name), "Corvella");
  press(Qt::Key_Space);
  EXPECT_TRUE(waitFor([&] { return find("playButton")->accessibleName() == "Play"; }));
  EXPECT_EQ(find("playButton")->toolTip(), "Play (Space)");
  auto* const position = QAccessible::queryAccessibleInterface(find("progressBar"));
  EXPECT_THAT(position->text(QAccessible::Description).toStdString(),
              testing::EndsWith(" of 2:43"));
  auto* const rating = QAccessible::queryAccessibleInterface(find("songRatingIndicator"));
  EXPECT_EQ(rating->text(QAccessible::Description), "4 of 5 stars");
  EXPECT_EQ(position->valueInterface(), nullptr) << "what has a value can be set";
}

TEST_F(AnUnfoldedTodayView, LetsTheLyricsBeReadAndSelectedInParts) {
  auto& lyrics = *find<LyricsView>("lyricsView");
  auto* const text = QAccessible::queryAccessibleInterface(&lyrics)->textInterface();
  const auto whole = lyrics.layout().lines().text();
  EXPECT_EQ(text->text(0, text->characterCount()), whole);
  EXPECT_EQ(text->text(4, 9), whole.mid(4, 5));

  text->setSelection(0, 3, 9);
  EXPECT_EQ(lyrics.selection().text(), whole.mid(3, 6));
  int start = 0;
  int end = 0;
  text->selection(0, &start, &end);
  EXPECT_EQ(std::pair(start, end), std::pair(3, 9));
  EXPECT_EQ(text->offsetAtPoint(text->characterRect(5).center()), 5);
  text->removeSelection(0);
  EXPECT_TRUE(lyrics.selection().isEmpty());
}

TEST(ThePlayPosition, IsReadAsTime) {
  PositionBar bar(nullptr);
  bar.display({.minValue = 0, .maxValue = 3605, .value = 67});
  EXPECT_EQ(bar.valueText(), "1:07 of 60:05");
  bar.display({.minValue = 0, .maxValue = 60, .value = 61});
  EXPECT_EQ(bar.valueText(), "1:00 of 1:00");
  bar.display({.minValue = 0, .maxValue = 0, .value = 12});
  EXPECT_EQ(bar.valueText(), "0:12");
}

}  // namespace
}  // namespace Corvella
