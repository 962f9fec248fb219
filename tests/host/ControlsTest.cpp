#include <QApplication>
#include <QTest>
#include <QTextCursor>
#include <QWheelEvent>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/StarRating.h"
#include "host/ValueSlider.h"
#include "tests/support/RowName.h"
#include "tests/support/TodayViewRig.h"

namespace Corvella {
namespace {

using Rig = TodayViewRig;

void clickAt(QWidget& widget, double fraction) {
  const QPoint place(static_cast<int>(fraction * widget.width()), widget.height() / 2);
  QTest::mouseClick(&widget, Qt::LeftButton, Qt::NoModifier, place);
}

void movePointer(QWidget& widget, QPointF place, Qt::MouseButtons held) {
  QMouseEvent move(QEvent::MouseMove, place, widget.mapToGlobal(place), Qt::NoButton, held,
                   Qt::NoModifier);
  QApplication::sendEvent(&widget, &move);
}

void dragFromTheMiddleToTheLeft(QWidget& widget) {
  QTest::mousePress(&widget, Qt::LeftButton, Qt::NoModifier, widget.rect().center());
  movePointer(widget, {0, 0}, Qt::LeftButton);
}

void turnWheelUp(QWidget& widget) {
  const QPointF middle(QRectF(widget.rect()).center());
  QWheelEvent event(middle, widget.mapToGlobal(middle), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                    Qt::NoScrollPhase, false);
  QApplication::sendEvent(&widget, &event);
}

struct InputRow {
  const char* name;
  std::function<void(Rig&)> input;
  std::string script;  // How the script ends that comes of it.
};

class AUsersInput : public testing::TestWithParam<InputRow> {};

TEST_P(AUsersInput, EndsInItsScript) {
  Rig rig;
  rig.open();
  const auto before = rig.gate.count(GetParam().script);
  GetParam().input(rig);
  EXPECT_TRUE(Rig::waitFor([&] { return rig.gate.count(GetParam().script) > before; }));
}

const std::vector<InputRow> inputRows{
    {"ClickPrevious", [](Rig& rig) { clickAt(*rig.find("previousButton"), 0.5); },
     "previous track"},
    {"ClickPlay", [](Rig& rig) { clickAt(*rig.find("playButton"), 0.5); }, "to pause"},
    {"ClickNext", [](Rig& rig) { clickAt(*rig.find("nextButton"), 0.5); }, "next track"},
    {"ClickLyrics", [](Rig& rig) { clickAt(*rig.find("toggleLyricsButton"), 0.5); },
     "get lyrics of current track"},
    {"ClickSecondStar", [](Rig& rig) { clickAt(*rig.find("songRatingIndicator"), 0.3); },
     "set rating of current track to 40"},
    {"ClickBeforeStars", [](Rig& rig) { clickAt(*rig.find("songRatingIndicator"), 0); },
     "set rating of current track to 0"},
    {"ClickVolume", [](Rig& rig) { clickAt(*rig.find("soundVolume"), 0.5); },
     "set sound volume to 50"},
    {"DragVolume", [](Rig& rig) { dragFromTheMiddleToTheLeft(*rig.find("soundVolume")); },
     "set sound volume to 0"},
    {"WheelOverVolume", [](Rig& rig) { turnWheelUp(*rig.find("soundVolume")); },
     "set sound volume to 90"},
    {"Space", [](Rig& rig) { rig.press(Qt::Key_Space); }, "to pause"},
    {"P", [](Rig& rig) { rig.press(Qt::Key_P); }, "previous track"},
    {"N", [](Rig& rig) { rig.press(Qt::Key_N); }, "next track"},
    {"L", [](Rig& rig) { rig.press(Qt::Key_L); }, "get lyrics of current track"},
    {"Three", [](Rig& rig) { rig.press(Qt::Key_3); }, "set rating of current track to 60"},
    {"Up", [](Rig& rig) { rig.press(Qt::Key_Up); }, "set sound volume to 85"},
    {"Down", [](Rig& rig) { rig.press(Qt::Key_Down); }, "set sound volume to 75"},
    {"UpOnPlay", [](Rig& rig) { QTest::keyClick(rig.find("playButton"), Qt::Key_Up); },
     "set sound volume to 85"},
    {"DownOnStars",
     [](Rig& rig) { QTest::keyClick(rig.find("songRatingIndicator"), Qt::Key_Down); },
     "set sound volume to 75"},
    {"UpInLyrics", [](Rig& rig) { QTest::keyClick(rig.unfold(), Qt::Key_Up); },
     "set sound volume to 85"},
    {"RightOnStars",
     [](Rig& rig) { QTest::keyClick(rig.find("songRatingIndicator"), Qt::Key_Right); },
     "set rating of current track to 100"},
    {"SpaceOnNext", [](Rig& rig) { QTest::keyClick(rig.find("nextButton"), Qt::Key_Space); },
     "next track"},
};
INSTANTIATE_TEST_SUITE_P(Host, AUsersInput, testing::ValuesIn(inputRows), rowName);

class AHeldThumb : public testing::Test {
 protected:
  AHeldThumb() {
    rig_.open();
    QTest::mousePress(&slider(), Qt::LeftButton, Qt::NoModifier, slider().rect().center());
    held_ = slider().value();
    EXPECT_TRUE(Rig::waitFor([this] { return *rig_.player.soundVolume() == held_; }));
  }

