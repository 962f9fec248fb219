#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QTextCursor>
#include <QTextDocument>
#include <QWheelEvent>
#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "host/FontconfigFinder.h"
#include "host/LyricsText.h"
#include "host/PositionBar.h"
#include "host/PushButton.h"
#include "host/QtImageDecoder.h"
#include "host/QtTextMeasurer.h"
#include "host/SnapshotImage.h"
#include "host/StarRating.h"
#include "host/TextLabel.h"
#include "host/TodayView.h"
#include "host/ValueSlider.h"
#include "players/embedded/EmbeddedPlayer.h"
#include "tests/support/RowName.h"
#include "tests/support/ScriptGate.h"
#include "tests/support/ScriptedStack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

constexpr int kDeadline = 20'000;  // Milliseconds.

/// A Today view over a player whose scripts can be held up.
class Rig {
 public:
  explicit Rig(std::vector<EmbeddedTrack> tracks = embeddedTracks())
      : player(clock_, bundle_, std::move(tracks)) {}

  /// Opens the view and waits for a track.
  void open() {
    view.open();
    ASSERT_TRUE(waitFor([&] { return gate.count("get artwork of current track") > 0 || shows(); }));
    ASSERT_TRUE(waitFor([&] { return shows(); }));
  }
  bool shows() const {
    const auto* title = find<TextLabel>("songTitle");
    return title != nullptr && title->text() != "No Song Playing";
  }
  /// Asks for the lyrics and waits for them; null when they do not come.
  LyricsText* unfold() {
    QTest::keyClick(&window, Qt::Key_L);
    LyricsText* lyrics = nullptr;
    waitFor([&] {
      lyrics = find<LyricsText>("lyricsView");
      return lyrics != nullptr && lyrics->height() > 0;
    });
    return lyrics;
  }
  template <typename Widget = QWidget>
  Widget* find(const char* name) const {
    return view_->window().findChild<Widget*>(name);
  }
  static bool waitFor(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, kDeadline);
  }

 private:
  SteadyClock clock_;
  NSBundle bundle_{CORVELLA_RESOURCES};
  QtImageDecoder decoder_;
  FontconfigFinder fonts_;
  QtTextMeasurer measurer_;

 public:
  EmbeddedPlayer player;

 private:
  PlayerScriptRunner runner_{player, shippedTargets()};

 public:
  ScriptGate gate{runner_};
  WidgetBridge bridge;

 private:
  std::unique_ptr<TodayView> view_ =
      std::make_unique<TodayView>(HostServices{.clock = clock_,
                                               .scriptRunner = gate,
                                               .bundle = bundle_,
                                               .imageDecoder = decoder_,
                                               .fontFinder = fonts_,
                                               .textMeasurer = measurer_},
                                  bridge, "mpv");

 public:
  TodayView& view = *view_;
  TodayWindow& window = view.window();
};

void press(Rig& rig, Qt::Key key) {
  QTest::keyClick(&rig.window, key);
}

