#include <QApplication>
#include <QBuffer>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/controls/ButtonSign.h"
#include "host/controls/PictureView.h"
#include "host/controls/PositionBar.h"
#include "host/controls/PushButton.h"
#include "host/controls/StarRating.h"
#include "host/controls/TextLabel.h"
#include "host/controls/Theme.h"
#include "host/controls/ValueSlider.h"
#include "host/panel/Tray.h"
#include "host/services/QtImageDecoder.h"
#include "tests/support/TodayViewRig.h"

namespace Corvella {
namespace {

using Rig = TodayViewRig;

void dragFromTheMiddleToTheLeft(QWidget& widget) {
  QTest::mousePress(&widget, Qt::LeftButton);
  QTest::mouseMove(&widget, {0, 1});
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

/// A key while the focus is on a control, or in the window.
Input key(Qt::Key key, const char* control = nullptr) {
  return
      [=](Rig& rig) { QTest::keyClick(control != nullptr ? rig.find(control) : &rig.window, key); };
}

TEST(AUsersInput, EndsInItsScript) {
  constexpr auto kStars = "songRatingIndicator";
  constexpr auto kVolume = "soundVolume";
  struct Row {
    const char* name;
    Input input;
    std::string script;  // How the script ends that comes of it.
  };
  const std::vector<Row> rows{
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
      {"Zero", key(Qt::Key_0), "set rating of current track to 0"},
      {"One", key(Qt::Key_1), "set rating of current track to 20"},
      {"Two", key(Qt::Key_2), "set rating of current track to 40"},
      {"Three", key(Qt::Key_3), "set rating of current track to 60"},
      {"Five", key(Qt::Key_5), "set rating of current track to 100"},
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
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Rig rig;
    rig.open();
    const auto before = rig.gate.count(row.script);
    row.input(rig);
    EXPECT_TRUE(Rig::waitFor([&] { return rig.gate.count(row.script) > before; }));
  }
}

TEST(StepsOfTheVolume, StartFromThePlayersOwnAlsoWhenItHasToldNobody) {
  Rig rig;
  rig.open();
  rig.settle();
  rig.player.setSoundVolume(10);
  for (int i = 0; i < 3; ++i) rig.press(Qt::Key_Up);
  EXPECT_TRUE(Rig::waitFor([&] { return *rig.player.soundVolume() == 25; }));
  EXPECT_EQ(rig.gate.count("set sound volume to 95"), 0);
}

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

TEST(ALabel, PaintsItsTextInItsColourOnItsSide) {
  TextLabel label(nullptr);
  label.resize(200, 24);
  label.setPalette(Qt::black);
  const auto inkOf = [&](const QString& text, const QColor& color) {
    label.display(text, label.font(), color);
    return Rig::brightPart(label.grab().toImage(), qBlue, 0x60);
  };
  EXPECT_TRUE(inkOf("Title", Qt::red).isEmpty());
  const auto left = inkOf("Title", Qt::white);
  EXPECT_FALSE(left.isEmpty());
  EXPECT_LT(left.right(), 100);
  EXPECT_GT(inkOf("\u05e9\u05d9\u05e8", Qt::white).left(), 100);  // Hebrew
  inkOf("one\ntwo\u2028three\tfour", Qt::white);
  EXPECT_EQ(label.text(), "one two three four");
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

TEST(AHeldThumb, StaysUntilItIsLetGoOrHiddenAndThenShowsTheNewestVolume) {
  for (const bool isHidden : {false, true}) {
    SCOPED_TRACE(isHidden);
    Rig rig;
    rig.open();
    auto& slider = *rig.find<ValueSlider>("soundVolume");
    auto& stars = *rig.find<StarRating>("songRatingIndicator");
    QTest::mousePress(&slider, Qt::LeftButton);
    const auto held = slider.value();
    ASSERT_TRUE(Rig::waitFor([&] { return *rig.player.soundVolume() == held; }));
    rig.player.setSoundVolume(10);
    rig.press(Qt::Key_N);
    const auto next = embeddedTracks()[1].track;
    ASSERT_TRUE(Rig::waitFor([&] { return rig.text("songTitle") == next.name; }));
    EXPECT_EQ(stars.stars(), next.rating / 20);
    EXPECT_EQ(slider.value(), held);

    if (isHidden) {
      QTest::mousePress(&stars, Qt::LeftButton);
      rig.view.hide();
      EXPECT_FALSE(stars.isDown());
      rig.view.open();
    } else {
      QTest::mouseRelease(&slider, Qt::LeftButton);
    }
    EXPECT_FALSE(slider.isSliderDown());
    EXPECT_TRUE(Rig::waitFor([&] { return slider.value() == 10; }));
    EXPECT_EQ(*rig.player.soundVolume(), 10);
  }
}

TEST(AControlThatIsNotContinuous, TellsOfTheEndOfADragAlone) {
  const auto expectToldAtTheEndOnly = [](auto& control, auto signal) {
    control.resize(120, 24);
    const QSignalSpy told(&control, signal);
    dragFromTheMiddleToTheLeft(control);
    EXPECT_EQ(told.count(), 0);
    QTest::mouseRelease(&control, Qt::LeftButton, {}, {0, 1});
    ASSERT_EQ(told.count(), 1);
    EXPECT_EQ(told[0][0].toInt(), 0);
  };
  ValueSlider slider(nullptr);
  slider.display({.minValue = 0, .maxValue = 100, .value = 80, .continuous = false});
  expectToldAtTheEndOnly(slider, &QSlider::valueChanged);
  StarRating stars(nullptr);
  stars.display({.stars = 4, .mostStars = 5, .editable = true, .continuous = false});
  expectToldAtTheEndOnly(stars, &StarRating::starsChosen);
}

TEST(ASlider, HasItsThumbWhereItsValueIsAndFollowsThePointer) {
  ValueSlider slider(nullptr);
  slider.resize(114, 24);  // The thumb is 14 wide, so each step is one pixel.
  slider.setPalette(Qt::black);
  for (const int value : {0, 50, 100}) {
    slider.display({.minValue = 0, .maxValue = 100, .value = static_cast<double>(value)});
    // The thumb is the brightest part.
    EXPECT_EQ(Rig::brightPart(slider.grab().toImage(), qRed, 0xe0), QRect(value, 5, 14, 14));
  }
  QTest::mouseClick(&slider, Qt::LeftButton, {}, {57, 12});
  EXPECT_EQ(slider.value(), 50);
  QTest::mousePress(&slider, Qt::LeftButton, {}, {61, 12});
  EXPECT_EQ(slider.value(), 50);
  QTest::mouseMove(&slider, {71, 12});
  EXPECT_EQ(slider.value(), 60);
}

/// What a widget paints on the card, as it is seen.
QImage onTheCard(QWidget& widget) {
  QImage image(widget.size(), QImage::Format_RGB32);
  image.fill(theme::card());
  widget.render(&image, {}, {}, QWidget::DrawChildren);
  return image;
}

TEST(EachControl, IsPaintedInTheColoursOfWhatItShows) {
  using Sample = std::pair<QPoint, QColor>;
  const auto expectColors = [](QWidget& widget, const std::vector<Sample>& samples) {
    const auto painted = onTheCard(widget);
    for (const auto& [place, color] : samples) {
      QImage expected(1, 1, QImage::Format_RGB32);
      expected.fill(theme::card());
      QPainter(&expected).fillRect(expected.rect(), color);
      EXPECT_EQ(painted.pixelColor(place), expected.pixelColor(0, 0)) << place.x();
    }
  };
  PositionBar bar(nullptr);
  bar.resize(100, 10);
  bar.display({.minValue = 0, .maxValue = 100, .value = 0});
  expectColors(bar, {{{3, 5}, theme::groove()}, {{3, 1}, theme::card()}});
  bar.display({.minValue = 0, .maxValue = 100, .value = 50});
  expectColors(bar, {{{40, 5}, theme::accent()}, {{60, 5}, theme::groove()}});

  ValueSlider slider(nullptr);
  slider.resize(114, 24);
  slider.display({.minValue = 0, .maxValue = 100, .value = 50});
  const QPoint left(20, 12);
  const QPoint thumb(57, 12);
  const QPoint right(90, 12);
  expectColors(slider, {{left, theme::accent()}, {thumb, theme::text()}, {right, theme::groove()}});
  slider.setEnabled(false);
  expectColors(
      slider,
      {{left, theme::faintText()}, {thumb, theme::faintText()}, {right, theme::faintGroove()}});

  StarRating stars(nullptr);
  stars.resize(120, 24);
  const QPoint first(12, 12);
  const QPoint last(108, 12);
  stars.display({.stars = 2, .mostStars = 5, .highlighted = true});
  expectColors(stars, {{first, theme::star()}, {last, theme::groove()}, {{0, 0}, theme::card()}});
  stars.display({.stars = 2, .mostStars = 5, .highlighted = false});
  expectColors(stars, {{first, theme::dimmed()}, {last, theme::groove()}});
  stars.setEnabled(false);
  expectColors(stars, {{first, theme::faintText()}, {last, theme::faintGroove()}});

  PushButton button(nullptr);
  button.resize(60, 30);
  const QPoint corner(0, 0);
  const QPoint side(5, 15);
  button.display({"\u25b6", nullptr, true});
  expectColors(
      button,
      {{{30, 15}, theme::text()}, {corner, theme::card()}, {side, QColor(255, 255, 255, 26)}});
  button.display({"\u25b6", nullptr, false});
  expectColors(button, {{{30, 15}, theme::faintText()}, {side, QColor(255, 255, 255, 10)}});
}

TEST(AButtonsSign, PointsWhereItLeads) {
  struct Row {
    const char* title;
    QSizeF size;
    std::vector<QPointF> inside;
    std::vector<QPointF> outside;
  };
  const std::vector<Row> rows{
      {"\u25b6", {12, 14}, {{1, 3}, {10, 7}, {1, 11}}, {{11, 2}, {11, 12}}},
      {"\u25b6\u25b6", {19.2, 14}, {{1, 3}, {8, 7}, {11, 3}, {18, 7}}, {{8, 2}, {18, 12}}},
      {"\u25c0\u25c0", {19.2, 14}, {{1, 7}, {8, 3}, {11, 7}, {18, 11}}, {{1, 2}, {11, 12}}},
      {"\u275a\u275a", {12, 14}, {{2, 1}, {2, 13}, {10, 7}}, {{6, 7}}},
      {"\u2715", {10.5, 10.5}, {{1, 1}, {8, 8}, {8, 1}, {1, 8}}, {{4.5, 1}, {1, 4.5}}},
      {"No Lyrics", {0, 0}, {}, {}}};
  for (const auto& [title, size, inside, outside] : rows) {
    SCOPED_TRACE(title);
    const auto sign = buttonSign(title);
    EXPECT_NEAR(sign.boundingRect().width(), size.width(), 0.5);
    EXPECT_NEAR(sign.boundingRect().height(), size.height(), 0.5);
    for (const auto& point : inside) EXPECT_TRUE(sign.contains(point)) << point.x();
    for (const auto& point : outside) EXPECT_FALSE(sign.contains(point)) << point.x();
  }
}

TEST(TheStars, ArePaintedAnewWheneverTheyShowSomethingElse) {
  const RatingContent content{.stars = 2, .mostStars = 5, .editable = true, .highlighted = true};
  StarRating stars(nullptr);
  stars.display(content);
  stars.resize(120, 24);
  stars.show();
  stars.setFocus();
  ASSERT_TRUE(Rig::waitFor([&] { return stars.hasFocus(); }));
  stars.repaint();
  const auto before = Rig::onScreen(stars);
  const auto showsAsBefore = [&] { return Rig::onScreen(stars) == before; };
  const auto showsSomethingElse = [&] { return !showsAsBefore(); };
  const std::vector<RatingContent> others{
      {.stars = 3, .mostStars = 5, .editable = true, .highlighted = true},
      {.stars = 2, .mostStars = 5, .editable = true, .highlighted = false},
      {.stars = 2, .mostStars = 5, .editable = true, .highlighted = true, .focusRing = false}};
  for (const auto& other : others) {
    stars.display(other);
    EXPECT_TRUE(Rig::waitFor(showsSomethingElse));
    stars.display(content);
    EXPECT_TRUE(Rig::waitFor(showsAsBefore));
  }
  // A pointer over them previews what a click would do.
  const QPointF place(110, 12);
  QMouseEvent over(QEvent::MouseMove, place, place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
  QApplication::sendEvent(&stars, &over);
  EXPECT_TRUE(Rig::waitFor(showsSomethingElse));
  EXPECT_EQ(stars.stars(), 2);
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&stars, &leave);
  EXPECT_TRUE(Rig::waitFor(showsAsBefore));
}

TEST(TheStars, AreChosenByAClickThatChangesThemIfThatIsAllowed) {
  StarRating stars(nullptr);
  stars.resize(120, 24);
  RatingContent content{.stars = 2, .mostStars = 5, .editable = true, .highlighted = true};
  stars.display(content);
  const QSignalSpy chosen(&stars, &StarRating::starsChosen);
  const auto choices = [&](int click) {
    QTest::mouseClick(&stars, Qt::LeftButton, Qt::NoModifier, QPoint(click, 12));
    return chosen.count();
  };
  constexpr int kSecond = 36;
  constexpr int kLast = 108;
  EXPECT_EQ(choices(kSecond), 0);
  EXPECT_EQ(choices(kLast), 1);
  EXPECT_EQ(stars.stars(), 5);
  // A button that is let go here and was pressed elsewhere chooses nothing.
  const QPointF place(kSecond, 12);
  QMouseEvent over(QEvent::MouseMove, place, place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
  QApplication::sendEvent(&stars, &over);
  QTest::mouseRelease(&stars, Qt::LeftButton, Qt::NoModifier, place.toPoint());
  EXPECT_EQ(chosen.count(), 1);
  content.editable = false;
  stars.display(content);
  EXPECT_EQ(choices(kLast), 1);
}

TEST(AWidePicture, StandsInTheMiddleOfItsView) {
  QImage wide(40, 20, QImage::Format_RGB32);
  wide.fill(Qt::white);
  QBuffer file;
  file.open(QIODevice::WriteOnly);
  ASSERT_TRUE(wide.save(&file, "PNG"));
  PictureView view;
  view.resize(80, 80);
  view.display({NSImage::initWithData(std::as_bytes(std::span(file.data())), QtImageDecoder())});
  EXPECT_EQ(view.pictureRect(), QRectF(0, 20, 80, 40));
}

TEST(APictureOfTwiceThePixelsOfItsView, IsDrawnPixelByPixelAtTwiceTheScale) {
  QImage chessboard(80, 80, QImage::Format_RGB32);
  for (int i = 0; i < 80 * 80; ++i) {
    const QPoint field(i % 80, i / 80);
    chessboard.setPixelColor(field, (field.x() + field.y()) % 2 == 0 ? Qt::black : Qt::white);
  }
  QBuffer file;
  file.open(QIODevice::WriteOnly);
  ASSERT_TRUE(chessboard.save(&file, "PNG"));
  PictureView view;
  view.resize(chessboard.size() / 2);
  view.display({NSImage::initWithData(std::as_bytes(std::span(file.data())), QtImageDecoder())});

  QImage drawn(chessboard.size(), QImage::Format_RGB32);
  drawn.fill(Qt::red);
  drawn.setDevicePixelRatio(2);
  view.render(&drawn, {}, {}, QWidget::DrawChildren);
  drawn.setDevicePixelRatio(1);
  const QRect withoutRoundedCorners(0, 12, 80, 56);
  EXPECT_EQ(drawn.copy(withoutRoundedCorners), chessboard.copy(withoutRoundedCorners));
  EXPECT_EQ(drawn.pixelColor(0, 0), QColor(Qt::red));
}

}  // namespace
}  // namespace Corvella
