#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/controls/LyricsView.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

class LyricsRig {
 public:
  explicit LyricsRig(int width) { view.resize(width, 300); }

  void display(const std::string& text, double fontSize = 13) {
    view.display({.text = text, .color = {}, .font = NSFont::systemFontOfSize(fontSize)});
    view.setSlice(std::chrono::milliseconds::max());
  }

  /// At the left edge of the letter at that place.
  void mouse(QEvent::Type type, qsizetype place, Qt::KeyboardModifiers modifiers = {}) {
    const auto caret = view.layout().caretAt(place);
    const QPointF point(caret.x() + 1, caret.center().y());
    const bool moves = type == QEvent::MouseMove;
    QMouseEvent event(type, point, view.mapToGlobal(point), moves ? Qt::NoButton : Qt::LeftButton,
                      Qt::LeftButton, modifiers);
    event.setTimestamp(now);
    QApplication::sendEvent(&view, &event);
  }

  void chooseFromMenu(int entry) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, view.mapToGlobal(QPoint()));
    QApplication::sendEvent(&view, &event);
    view.findChild<QMenu*>()->actions().at(entry)->trigger();
  }

  LyricsView view{nullptr};
  quint64 now = 10'000;
};

constexpr auto kShift = Qt::ShiftModifier;
constexpr auto kBoth = Qt::ShiftModifier | Qt::ControlModifier;

using Step = std::function<void(LyricsRig&)>;

Step press(qsizetype place, Qt::KeyboardModifiers modifiers = {}) {
  return [=](LyricsRig& rig) { rig.mouse(QEvent::MouseButtonPress, place, modifiers); };
}
Step release(qsizetype place) {
  return [=](LyricsRig& rig) { rig.mouse(QEvent::MouseButtonRelease, place); };
}
Step doubleClick(qsizetype place) {
  return [=](LyricsRig& rig) { rig.mouse(QEvent::MouseButtonDblClick, place); };
}
Step move(qsizetype place) {
  return [=](LyricsRig& rig) { rig.mouse(QEvent::MouseMove, place); };
}
Step wait() {
  return [](LyricsRig& rig) { rig.now += 10'000; };
}
Step select(qsizetype anchor, qsizetype cursor) {
  return [=](LyricsRig& rig) { rig.view.select(anchor, cursor); };
}
Step menu(int entry) {
  return [=](LyricsRig& rig) { rig.chooseFromMenu(entry); };
}
Step key(Qt::Key key, Qt::KeyboardModifiers modifiers, int count = 1) {
  return [=](LyricsRig& rig) {
    for (int i = 0; i < count; ++i) QTest::keyClick(&rig.view, key, modifiers);
  };
}

/// Two lines, of which the first wraps between "two" and "three", and one from right to left.
constexpr auto kText = "one two three\nfour\nאחת שתיים";

struct SelectionRow {
  const char* name;
  std::vector<Step> steps;
  std::string selected;
  std::string text = kText;
  int width = 60;
};

class ReadersInput : public testing::TestWithParam<SelectionRow> {};

TEST_P(ReadersInput, SelectsWhatIsCopied) {
  LyricsRig rig(GetParam().width);
  rig.display(GetParam().text);
  QApplication::clipboard()->setText("before");
  for (const auto& step : GetParam().steps) step(rig);
  QTest::keyClick(&rig.view, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(), GetParam().selected);
}

const std::vector<SelectionRow> selectionRows{
    {"Click", {press(2), release(2)}, "before"},
    {"Drag", {press(4), move(16)}, "two three\nfo"},
    {"DragBackwards", {press(16), move(4)}, "two three\nfo"},
    {"DoubleClick", {doubleClick(5)}, "two"},
    {"DoubleClickAndDrag", {doubleClick(5), move(9)}, "two three"},
    {"DoubleClickAndDragBack", {doubleClick(5), move(1)}, "one two"},
    {"DoubleClickAndDragOneLetterBack", {doubleClick(9), move(8)}, "three"},
    {"TripleClick", {doubleClick(9), press(9)}, "one two three"},
    {"DoubleClickAndAClickLater", {doubleClick(9), wait(), press(9)}, "before"},
    {"DoubleClickAndAClickElsewhere", {doubleClick(9), press(16)}, "before"},
    {"ShiftClick", {press(4), press(7, kShift)}, "two"},
    {"All", {key(Qt::Key_A, Qt::ControlModifier)}, kText},
    {"LettersFromTheStart", {key(Qt::Key_Right, kShift, 2)}, "on"},
    {"LettersAcrossLines", {press(12), key(Qt::Key_Right, kShift, 3)}, "e\nf"},
    {"LettersBack", {press(15), key(Qt::Key_Left, kShift, 3)}, "e\nf"},
    {"LettersFromRightToLeft", {select(19, 19), key(Qt::Key_Left, kShift, 2)}, "אח"},
    {"Words", {key(Qt::Key_Right, kBoth, 2)}, "one two "},
    {"WordsBack", {press(8), key(Qt::Key_Left, kBoth)}, "two "},
    {"RowEnd", {key(Qt::Key_End, kShift, 2)}, "one two"},
    {"RowStart", {press(10), key(Qt::Key_Home, kShift)}, "th"},
    {"LineEnd", {press(8), key(Qt::Key_End, kShift)}, "three"},
    {"Down", {key(Qt::Key_Down, kShift, 2)}, "one two three\n"},
    {"DownAndUp", {press(14), key(Qt::Key_Down, kShift), key(Qt::Key_Up, kShift, 2)}, "three\n"},
    {"DownOverAShortLine",
     {select(5, 5), key(Qt::Key_Down, kShift, 2)},
     "line\nx\nlong ",
     "long line\nx\nlong line",
     80},
    {"UpToALongWord", {select(12, 12), key(Qt::Key_Up, kShift)}, " bbbbbbbbb", "aa bbbbbbbbb", 80},
    {"ToTheEnd", {press(14), key(Qt::Key_End, kBoth)}, "four\nאחת שתיים"},
    {"ToTheStart", {press(3), key(Qt::Key_Home, kBoth)}, "one"},
    {"MenuCopy", {select(0, 3), menu(0), select(0, 0)}, "one"},
    {"MenuSelectAll", {menu(1)}, kText},
};
INSTANTIATE_TEST_SUITE_P(Host, ReadersInput, testing::ValuesIn(selectionRows), rowName);

TEST(TheLyrics, AreLaidOutAnewInAnotherFont) {
  LyricsRig rig(300);
  const auto heightAt = [&](double size) {
    rig.display("one\ntwo", size);
    return rig.view.layout().knownHeight();
  };
  const auto small = heightAt(12);
  EXPECT_GT(heightAt(24), small);
  EXPECT_EQ(heightAt(12), small);
}

TEST(TheLyrics, KeepTheirSelectionWhenTheyAreShownAgain) {
  LyricsRig rig(300);
  const auto* text = "one\u00a0two\r\nthree\u2028four";
  rig.display(text);
  rig.view.select(0, 3);
  rig.display(text);
  EXPECT_EQ(rig.view.selection().text(), "one");
  rig.display("other");
  EXPECT_TRUE(rig.view.selection().isEmpty());
}

}  // namespace
}  // namespace Corvella