void clickAt(QWidget& widget, double fraction) {
  const QPoint place(static_cast<int>(fraction * widget.width()), widget.height() / 2);
  QTest::mouseClick(&widget, Qt::LeftButton, Qt::NoModifier, place);
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
    {"WheelOverVolume", [](Rig& rig) { turnWheelUp(*rig.find("soundVolume")); },
     "set sound volume to 90"},
    {"Space", [](Rig& rig) { press(rig, Qt::Key_Space); }, "to pause"},
    {"P", [](Rig& rig) { press(rig, Qt::Key_P); }, "previous track"},
    {"N", [](Rig& rig) { press(rig, Qt::Key_N); }, "next track"},
    {"L", [](Rig& rig) { press(rig, Qt::Key_L); }, "get lyrics of current track"},
    {"Three", [](Rig& rig) { press(rig, Qt::Key_3); }, "set rating of current track to 60"},
    {"Up", [](Rig& rig) { press(rig, Qt::Key_Up); }, "set sound volume to 85"},
    {"Down", [](Rig& rig) { press(rig, Qt::Key_Down); }, "set sound volume to 75"},
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

TEST(AnOpenTodayView, FollowsTheTrack) {
  Rig rig;
  rig.open();
  const auto tracks = embeddedTracks();
  const auto before = rig.window.grab().toImage();
  press(rig, Qt::Key_N);
  const auto* title = rig.find<TextLabel>("songTitle");
  ASSERT_TRUE(Rig::waitFor([&] { return title->text().toStdString() == tracks[1].track.name; }));
  EXPECT_EQ(rig.find<StarRating>("songRatingIndicator")->stars(), tracks[1].track.rating / 20);
  EXPECT_NE(rig.window.grab().toImage(), before);
}

TEST(AnOpenTodayView, GrowsByTheWholeLyricsAndShrinksBack) {
  Rig rig;
  rig.open();
  rig.window.setTallest(QWIDGETSIZE_MAX);
  const auto folded = rig.window.height();
  const auto* lyrics = rig.unfold();
  ASSERT_NE(lyrics, nullptr);
  EXPECT_EQ(lyrics->toPlainText().toStdString(), embeddedTracks()[0].track.lyrics);
  bool eased = false;
  EXPECT_TRUE(Rig::waitFor([&] {
    const auto height = rig.window.height();
    eased = eased || (height > folded && height < folded + lyrics->height());
    return height == folded + lyrics->height();
  }));
  EXPECT_TRUE(eased);
  EXPECT_EQ(lyrics->document()->size().height(), lyrics->height());
  press(rig, Qt::Key_L);
  EXPECT_TRUE(Rig::waitFor([&] { return rig.window.height() == folded; }));
}

TEST(AnOpenTodayView, IsHiddenByEscapeAndAppearsAnew) {
  Rig rig;
  rig.open();
  const auto appearances = rig.gate.count("to running");
  press(rig, Qt::Key_Escape);
  EXPECT_FALSE(rig.window.isVisible());
  // The track plays on; a widget that has not been told would look at it each second.
  const auto scripts = rig.gate.scripts().size();
  QTest::qWait(1300);
  EXPECT_LE(rig.gate.scripts().size(), scripts + 1);
  rig.view.toggle();
  EXPECT_TRUE(rig.window.isVisible());
  EXPECT_TRUE(Rig::waitFor([&] { return rig.gate.count("to running") > appearances; }));
}

TEST(AnOpenTodayView, IsWalkedThroughByTabInReadingOrder) {
  Rig rig;
  rig.open();
  ASSERT_NE(rig.unfold(), nullptr);
  std::vector<std::string> names;
  for (int i = 0; i < 8; ++i) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    names.push_back(QApplication::focusWidget()->objectName().toStdString());
  }
  std::rotate(names.begin(), std::ranges::find(names, "songRatingIndicator"), names.end());
  EXPECT_THAT(names, testing::ElementsAre("songRatingIndicator", "previousButton", "playButton",
                                          "nextButton", "soundVolume", "toggleLyricsButton",
                                          "lyricsView", "close"));
}

TEST(TheStars, PreviewWhatAClickWouldSet) {
  StarRating stars(nullptr);
  stars.resize(120, 24);
  stars.display({.stars = 2, .mostStars = 5, .editable = true, .highlighted = true});
  const auto before = stars.grab().toImage();
  QMouseEvent hover(QEvent::MouseMove, QPointF(110, 12), QPointF(110, 12), Qt::NoButton,
                    Qt::NoButton, Qt::NoModifier);
  QApplication::sendEvent(&stars, &hover);
  EXPECT_NE(stars.grab().toImage(), before);
  EXPECT_EQ(stars.stars(), 2);
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&stars, &leave);
  EXPECT_EQ(stars.grab().toImage(), before);
}

TEST(AHeldThumb, StaysUntilItIsLetGoAndThenShowsTheNewestVolume) {
  Rig rig;
  rig.open();
  auto& slider = *rig.find<ValueSlider>("soundVolume");
  const QPoint middle(slider.rect().center());
  QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, middle);
  const auto held = slider.value();
  ASSERT_TRUE(Rig::waitFor([&] { return *rig.player.soundVolume() == held; }));

  rig.player.setSoundVolume(10);
  const auto title = rig.find<TextLabel>("songTitle")->text();
  press(rig, Qt::Key_N);
  ASSERT_TRUE(Rig::waitFor([&] { return rig.find<TextLabel>("songTitle")->text() != title; }));
  EXPECT_EQ(slider.value(), held);
  QTest::mouseRelease(&slider, Qt::LeftButton, Qt::NoModifier, middle);
  EXPECT_TRUE(Rig::waitFor([&] { return slider.value() == 10; }));
  EXPECT_EQ(*rig.player.soundVolume(), 10);
}

