#include <QAction>
#include <QApplication>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
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

using namespace std::chrono_literals;

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
  // Held up where it starts, so that its middle can be seen.
  auto* const easing = rig_.window.findChild<QVariantAnimation*>({}, Qt::FindDirectChildrenOnly);
  QObject::connect(
      easing, &QAbstractAnimation::stateChanged, easing, [&] { easing->pause(); },
      Qt::SingleShotConnection);
  auto* lyrics = rig_.unfold();
  ASSERT_NE(lyrics, nullptr);
  EXPECT_EQ(lyrics->layout().lines().text().toStdString(), embeddedTracks()[0].track.lyrics);
  ASSERT_TRUE(TodayViewRig::waitFor([&] { return easing->state() == QAbstractAnimation::Paused; }));
  easing->setCurrentTime(easing->duration() / 2);
  EXPECT_GT(rig_.window.height(), folded);
  EXPECT_LT(rig_.window.height(), folded + lyrics->height());
  easing->resume();
  EXPECT_TRUE(
      TodayViewRig::waitFor([&] { return rig_.window.height() == folded + lyrics->height(); }));
  EXPECT_EQ(lyrics->layout().knownHeight(), lyrics->height());
  rig_.press(Qt::Key_L);
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return rig_.window.height() == folded; }));
}

TEST_F(AnOpenTodayView, IsHiddenByEscapeAndAppearsAnew) {
  const auto appearances = rig_.gate.count("to running");
  rig_.press(Qt::Key_Escape);
  EXPECT_FALSE(rig_.window.isVisible());
  rig_.settle();
  // The track plays on; a widget that has not been told would look at it each second.
  const auto scripts = rig_.gate.scripts();
  rig_.clock.advance(2s);
  rig_.settle();
  EXPECT_EQ(rig_.gate.scripts(), scripts);
  rig_.view.toggle();
  QKeyEvent stillHeld(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, {}, true);
  QApplication::sendEvent(&rig_.window, &stillHeld);
  EXPECT_TRUE(rig_.window.isVisible());
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return rig_.gate.count("to running") > appearances; }));
}

TEST_F(AnOpenTodayView, AppearsOnceWhenItIsOpenedAgainAndOnceMoreWhenItComesBack) {
  const QSignalSpy appearances(&rig_.view, &TodayView::appeared);
  const QSignalSpy disappearances(&rig_.view, &TodayView::disappeared);
  rig_.view.open();
  EXPECT_EQ(appearances.count(), 0);
  rig_.window.setWindowState(Qt::WindowMinimized);
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return disappearances.count() == 1; }));
  rig_.view.toggle();
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return !rig_.window.isMinimized(); }));
  EXPECT_EQ(appearances.count(), 1);
  rig_.view.hide();
  rig_.view.hide();
  EXPECT_EQ(disappearances.count(), 2);
}

TEST(AHeading, SaysWhoIsPlayingOrWhatIsWrong) {
  struct Row {
    PlayerDescription player;
    const char* says;
  };
  const std::vector<Row> rows{
      {{.name = "mpv", .identity = "mpv"}, "mpv"},
      {{.name = "mpv", .identity = "mpv", .silent = true}, "mpv does not answer"},
      {{}, "No player is running"}};
  TodayWindow window;
  const auto* line = window.findChild<PlayerButton*>();
  const auto* close = window.findChild<PushButton*>("close");
  for (const auto& row : rows) {
    window.showPlayer(row.player);
    EXPECT_EQ(line->text().toStdString(), row.says);
    EXPECT_GT(line->y(), window.findChild<TextLabel*>("date")->y());
    EXPECT_LT(line->geometry().right(), close->x());
  }
  window.setNotice("No bus. " + QString(100, 'x'));
  EXPECT_TRUE(line->text().startsWith("No bus."));
  EXPECT_LE(line->geometry().right(), close->x());
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
      {"beyond the edges", screen, QPoint(900, 700), {656, 460}, 332},
      {"the screen has shrunk", {0, 0, 640, 480}, QPoint(648, 300), {296, 140}, 332},
      {"another screen is gone", screen, QPoint(-500, -200), {0, 30}, 762},
      {"a screen that is too small", {0, 0, 300, 200}, QPoint(10, 10), {0, 0}, 192}};
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
    const auto card = theme::card();
    const auto over = [&](float front, float back) {
      return front * color.alphaF() + back * (1 - color.alphaF());
    };
    const auto seen =
        QColor::fromRgbF(over(color.redF(), card.redF()), over(color.greenF(), card.greenF()),
                         over(color.blueF(), card.blueF()));
    return (luminance(seen) + 0.05) / (luminance(card) + 0.05);
  };
  for (const auto& text : {theme::text(), theme::dimmed(), theme::notice()}) {
    EXPECT_GE(contrast(text), 4.5) << text.name().toStdString();
  }
  for (const auto& shape : {theme::groove(), theme::accent(), theme::star(), theme::faintText()}) {
    EXPECT_GE(contrast(shape), 3) << shape.name().toStdString();
  }
}

