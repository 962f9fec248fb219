#include <QFontMetrics>
#include <QImage>
#include <QString>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/controls/TextLabel.h"
#include "host/program/ViewPicture.h"
#include "tests/support/RowName.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TodayViewRig.h"

namespace Corvella {
namespace {

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
  TodayViewRig rig(trackCalled(GetParam().title));
  openUnseen(rig.view, true);
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
  EXPECT_EQ(rig.find<LyricsView>("lyricsView")->layout().knownHeight(),
            rig.find("lyricsView")->height());

  const TemporaryFolder folder;
  const auto file = (folder.path() / "view.png").string();
  for (const double scale : {1.0, 1.5, 2.0}) {
    writePicture(rig.view, file, scale);
    EXPECT_EQ(QImage(QString::fromStdString(file)).size(),
              (QSizeF(rig.window.size()) * scale).toSize());
  }
}

std::string repeated(const char* part, int times) {
  return QString(part).repeated(times).toStdString();
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