TEST(AHeldThumb, IsLetGoWhenThePanelIsHidden) {
  Rig rig;
  rig.open();
  auto& slider = *rig.find<ValueSlider>("soundVolume");
  auto& stars = *rig.find<StarRating>("songRatingIndicator");
  QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, slider.rect().center());
  QTest::mousePress(&stars, Qt::LeftButton, Qt::NoModifier, QPoint(2, 2));
  const auto held = slider.value();
  ASSERT_TRUE(Rig::waitFor([&] { return *rig.player.soundVolume() == held; }));
  rig.view.hide();
  EXPECT_FALSE(slider.isSliderDown());
  EXPECT_FALSE(stars.isDown());
  rig.player.setSoundVolume(10);
  rig.view.open();
  EXPECT_TRUE(Rig::waitFor([&] { return slider.value() == 10; }));
}

TEST(ADraggedThumb, SendsOnlyItsNewestVolumeWhileThePlayerIsBusy) {
  Rig rig;
  rig.open();
  auto& slider = *rig.find<ValueSlider>("soundVolume");
  rig.gate.close();
  press(rig, Qt::Key_Space);
  ASSERT_TRUE(
      Rig::waitFor([&] { return rig.gate.scripts().back().ends_with("player state as string"); }));
  QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, slider.rect().center());
  for (int x = 20; x < 200; x += 2) {
    QMouseEvent move(QEvent::MouseMove, QPointF(x, 12), slider.mapToGlobal(QPointF(x, 12)),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&slider, &move);
  }
  const auto last = slider.value();
  rig.gate.open();
  ASSERT_TRUE(Rig::waitFor([&] { return *rig.player.soundVolume() == last; }));
  const auto scripts = rig.gate.scripts();
  EXPECT_LE(std::ranges::count_if(
                scripts,
                [](const auto& script) { return script.find("set sound volume") != script.npos; }),
            2);
  QTest::mouseRelease(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(198, 12));
}

TEST(AnOpenTodayView, ComesBackWhenItIsOpenedMinimised) {
  Rig rig;
  rig.open();
  rig.window.setWindowState(Qt::WindowMinimized);
  EXPECT_TRUE(Rig::waitFor([&] { return !rig.view.isOpen(); }));
  rig.view.toggle();
  EXPECT_TRUE(Rig::waitFor([&] { return rig.view.isOpen() && !rig.window.isMinimized(); }));
}

