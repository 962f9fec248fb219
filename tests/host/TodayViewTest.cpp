#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocument>

#include <gmock/gmock.h>

#include "host/StarRating.h"
#include "tests/support/TodayViewRig.h"

namespace Corvella {
namespace {

class AnOpenTodayView : public testing::Test {
 protected:
  AnOpenTodayView() { rig_.open(); }

  TodayViewRig rig_;
};

TEST_F(AnOpenTodayView, FollowsTheTrack) {
  const auto next = embeddedTracks()[1].track;
  const auto before = rig_.window.grab().toImage();
  rig_.press(Qt::Key_N);
  ASSERT_TRUE(TodayViewRig::waitFor([&] { return rig_.text("songTitle") == next.name; }));
  EXPECT_EQ(rig_.find<StarRating>("songRatingIndicator")->stars(), next.rating / 20);
  EXPECT_NE(rig_.window.grab().toImage(), before);
}

TEST_F(AnOpenTodayView, GrowsByTheWholeLyricsAndShrinksBack) {
  rig_.window.setTallest(QWIDGETSIZE_MAX);
  const auto folded = rig_.window.height();
  const auto* lyrics = rig_.unfold();
  ASSERT_NE(lyrics, nullptr);
  EXPECT_EQ(lyrics->toPlainText().toStdString(), embeddedTracks()[0].track.lyrics);
  bool eased = false;
  EXPECT_TRUE(TodayViewRig::waitFor([&] {
    const auto height = rig_.window.height();
    eased = eased || (height > folded && height < folded + lyrics->height());
    return height == folded + lyrics->height();
  }));
  EXPECT_TRUE(eased);
  EXPECT_EQ(lyrics->document()->size().height(), lyrics->height());
  rig_.press(Qt::Key_L);
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return rig_.window.height() == folded; }));
}

TEST_F(AnOpenTodayView, IsHiddenByEscapeAndAppearsAnew) {
  const auto appearances = rig_.gate.count("to running");
  rig_.press(Qt::Key_Escape);
  EXPECT_FALSE(rig_.window.isVisible());
  // The track plays on; a widget that has not been told would look at it each second.
  const auto scripts = rig_.gate.scripts().size();
  QTest::qWait(1300);
  EXPECT_LE(rig_.gate.scripts().size(), scripts + 1);
  rig_.view.toggle();
  QKeyEvent stillHeld(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, {}, true);
  QApplication::sendEvent(&rig_.window, &stillHeld);
  EXPECT_TRUE(rig_.window.isVisible());
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return rig_.gate.count("to running") > appearances; }));
}

TEST_F(AnOpenTodayView, ComesBackWhenItIsOpenedMinimised) {
  rig_.window.setWindowState(Qt::WindowMinimized);
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return !rig_.view.isOpen(); }));
  rig_.view.toggle();
  EXPECT_TRUE(
      TodayViewRig::waitFor([&] { return rig_.view.isOpen() && !rig_.window.isMinimized(); }));
}

TEST(ATodayView, AppearsOnceHoweverOftenItIsOpened) {
  TodayViewRig rig;
  const QSignalSpy appearances(&rig.view, &TodayView::appeared);
  const QSignalSpy disappearances(&rig.view, &TodayView::disappeared);
  rig.open();
  rig.view.open();
  EXPECT_EQ(appearances.count(), 1);
  rig.window.setWindowState(Qt::WindowMinimized);
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return disappearances.count() == 1; }));
  rig.view.hide();
  EXPECT_EQ(disappearances.count(), 1);
}

TEST(AHungPlayer, LeavesTheWindowTurningIsNamedInTheHeadingAndIsLookedAtAnewInTheEnd) {
  TodayViewRig rig;
  rig.open();
  rig.gate.close();
  rig.press(Qt::Key_Space);
  const auto* notice = rig.find<QLabel>("notice");
  int presses = 0;
  EXPECT_TRUE(TodayViewRig::waitFor([&] {
    if (++presses % 10 == 0) rig.press(Qt::Key_Up);
    rig.window.repaint();
    return notice->text() == "mpv does not answer";
  }));
  const auto appearances = rig.gate.count("to running");
  rig.gate.open();
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return notice->text().isEmpty(); }));
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return rig.gate.count("to running") > appearances; }));
}

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleMock(&argc, argv);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