  ValueSlider& slider() const { return *rig_.find<ValueSlider>("soundVolume"); }

  Rig rig_;
  int held_ = 0;
};

TEST_F(AHeldThumb, StaysUntilItIsLetGoAndThenShowsTheNewestVolume) {
  rig_.player.setSoundVolume(10);
  rig_.press(Qt::Key_N);
  const auto next = embeddedTracks()[1].track.name;
  ASSERT_TRUE(Rig::waitFor([&] { return rig_.text("songTitle") == next; }));
  EXPECT_EQ(slider().value(), held_);

  QTest::mouseRelease(&slider(), Qt::LeftButton, Qt::NoModifier, slider().rect().center());
  EXPECT_TRUE(Rig::waitFor([&] { return slider().value() == 10; }));
  EXPECT_EQ(*rig_.player.soundVolume(), 10);
}

TEST_F(AHeldThumb, IsLetGoWhenThePanelIsHidden) {
  auto& stars = *rig_.find<StarRating>("songRatingIndicator");
  QTest::mousePress(&stars, Qt::LeftButton, Qt::NoModifier, QPoint(2, 2));
  rig_.view.hide();
  EXPECT_FALSE(slider().isSliderDown());
  EXPECT_FALSE(stars.isDown());

  rig_.player.setSoundVolume(10);
  rig_.view.open();
  EXPECT_TRUE(Rig::waitFor([&] { return slider().value() == 10; }));
}

TEST(TheStars, PreviewWhatAClickWouldSet) {
  StarRating stars(nullptr);
  stars.resize(120, 24);
  stars.display({.stars = 2, .mostStars = 5, .editable = true, .highlighted = true});
  const auto before = stars.grab().toImage();
  movePointer(stars, {110, 12}, Qt::NoButton);
  EXPECT_NE(stars.grab().toImage(), before);
  EXPECT_EQ(stars.stars(), 2);
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&stars, &leave);
  EXPECT_EQ(stars.grab().toImage(), before);
}

TEST(TheLyrics, KeepTheirSelectionWhenTheyAreShownAgain) {
  LyricsText lyrics(nullptr);
  const TextContent content{
      .text = "one\u00a0two\r\nthree\u2028four", .color = {}, .font = nullptr};
  lyrics.display(content);
  lyrics.selectAll();
  lyrics.display(content);
  EXPECT_TRUE(lyrics.textCursor().hasSelection());
}

}  // namespace
}  // namespace Corvella