TEST(AnOpenTodayView, AppearsOnceHoweverOftenItIsOpened) {
  Rig rig;
  const QSignalSpy appearances(&rig.view, &TodayView::appeared);
  const QSignalSpy disappearances(&rig.view, &TodayView::disappeared);
  rig.open();
  rig.view.open();
  EXPECT_EQ(appearances.count(), 1);
  rig.view.hide();
  rig.view.hide();
  EXPECT_EQ(disappearances.count(), 1);
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

TEST(AHungPlayer, LeavesTheWindowTurningIsNamedInTheHeadingAndIsLookedAtAnewInTheEnd) {
  Rig rig;
  rig.open();
  rig.gate.close();
  press(rig, Qt::Key_Space);
  const auto* notice = rig.find<QLabel>("notice");
  int presses = 0;
  EXPECT_TRUE(Rig::waitFor([&] {
    if (++presses % 10 == 0) press(rig, Qt::Key_Up);
    rig.window.repaint();
    return notice->text() == "mpv does not answer";
  }));
  const auto appearances = rig.gate.count("to running");
  rig.gate.open();
  EXPECT_TRUE(Rig::waitFor([&] { return notice->text().isEmpty(); }));
  EXPECT_TRUE(Rig::waitFor([&] { return rig.gate.count("to running") > appearances; }));
}

TEST(EachControl, HasARoleANameAndAValue) {
  Rig rig;
  rig.open();
  ASSERT_NE(rig.unfold(), nullptr);
  struct Row {
    const char* control;
    QAccessible::Role role;
    QString name;
    QString value;
  };
  const std::vector<Row> rows{
      {"songTitle",
       QAccessible::StaticText,
       QString::fromStdString(embeddedTracks()[0].track.name),
       {}},
      {"playButton", QAccessible::Button, "Play or pause", {}},
      {"toggleLyricsButton", QAccessible::Button, "Hide Lyrics", {}},
      {"songRatingIndicator", QAccessible::Slider, "Rating", "4 of 5 stars"},
      {"soundVolume", QAccessible::Slider, "Volume", "80"},
      {"albumArtView", QAccessible::Graphic, "Album artwork", {}},
      {"lyricsView", QAccessible::EditableText, "Lyrics", {}},
  };
  for (const auto& row : rows) {
    auto* const accessible = QAccessible::queryAccessibleInterface(rig.find(row.control));
    ASSERT_NE(accessible, nullptr) << row.control;
    EXPECT_EQ(accessible->role(), row.role) << row.control;
    EXPECT_EQ(accessible->text(QAccessible::Name), row.name) << row.control;
    if (!row.value.isEmpty()) {
      EXPECT_EQ(accessible->text(QAccessible::Value), row.value) << row.control;
    }
  }
  auto* const position = QAccessible::queryAccessibleInterface(rig.find("progressBar"));
  EXPECT_EQ(position->role(), QAccessible::ProgressBar);
  EXPECT_GT(position->valueInterface()->maximumValue().toDouble(), 1);
}

TEST(ThePlayPosition, IsReadAsTime) {
  PositionBar bar(nullptr);
  bar.display({.minValue = 0, .maxValue = 3605, .value = 67});
  EXPECT_EQ(bar.valueText(), "1:07 of 60:05");
  bar.display({.minValue = 0, .maxValue = 60, .value = 61});
  EXPECT_EQ(bar.valueText(), "1:00 of 1:00");
  bar.display({});
  EXPECT_EQ(bar.valueText(), "0:00 of 0:00");
}

struct HostileTitle {
  const char* name;
  std::string title;
};

class ASnapshotOfAHostileTrack : public testing::TestWithParam<HostileTitle> {};

std::vector<EmbeddedTrack> trackCalled(const std::string& title) {
  auto tracks = embeddedTracks();
  tracks.resize(1);
  tracks[0].track.name = title;
  tracks[0].track.artist = title;
  return tracks;
}

void expectInItsPlace(const TextLabel& label) {
  const QFontMetrics metrics(label.font());
  EXPECT_LE(metrics.horizontalAdvance(label.shownText()), label.width());
  const bool elided = label.shownText() != label.text();
  EXPECT_EQ(elided, !label.toolTip().isEmpty());
  EXPECT_EQ(label.alignment().testFlag(Qt::AlignRight), label.text().isRightToLeft());
}

TEST_P(ASnapshotOfAHostileTrack, HasEverythingInItsPlaceAtEveryScale) {
  Rig rig(trackCalled(GetParam().title));
  SnapshotImage snapshot(rig.view, rig.bridge);
  snapshot.open(true);
  const auto& panel = rig.window.panel();
  const auto controls = panel.findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
  ASSERT_EQ(controls.size(), 12);
  for (const auto* control : controls) {
    EXPECT_TRUE(panel.rect().contains(control->geometry())) << control->objectName().toStdString();
    for (const auto* other : controls) {
      EXPECT_TRUE(control == other || !control->geometry().intersects(other->geometry()));
    }
  }
  for (const auto* label : panel.findChildren<TextLabel*>()) expectInItsPlace(*label);
  EXPECT_EQ(rig.find<LyricsText>("lyricsView")->document()->size().height(),
            rig.find("lyricsView")->height());

  const TemporaryFolder folder;
  const auto file = (folder.path() / "view.png").string();
  for (const double scale : {1.0, 1.5, 2.0}) {
    snapshot.write(file, scale);
    EXPECT_EQ(QImage(QString::fromStdString(file)).size(),
              (QSizeF(rig.window.size()) * scale).toSize());
  }
}

std::string repeated(const std::string& part, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += part;
  return text;
}

INSTANTIATE_TEST_SUITE_P(
    Host, ASnapshotOfAHostileTrack,
    testing::Values(
        HostileTitle{"Empty", ""}, HostileTitle{"Short", "A"},
        HostileTitle{"OneLongWord", repeated("Unbreakable", 500)},
        HostileTitle{"LongArabic", "قمرٌ على الشرفةِ يسقي الياسمين ويعدُّ على مهلٍ خُطى العائدين"},
        HostileTitle{"ShortHebrew", "שיר"},
        HostileTitle{"Emoji", repeated("👩‍👩‍👧‍👦🎉", 40)},
        HostileTitle{"AMegabyte", repeated("قمر 👩‍👩‍👧‍👦 ", 30'000)},
        HostileTitle{"CombiningMarks", "Z" + repeated("\u0335\u0489\u0301", 60)},
        HostileTitle{"LinesAndMarkup", "two\nlines\tand <b>markup</b> & more"},
        HostileTitle{"Japanese", "雨の日だけ ひらく図書館 傘のかたちの"},
        HostileTitle{"DirectionOverride", "\u202e reversed " + repeated("left and right ", 9)}),
    rowName);

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleMock(&argc, argv);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
