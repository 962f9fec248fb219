#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/controls/StarRating.h"
#include "host/controls/TextLabel.h"
#include "host/controls/ValueSlider.h"
#include "host/panel/Tray.h"
#include "tests/support/RowName.h"
#include "tests/support/TodayViewRig.h"

namespace Corvella {
namespace {

using Rig = TodayViewRig;

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

using Input = std::function<void(Rig&)>;

Input click(const char* control, double fraction = 0.5) {
  return [=](Rig& rig) {
    auto& widget = *rig.find(control);
    const QPoint place(static_cast<int>(fraction * widget.width()), widget.height() / 2);
    QTest::mouseClick(&widget, Qt::LeftButton, Qt::NoModifier, place);
  };
}

/// A key while the focus is on a control.
Input key(Qt::Key key, const char* control) {
  return [=](Rig& rig) { QTest::keyClick(rig.find(control), key); };
}
Input key(Qt::Key key) {
  return [=](Rig& rig) { rig.press(key); };
}

struct InputRow {
  const char* name;
  Input input;
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

constexpr auto kStars = "songRatingIndicator";
constexpr auto kVolume = "soundVolume";

const std::vector<InputRow> inputRows{
    {"ClickPrevious", click("previousButton"), "previous track"},
    {"ClickPlay", click("playButton"), "to pause"},
    {"ClickNext", click("nextButton"), "next track"},
    {"ClickLyrics", click("toggleLyricsButton"), "get lyrics of current track"},
    {"ClickSecondStar", click(kStars, 0.3), "set rating of current track to 40"},
    {"ClickBeforeStars", click(kStars, 0), "set rating of current track to 0"},
    {"ClickVolume", click(kVolume), "set sound volume to 50"},
    {"DragVolume", [](Rig& rig) { dragFromTheMiddleToTheLeft(*rig.find(kVolume)); },
     "set sound volume to 0"},
    {"WheelOverVolume", [](Rig& rig) { turnWheelUp(*rig.find(kVolume)); },
     "set sound volume to 90"},
    {"Space", key(Qt::Key_Space), "to pause"},
    {"P", key(Qt::Key_P), "previous track"},
    {"N", key(Qt::Key_N), "next track"},
    {"L", key(Qt::Key_L), "get lyrics of current track"},
    {"Three", key(Qt::Key_3), "set rating of current track to 60"},
    {"Up", key(Qt::Key_Up), "set sound volume to 85"},
    {"Down", key(Qt::Key_Down), "set sound volume to 75"},
    {"UpOnPlay", key(Qt::Key_Up, "playButton"), "set sound volume to 85"},
    {"DownOnStars", key(Qt::Key_Down, kStars), "set sound volume to 75"},
    {"UpInLyrics", [](Rig& rig) { QTest::keyClick(rig.unfold(), Qt::Key_Up); },
     "set sound volume to 85"},
    {"RightOnStars", key(Qt::Key_Right, kStars), "set rating of current track to 100"},
    {"LeftOnStars", key(Qt::Key_Left, kStars), "set rating of current track to 60"},
    {"HomeOnStars", key(Qt::Key_Home, kStars), "set rating of current track to 0"},
    {"EndOnStars", key(Qt::Key_End, kStars), "set rating of current track to 100"},
    {"LeftOnVolume", key(Qt::Key_Left, kVolume), "set sound volume to 75"},
    {"PageUpOnVolume", key(Qt::Key_PageUp, kVolume), "set sound volume to 90"},
    {"SpaceOnNext", key(Qt::Key_Space, "nextButton"), "next track"},
};
INSTANTIATE_TEST_SUITE_P(Host, AUsersInput, testing::ValuesIn(inputRows), rowName);

TEST(EachControl, TellsItsNameAndItsKeysInItsToolTip) {
  Rig rig;
  rig.open();
  const std::vector<std::pair<const char*, QString>> rows{
      {"previousButton", "Previous track (P)"},
      {"playButton", "Pause (Space)"},
      {"nextButton", "Next track (N)"},
      {"toggleLyricsButton", "Show or hide the lyrics (L)"},
      {"soundVolume", "Volume (Up, Down)"},
      {"songRatingIndicator", "Rating (0 to 5)"},
      {"albumArtView", ""}};
  for (const auto& [control, toolTip] : rows) EXPECT_EQ(rig.find(control)->toolTip(), toolTip);
}

/// The smallest rectangle around the pixels of which one channel is brighter than `least`.
QRect brightPart(const QImage& image, int (*channel)(QRgb), int least) {
  QRect part;
  for (int i = 0; i < image.width() * image.height(); ++i) {
    const QPoint pixel(i % image.width(), i / image.width());
    if (channel(image.pixel(pixel)) > least) part |= QRect(pixel, QSize(1, 1));
  }
  return part;
}

TEST(ALabel, PaintsItsTextInItsColourOnItsSide) {
  TextLabel label(nullptr);
  label.resize(200, 24);
  label.setPalette(Qt::black);
  const auto inkOf = [&](const QString& text, const QColor& color) {
    label.display(text, label.font(), color);
    return brightPart(label.grab().toImage(), qBlue, 0x60);
  };
  EXPECT_TRUE(inkOf("", Qt::white).isEmpty());
  EXPECT_TRUE(inkOf("Title", Qt::red).isEmpty());
  const auto left = inkOf("Title", Qt::white);
  EXPECT_FALSE(left.isEmpty());
  EXPECT_LT(left.right(), 100);
  EXPECT_GT(inkOf("\u05e9\u05d9\u05e8", Qt::white).left(), 100);  // Hebrew
}

TEST(ATray, IsShownAndTellsWhatIsChosenThere) {
  Tray tray(QIcon(), [] { return PlayerList(); });
  auto& icon = *tray.findChild<QSystemTrayIcon*>();
  const QSignalSpy toggled(&tray, &Tray::toggled);
  const QSignalSpy quit(&tray, &Tray::quitRequested);
  EXPECT_TRUE(icon.isVisible());
  emit icon.activated(QSystemTrayIcon::Context);
  EXPECT_EQ(toggled.count(), 0);
  emit icon.activated(QSystemTrayIcon::Trigger);
  icon.contextMenu()->actions()[0]->trigger();
  EXPECT_EQ(toggled.count(), 2);
  icon.contextMenu()->actions().constLast()->trigger();
  EXPECT_EQ(quit.count(), 1);
  tray.setTitle("A song");
  EXPECT_EQ(icon.toolTip(), "A song");
}

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

/// A drag from the middle to the left end tells of the value there, 0, only once.
template <typename Control, typename Signal>
void expectToldAtTheEndOnly(Control& control, Signal signal) {
  control.resize(120, 24);
  const QSignalSpy told(&control, signal);
  dragFromTheMiddleToTheLeft(control);
  EXPECT_EQ(told.count(), 0);
  QTest::mouseRelease(&control, Qt::LeftButton, Qt::NoModifier, QPoint(0, 0));
  ASSERT_EQ(told.count(), 1);
  EXPECT_EQ(told[0][0].toInt(), 0);
}

TEST(AControlThatIsNotContinuous, TellsOfTheEndOfADragAlone) {
  ValueSlider slider(nullptr);
  slider.display({.minValue = 0, .maxValue = 100, .value = 80, .continuous = false});
  expectToldAtTheEndOnly(slider, &QSlider::valueChanged);
  StarRating stars(nullptr);
  stars.display({.stars = 4, .mostStars = 5, .editable = true, .continuous = false});
  expectToldAtTheEndOnly(stars, &StarRating::starsChosen);
}

class ASliderOfAHundredSteps : public testing::Test {
 protected:
  ASliderOfAHundredSteps() {
    slider_.resize(114, 24);  // The thumb is 14 wide, so each step is one pixel.
    slider_.setPalette(Qt::black);
    show(0);
  }
  void show(double value) { slider_.display({.minValue = 0, .maxValue = 100, .value = value}); }