TEST(ATodayView, OffersWhatThePlayerCanDo) {
  struct Row {
    PlayerDescription player;
    const char* control;
    const char* refusal;
    Qt::Key key;
  };
  const std::vector<Row> rows{{{}, "playButton", "No player is running", Qt::Key_Space},
                              {{.name = "a", .identity = "A", .keepsRating = false},
                               "songRatingIndicator",
                               "A keeps no ratings",
                               Qt::Key_1},
                              {{.name = "a", .identity = "A", .keepsVolume = false},
                               "soundVolume",
                               "A lets nobody set its volume",
                               Qt::Key_Down},
                              {{.name = "a", .identity = "A", .canControl = false},
                               "nextButton",
                               "A takes no commands",
                               Qt::Key_N},
                              {{.name = "a", .identity = "A", .canGoNext = false},
                               "nextButton",
                               "A has no track after this one",
                               Qt::Key_N},
                              {{.name = "a", .identity = "A", .canGoPrevious = false},
                               "previousButton",
                               "A has no track before this one",
                               Qt::Key_P},
                              {{.name = "a", .identity = "A", .playing = true, .canPause = false},
                               "playButton",
                               "A cannot do that just now",
                               Qt::Key_Space}};
  TodayViewRig rig;
  rig.open();
  rig.settle();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.refusal);
    rig.window.showPlayer(row.player);
    EXPECT_FALSE(rig.find(row.control)->isEnabled());
    EXPECT_EQ(rig.find(row.control)->toolTip().toStdString(), row.refusal);
    const auto commands = rig.gate.count("");
    rig.press(row.key);
    rig.settle();
    EXPECT_EQ(rig.gate.count(""), commands);
  }
  rig.window.showPlayer({.name = "a", .identity = "A"});
  for (const auto& row : rows) EXPECT_TRUE(rig.find(row.control)->isEnabled()) << row.control;
}

TEST_F(AnOpenTodayView, LooksAgainAtAPlayerThatHasNews) {
  rig_.settle();
  for (const auto news : {PlayerNews::Changed, PlayerNews::Refused, PlayerNews::Commanded}) {
    const auto appearances = rig_.gate.count("to running");
    rig_.listener->playerNews(news);
    rig_.listener->playerNews(news);
    ASSERT_TRUE(TodayViewRig::waitFor([&] { return rig_.gate.count("to running") > appearances; }));
    rig_.settle();
    EXPECT_EQ(rig_.gate.count("to running"), appearances + 1);
  }
}

TEST_F(AnOpenTodayView, StartsTheWidgetAnewWhenThePlayerHasLeft) {
  ASSERT_NE(rig_.unfold(), nullptr);
  rig_.press(Qt::Key_Up);  // Asked of a widget that is gone when the answer comes.
  const auto folded = 285;
  rig_.listener->playerNews(PlayerNews::Left);
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return rig_.starts == 2; }));
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return rig_.window.panel().height() == folded; }));
  rig_.settle();
  EXPECT_EQ(rig_.find<QSlider>("soundVolume")->value(), *rig_.player.soundVolume());
  rig_.view.hide();
  rig_.listener->playerNews(PlayerNews::Left);
  rig_.settle();
  EXPECT_EQ(rig_.starts, 2);
  rig_.view.open();
  EXPECT_EQ(rig_.starts, 3);
}

TEST_F(AnOpenTodayView, ListsThePlayersToChooseFrom) {
  rig_.description.playing = true;
  rig_.press(Qt::Key_S);
  auto* const menu = rig_.window.findChild<PlayerMenu*>();
  ASSERT_NE(menu, nullptr);
  const auto actions = menu->actions();
  std::vector<std::string> texts;
  for (const auto* action : actions) texts.push_back(action->text().toStdString());
  EXPECT_THAT(texts, testing::ElementsAre("Automatic", "", "mpv \u2013 playing", "",
                                          "Show the window of mpv"));
  EXPECT_TRUE(actions[2]->isChecked());
  actions[4]->trigger();
  EXPECT_EQ(rig_.raises, 1);
  actions[0]->trigger();
  EXPECT_EQ(rig_.starts, 2);
  EXPECT_EQ(rig_.view.players().choice, "auto");
}

TEST_F(AnOpenTodayView, TurnsWhileAPlayerHangs) {
  rig_.gate.close();
  const auto scripts = rig_.gate.scripts().size();
  rig_.press(Qt::Key_Space);
  ASSERT_TRUE(TodayViewRig::waitFor([&] { return rig_.gate.scripts().size() > scripts; }));
  rig_.description.silent = true;
  rig_.listener->playerNews(PlayerNews::Described);
  const auto* line = rig_.find<PlayerButton>("player");
  EXPECT_TRUE(TodayViewRig::waitFor([&] { return line->text() == "mpv does not answer"; }));
  rig_.gate.open();
}

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleMock(&argc, argv);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
