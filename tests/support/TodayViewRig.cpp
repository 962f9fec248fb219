#include "tests/support/TodayViewRig.h"

#include <QSignalSpy>
#include <QTest>
#include <chrono>
#include <utility>

#include <gtest/gtest.h>

#include "host/controls/TextLabel.h"
#include "tests/support/Eventually.h"

namespace Corvella {

namespace {

/// The widget whose scripts go through a gate, on a player that is what the test says.
class SessionBehindGate final : public WidgetSession {
 public:
  SessionBehindGate(const HostServices& services, TodayViewRig& rig, WidgetHost& host)
      : rig_(rig), extension_(services, rig.gate, host) {}

  ExtensionThread& extension() override { return extension_; }
  ScriptRunner& scripts() override { return rig_.gate; }
  PlayerDescription player() const override { return rig_.description; }
  std::vector<PlayerDescription> players() const override { return {rig_.description}; }
  void raisePlayer() override { ++rig_.raises; }

 private:
  TodayViewRig& rig_;
  ExtensionThread extension_;
};

}  // namespace

std::unique_ptr<WidgetSession> TodayViewRig::start(WidgetHost& host,
                                                   PlayerNewsListener& newListener) {
  ++starts;
  listener = &newListener;
  return std::make_unique<SessionBehindGate>(parts_.services(), *this, host);
}

TodayViewRig::TodayViewRig(std::vector<EmbeddedTrack> tracks)
    : player(parts_.clock, parts_.bundle, std::move(tracks)) {}

void TodayViewRig::open() {
  view.open();
  ASSERT_TRUE(waitFor([this] {
    return find<TextLabel>("songTitle") != nullptr && text("songTitle") != "No Song Playing";
  }));
}

LyricsView* TodayViewRig::unfold() {
  press(Qt::Key_L);
  LyricsView* lyrics = nullptr;
  waitFor([&] {
    lyrics = find<LyricsView>("lyricsView");
    return lyrics != nullptr && lyrics->height() > 0;
  });
  return lyrics;
}

void TodayViewRig::press(Qt::Key key) {
  QTest::keyClick(&window, key);
}

void TodayViewRig::settle() {
  const QSignalSpy settled(&view, &TodayView::settled);
  view.settle();
  ASSERT_TRUE(waitFor([&] { return settled.count() > 0; }));
}

std::string TodayViewRig::text(const char* label) const {
  return find<TextLabel>(label)->text().toStdString();
}

bool TodayViewRig::waitFor(const std::function<bool()>& condition) {
  return QTest::qWaitFor(condition, longestWait / std::chrono::milliseconds{1});
}

}  // namespace Corvella
