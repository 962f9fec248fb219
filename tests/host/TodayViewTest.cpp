#include <QAction>
#include <QApplication>
#include <QDate>
#include <QHelpEvent>
#include <QImage>
#include <QList>
#include <QLocale>
#include <QPainter>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QVariantAnimation>
#include <chrono>
#include <cmath>
#include <optional>

#include <gmock/gmock.h>

#include "host/controls/StarRating.h"
#include "host/controls/Theme.h"
#include "host/panel/PanelPlace.h"
#include "host/panel/PlayerButton.h"
#include "host/panel/PlayerMenu.h"
#include "tests/support/TodayViewRig.h"

namespace Corvella {
namespace {

class AnOpenTodayView : public testing::Test, public TodayViewRig {
 protected:
  AnOpenTodayView() { open(); }
};

TEST_F(AnOpenTodayView, GrowsByTheWholeLyricsAndShrinksBack) {
  window.setTallest(QWIDGETSIZE_MAX);
  const auto folded = window.height();
  // Held up where it starts, so that its middle can be seen.
  auto* const easing = window.findChild<QVariantAnimation*>({}, Qt::FindDirectChildrenOnly);
  QObject::connect(
      easing, &QAbstractAnimation::stateChanged, easing, [&] { easing->pause(); },
      Qt::SingleShotConnection);
  auto* lyrics = unfold();
  ASSERT_NE(lyrics, nullptr);
  ASSERT_TRUE(waitFor([&] { return easing->state() == QAbstractAnimation::Paused; }));
  easing->setCurrentTime(easing->duration() / 2);
  EXPECT_GT(window.height(), folded);
  EXPECT_LT(window.height(), folded + lyrics->height());
  easing->resume();
  EXPECT_TRUE(waitFor([&] { return window.height() == folded + lyrics->height(); }));
  press(Qt::Key_L);
  EXPECT_TRUE(waitFor([&] { return window.height() == folded; }));
}

TEST_F(AnOpenTodayView, IsHiddenByEscapeAndAppearsOnceWheneverItComesBack) {
  const QSignalSpy appeared(&view, &TodayView::appeared);
  const QSignalSpy disappeared(&view, &TodayView::disappeared);
  const QSignalSpy titles(&view, &TodayView::titleChanged);
  const auto appearances = gate.appearances();
  find("playButton")->setFocus();
  view.open();
  EXPECT_EQ(appeared.count(), 0);
  press(Qt::Key_Escape);
  EXPECT_FALSE(window.isVisible());
  view.hide();
  EXPECT_EQ(disappeared.count(), 1);
  listener->playerNews(PlayerNews::Changed);
  settle();
  EXPECT_EQ(titles.constLast()[0].toString(), "");
  for (const auto* timer : view.findChildren<QTimer*>()) EXPECT_FALSE(timer->isActive());
  // The track plays on; a widget that has not been told would look at it each second.
  const auto scripts = gate.scripts();
  clock.advance(std::chrono::seconds(2));
  settle();
  EXPECT_EQ(gate.scripts(), scripts);
  view.toggle();
  QKeyEvent stillHeld(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, {}, true);
  QApplication::sendEvent(&window, &stillHeld);
  EXPECT_TRUE(window.isVisible());
  EXPECT_NE(window.focusWidget(), find("playButton"));  // Keys act on the whole view again.
  EXPECT_TRUE(waitFor([&] { return gate.appearances() > appearances; }));
  EXPECT_TRUE(
      waitFor([&] { return titles.constLast()[0].toString() == text("songTitle").c_str(); }));
  window.setWindowState(Qt::WindowMinimized);
  EXPECT_TRUE(waitFor([&] { return disappeared.count() == 2; }));
  view.toggle();
  EXPECT_TRUE(waitFor([&] { return !window.isMinimized(); }));
  EXPECT_EQ(appeared.count(), 2);
}

TEST_F(AnOpenTodayView, StaysWhereTheUserHasMovedItAndGrowsNoFurtherThanTheScreen) {
  window.setEased(false);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
  const QPoint place(40, 300);
  window.move(place);  // As a window manager moves it, which tells nothing else.
  ASSERT_NE(unfold(), nullptr);
  EXPECT_LT(window.geometry().bottom(), window.screen()->availableGeometry().bottom());
  view.hide();
  view.open();
  EXPECT_EQ(window.pos(), place);
}

TEST(AHeading, SaysWhoIsPlayingOrWhatIsWrong) {
  TodayWindow window;
  const auto* line = window.findChild<PlayerButton*>();
  const auto* close = window.findChild<PushButton*>("close");
  window.showPlayer({});
  EXPECT_EQ(line->text(), "No player is running");
  window.showPlayer({.name = "mpv", .identity = "mpv"});
  EXPECT_EQ(line->text(), "mpv");
  const auto* const date = window.findChild<TextLabel*>("date");
  window.showDate();
  EXPECT_EQ(date->text(), QLocale().toString(QDate::currentDate(), QLocale::LongFormat));
  EXPECT_GT(line->y(), date->y());
  EXPECT_LT(line->geometry().right(), close->x());
  window.showPlayer({.name = "", .identity = "The session bus", .silent = true});
  EXPECT_EQ(line->text(), "The session bus does not answer");
  window.showPlayer({.name = "", .identity = std::string(100, 'x')});
  EXPECT_TRUE(line->text().endsWith("x is not running"));
  EXPECT_LE(line->geometry().right(), close->x());
  QApplication::setLayoutDirection(Qt::RightToLeft);
  TodayWindow mirrored;
  mirrored.showPlayer({.name = "mpv", .identity = "Alpha <i>Player</i>"});
  QApplication::setLayoutDirection(Qt::LeftToRight);
  EXPECT_LT(mirrored.findChild<PushButton*>("close")->x(), line->x());
  auto* const name = mirrored.findChild<PlayerButton*>();
  EXPECT_EQ(name->geometry().right(), mirrored.findChild<TextLabel*>("date")->geometry().right());
  // A name that is cut is told in full, and as it is.
  name->resize(20, name->height());
  QHelpEvent resting(QEvent::ToolTip, {}, {});
  QApplication::sendEvent(name, &resting);
  EXPECT_TRUE(QToolTip::text().contains("Alpha &lt;i&gt;")) << QToolTip::text().toStdString();
}

TEST(APanel, StandsWholeOnTheScreenAndGrowsNoFurtherThanItsEdge) {
  struct Row {
    const char* name;
    QRect free;
    std::optional<QPoint> dragged;
    QPoint position;
    int tallest;
  };
  const QRect screen(0, 30, 1000, 770);
  const std::vector<Row> rows{
      {"top right", screen, std::nullopt, {648, 38}, 754},
      {"where it was dragged", screen, QPoint(100, 200), {100, 200}, 592},
      {"beyond the edges", screen, QPoint(900, 700), {656, 460}, 340},
      {"the screen has shrunk", {0, 0, 640, 480}, QPoint(648, 300), {296, 140}, 340},
      {"another screen is gone", screen, QPoint(-500, -200), {0, 30}, 762},
      {"a screen that is too small", {0, 0, 300, 200}, QPoint(10, 10), {0, 0}, 200}};
  for (const auto& row : rows) {
    const auto place = panelPlace(row.free, 344, 340, row.dragged);
    EXPECT_EQ(place.position, row.position) << row.name;
    EXPECT_EQ(place.tallest, row.tallest) << row.name;
  }
}

TEST(AThemesColours, StandOutFromTheCard) {
  const auto luminance = [](const QColor& color) {
    const auto linear = [](double part) {
      return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
  };
  const auto contrast = [&](const QColor& color) {
    QImage card(1, 1, QImage::Format_RGB32);
    card.fill(theme::card());
    QPainter(&card).fillRect(card.rect(), color);
    return (luminance(card.pixelColor(0, 0)) + 0.05) / (luminance(theme::card()) + 0.05);
  };
  for (const auto& text : {theme::text(), theme::dimmed(), theme::notice()}) {
    EXPECT_GE(contrast(text), 4.5) << text.name().toStdString();
  }
  for (const auto& shape : {theme::groove(), theme::accent(), theme::star(), theme::faintText()}) {
    EXPECT_GE(contrast(shape), 3) << shape.name().toStdString();
  }
}

TEST_F(AnOpenTodayView, OffersWhatThePlayerCanDo) {
  using Player = PlayerDescription;
  struct Row {
    bool Player::*ability;  // That it has not; null for no player at all.
    const char* control;
    Qt::Key key;
    const char* refusal;
  };
  const std::vector<Row> rows{
      {nullptr, "playButton", Qt::Key_Space, "No player is running"},
      {nullptr, "toggleLyricsButton", Qt::Key_L, "No player is running"},
      {&Player::keepsRating, "songRatingIndicator", Qt::Key_1, "A keeps no ratings"},
      {&Player::keepsVolume, "soundVolume", Qt::Key_Down, "A lets nobody set its volume"},
      {&Player::canControl, "nextButton", Qt::Key_N, "A takes no commands"},
      {&Player::canGoNext, "nextButton", Qt::Key_N, "A has no track after this one"},
      {&Player::canGoPrevious, "previousButton", Qt::Key_P, "A has no track before this one"},
      {&Player::canPause, "playButton", Qt::Key_Space, "A cannot do that just now"}};
  const Player able{.name = "a", .identity = "A", .playing = true};
  settle();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.refusal);
    auto shown = row.ability != nullptr ? able : Player();
    if (row.ability != nullptr) shown.*row.ability = false;
    window.showPlayer(shown);
    EXPECT_FALSE(find(row.control)->isEnabled());
    EXPECT_EQ(find(row.control)->toolTip().toStdString(), row.refusal);
    const auto commands = gate.count("");
    press(row.key);
    settle();
    EXPECT_EQ(gate.count(""), commands);
  }
  window.showPlayer({.name = "", .identity = "<b>B</b>"});
  EXPECT_EQ(find("playButton")->toolTip(), "<span>&lt;b&gt;B&lt;/b&gt; is not running</span>");
  window.showPlayer({.name = "", .identity = "", .known = false});
  EXPECT_EQ(window.findChild<PlayerButton*>()->text(), "<b>B</b> is not running") << "for now";
  auto silent = able;
  silent.silent = true;
  window.showPlayer(silent);
  EXPECT_EQ(find("soundVolume")->toolTip(), "A does not answer");
  EXPECT_TRUE(find("toggleLyricsButton")->isEnabled());
  window.showPlayer(able);
  for (const auto& row : rows) EXPECT_TRUE(find(row.control)->isEnabled()) << row.control;
}

TEST_F(AnOpenTodayView, LooksAgainAtAPlayerThatHasNews) {
  settle();
  for (const auto news :
       {PlayerNews::Changed, PlayerNews::Halted, PlayerNews::Refused, PlayerNews::Commanded}) {
    const auto appearances = gate.appearances();
    listener->playerNews(news);
    listener->playerNews(news);
    ASSERT_TRUE(waitFor([&] { return gate.appearances() > appearances; }));
    settle();
    EXPECT_EQ(gate.appearances(), appearances + 1);
  }
}

TEST_F(AnOpenTodayView, PaintsNothingBetweenTheTwoPicturesOfAPage) {
  window.setEased(false);
  ASSERT_NE(unfold(), nullptr);
  settle();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
  QList<QImage> frames;
  const auto look = [&] {
    for (int turn = 0; turn < 5; ++turn) QApplication::processEvents();
    const auto frame = onScreen(window);
    if (!frames.contains(frame)) frames.append(frame);
    return frames.size();
  };
  player.setSoundVolume(10);
  gate.close();
  listener->playerNews(PlayerNews::Changed);
  ASSERT_TRUE(waitFor([&] { return gate.isHoldingScripts(); }));
  // Script by script, so that there is time to paint what lies between.
  const QSignalSpy settled(&view, &TodayView::settled);
  view.settle();
  while (settled.isEmpty()) {
    EXPECT_LE(look(), 2);
    gate.letOnePass();
    ASSERT_TRUE(waitFor([&] { return gate.isHoldingScripts() || !settled.isEmpty(); }));
  }
  gate.open();
  ASSERT_TRUE(waitFor([&] { return find<QSlider>("soundVolume")->value() == 10; }));
  EXPECT_EQ(look(), 2);
}

TEST_F(AnOpenTodayView, StartsTheWidgetAnewWhenThePlayerHasLeft) {
  ASSERT_NE(unfold(), nullptr);
  gate.close();
  for (const auto key : {Qt::Key_Up, Qt::Key_1}) press(key);      // Asked of a widget that is gone
  ASSERT_TRUE(waitFor([&] { return gate.isHoldingScripts(); }));  // when the answer comes.
  listener->playerNews(PlayerNews::Left);
  EXPECT_TRUE(waitFor([&] { return starts == 2; }));
  gate.open();
  EXPECT_TRUE(waitFor([&] { return window.panel().height() == 285; }));  // Folded.
  settle();
  EXPECT_EQ(find<QSlider>("soundVolume")->value(), *player.soundVolume());
  player.setRatingOfCurrentTrack(60);
  listener->playerNews(PlayerNews::Changed);
  EXPECT_TRUE(waitFor([&] { return find<StarRating>("songRatingIndicator")->stars() == 3; }));
  view.hide();
  listener->playerNews(PlayerNews::Left);
  settle();
  EXPECT_EQ(starts, 2);
  view.open();
  EXPECT_EQ(starts, 3);
}

TEST_F(AnOpenTodayView, ListsThePlayersToChooseFrom) {
  description.playing = true;
  description.identity = "R&B";
  press(Qt::Key_S);
  auto* const menu = window.findChild<PlayerMenu*>();
  menu->hide();
  QTest::mouseClick(find("player"), Qt::LeftButton);
  EXPECT_TRUE(menu->isVisible());
  const auto actions = menu->actions();
  std::vector<std::string> texts;
  for (const auto* action : actions) texts.push_back(action->text().toStdString());
  EXPECT_THAT(texts, testing::ElementsAre("Automatic", "", "R&&B \u2013 playing", "",
                                          "Show the window of R&&B"));
  EXPECT_TRUE(actions[2]->isChecked());
  actions[4]->trigger();
  EXPECT_EQ(raises, 1);
  actions[0]->trigger();
  EXPECT_EQ(starts, 2);
  EXPECT_EQ(view.players().choice, "auto");
}

TEST_F(AnOpenTodayView, TurnsWhileAPlayerHangs) {
  gate.close();
  const auto scripts = gate.scripts().size();
  press(Qt::Key_Space);
  ASSERT_TRUE(waitFor([&] { return gate.scripts().size() > scripts; }));
  description.silent = true;
  listener->playerNews(PlayerNews::Described);
  const auto* line = find<PlayerButton>("player");
  EXPECT_TRUE(waitFor([&] { return line->text() == "mpv does not answer"; }));
  gate.open();
  settle();
  // Until it answers, the widget does not ask it each second.
  const auto asked = gate.scripts();
  clock.advance(std::chrono::seconds(3));
  settle();
  EXPECT_EQ(gate.scripts(), asked);
  const auto appearances = gate.appearances();
  description.silent = false;
  listener->playerNews(PlayerNews::Changed);
  EXPECT_TRUE(waitFor([&] { return gate.appearances() > appearances; }));
}

}  // namespace
}  // namespace Corvella
