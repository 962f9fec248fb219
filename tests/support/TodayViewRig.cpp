#include "tests/support/TodayViewRig.h"

#include <QTest>
#include <utility>

#include <gtest/gtest.h>

#include "host/TextLabel.h"

namespace Corvella {

TodayViewRig::TodayViewRig(std::vector<EmbeddedTrack> tracks)
    : player(parts_.clock, parts_.bundle, std::move(tracks)) {}

void TodayViewRig::open() {
  view.open();
  ASSERT_TRUE(waitFor([this] {
    return find<TextLabel>("songTitle") != nullptr && text("songTitle") != "No Song Playing";
  }));
}

LyricsText* TodayViewRig::unfold() {
  press(Qt::Key_L);
  LyricsText* lyrics = nullptr;
  waitFor([&] {
    lyrics = find<LyricsText>("lyricsView");
    return lyrics != nullptr && lyrics->height() > 0;
  });
  return lyrics;
}

void TodayViewRig::press(Qt::Key key) {
  QTest::keyClick(&window, key);
}

std::string TodayViewRig::text(const char* label) const {
  return find<TextLabel>(label)->text().toStdString();
}

bool TodayViewRig::waitFor(const std::function<bool()>& condition) {
  constexpr int kMilliseconds = 20'000;
  return QTest::qWaitFor(condition, kMilliseconds);
}

}  // namespace Corvella