  ValueSlider slider_{nullptr};
};

TEST_F(ASliderOfAHundredSteps, PaintsItsThumbWhereItsValueIs) {
  for (const int value : {0, 50, 100}) {
    show(value);
    // The thumb is the brightest part.
    EXPECT_EQ(brightPart(slider_.grab().toImage(), qRed, 0xe0), QRect(value, 5, 14, 14));
  }
}

TEST_F(ASliderOfAHundredSteps, GoesToWhereItIsPressedAndKeepsThePlaceWhereItIsHeld) {
  QTest::mouseClick(&slider_, Qt::LeftButton, Qt::NoModifier, QPoint(57, 12));
  EXPECT_EQ(slider_.value(), 50);

  QTest::mousePress(&slider_, Qt::LeftButton, Qt::NoModifier, QPoint(61, 12));
  EXPECT_EQ(slider_.value(), 50);
  movePointer(slider_, {71, 12}, Qt::LeftButton);
  EXPECT_EQ(slider_.value(), 60);
}

/// Stars in a window, and how often they have been painted.
class TheStars : public testing::Test, public QObject {
 protected:
  TheStars() {
    stars_.resize(120, 24);
    stars_.installEventFilter(this);
    show(2, true);
    window_.show();
  }

  void show(int lit, bool highlighted, bool focusRing = true) {
    stars_.display({.stars = lit,
                    .mostStars = 5,
                    .editable = true,
                    .highlighted = highlighted,
                    .focusRing = focusRing});
  }
  QImage picture() { return stars_.grab().toImage(); }
  bool eventFilter(QObject* /*stars*/, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++paints_;
    return false;
  }

  QWidget window_;
  StarRating stars_{&window_};
  int paints_ = 0;
};

TEST_F(TheStars, ShowTheFocusUnlessTheirFileSaysNo) {
  ASSERT_TRUE(Rig::waitFor([&] {
    stars_.setFocus();
    return stars_.hasFocus();
  }));
  const auto withRing = picture();
  show(2, true, false);
  EXPECT_NE(picture(), withRing);
}

TEST_F(TheStars, ArePaintedAnewWheneverTheyShowSomethingElse) {
  ASSERT_TRUE(Rig::waitFor([&] { return paints_ > 0; }));
  const auto before = picture();
  QEvent leave(QEvent::Leave);
  const std::vector<std::pair<std::function<void()>, bool>> changes{
      {[&] { show(3, true); }, false},
      {[&] { show(2, false); }, false},
      {[&] { show(2, true); }, true},
      {[&] {
         movePointer(stars_, {110, 12}, Qt::NoButton);
       },
       false},  // Previews a click.
      {[&] { QApplication::sendEvent(&stars_, &leave); }, true}};
  for (const auto& [change, isAsBefore] : changes) {
    paints_ = 0;
    change();
    EXPECT_TRUE(Rig::waitFor([&] { return paints_ > 0; }));
    EXPECT_EQ(picture() == before, isAsBefore);
  }
  EXPECT_EQ(stars_.stars(), 2);
}

}  // namespace
}  // namespace Corvella
