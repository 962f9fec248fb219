#include <QFontMetrics>
#include <QImage>
#include <QString>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/program/ViewPicture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TodayViewRig.h"

namespace Corvella {
namespace {

void expectInTheirPlaces(const WidgetPanel& panel) {
  const auto controls = panel.findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
  ASSERT_EQ(controls.size(), 12);
  for (const auto* control : controls) {
    EXPECT_TRUE(panel.rect().contains(control->geometry())) << control->objectName().toStdString();
    for (const auto* other : controls) {
      EXPECT_TRUE(control == other || !control->geometry().intersects(other->geometry()));
    }
  }
  for (const auto* label : panel.findChildren<TextLabel*>()) {
    const auto shown = label->shownText();
    EXPECT_LE(QFontMetrics(label->font()).horizontalAdvance(shown), label->width());
    EXPECT_EQ(shown != label->text(), !label->toolTip().isEmpty());
  }
}

TEST(ASnapshotOfAHostileTrack, HasEverythingInItsPlaceAtEveryScale) {
  const auto times = [](int count, const char* part) { return QString(part).repeated(count); };
  const std::vector<std::pair<const char*, QString>> titles{
      {"empty", ""},
      {"one long word", times(500, "Unbreakable")},
      {"long Arabic", "قمرٌ على الشرفةِ يسقي الياسمين ويعدُّ على مهلٍ خُطى العائدين"},
      {"short Hebrew", "שיר"},
      {"emoji", times(40, "👩‍👩‍👧‍👦🎉")},
      {"a megabyte", times(30'000, "قمر 👩‍👩‍👧‍👦 ")},
      {"combining marks", "Z" + times(60, "\u0335\u0489\u0301")},
      {"lines and markup", "two\nlines\tand <b>markup</b> & more"},
      {"Japanese", "雨の日だけ ひらく図書館 傘のかたちの"},
      {"direction override", "\u202e reversed " + times(9, "left and right ")}};
  const TemporaryFolder folder;
  const auto file = (folder.path() / "view.png").string();
  for (const auto& [name, title] : titles) {
    SCOPED_TRACE(name);
    auto track = embeddedTracks()[0];
    track.track.name = track.track.artist = title.toStdString();
    TodayViewRig rig({track});
    openUnseen(rig.view, true);
    expectInTheirPlaces(rig.window.panel());
    auto& lyrics = *rig.find<LyricsView>("lyricsView");
    EXPECT_EQ(lyrics.layout().knownHeight(), lyrics.height());
    for (const double scale : {1.0, 1.5, 2.0}) {
      writePicture(rig.view, file, scale);
      const auto size = (QSizeF(rig.window.size()) * scale).toSize();
      EXPECT_EQ(QImage(QString::fromStdString(file)).size(), size);
    }
  }
}

}  // namespace
}  // namespace Corvella
