#include <map>
#include <memory>
#include <string>

#include <gmock/gmock.h>

#include "controls/LyricsTextView.h"
#include "controls/SongRatingLevelIndicatorCell.h"
#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSNibLoader.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/foundation/NSClassRegistry.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"
#include "tests/support/RecordingOwner.h"

namespace Corvella {
namespace {

double right(NSRect rect) {
  return rect.origin.x + rect.size.width;
}
double top(NSRect rect) {
  return rect.origin.y + rect.size.height;
}

class TheWidgetsInterfaceFile : public testing::Test {
 protected:
  TheWidgetsInterfaceFile() {
    classes_.registerClass("Corvella.TodayViewController",
                           NSClass::initialised<RecordingOwner>(nullptr));
    classes_.registerClass("Corvella.LyricsTextView", NSClass::decoded<LyricsTextView>());
    classes_.registerClass("Corvella.SongRatingLevelIndicatorCell",
                           NSClass::decoded<SongRatingLevelIndicatorCell>());
    root_ = owner_.view();
  }

  template <class Class>
  Class& outlet(const std::string& name) const {
    const auto object = owner_.outlet<Class>(name);
    if (!object) throw std::runtime_error("no such object in the outlet " + name);
    return *object;
  }

  /// How far below the top of the root view each of its views begins and ends.
  std::map<NSView*, std::pair<double, double>> distancesFromTheTop() const {
    std::map<NSView*, std::pair<double, double>> distances;
    for (const auto& view : root_->subviews()) {
      const double height = root_->frame().size.height;
      distances[view.get()] = {height - top(view->frame()), height - view->frame().origin.y};
    }
    return distances;
  }

  FixedTextMeasurer measurer_;
  FixedFontFinder fonts_;
  NSClassRegistry classes_;
  NSBundle bundle_{CORVELLA_RESOURCES};
  NSNibLoader loader_{bundle_, {classes_, measurer_, fonts_}};
  RecordingOwner owner_{loader_, "TodayViewController", nullptr};
  std::shared_ptr<NSView> root_;
};

TEST_F(TheWidgetsInterfaceFile, ConnectsTenOutletsToControlsThatShowSensibleThings) {
  EXPECT_EQ(owner_.outlets.size(), 11U);  // The ten, and the view.
  EXPECT_EQ(outlet<NSImageView>("albumArtView").image(), nullptr);
  EXPECT_EQ(outlet<NSTextField>("songTitle").stringValue(), "No Song Playing");
  EXPECT_EQ(outlet<NSTextField>("songArtistAndAlbum").stringValue(), "N/A - N/A");
  EXPECT_EQ(outlet<NSTextField>("songTitle").lineBreakMode(), NSLineBreakByTruncatingTail);
  EXPECT_EQ(outlet<NSTextField>("songArtistAndAlbum").lineBreakMode(), NSLineBreakByTruncatingTail);
  std::map<std::string, std::string> titles;
  for (const auto& view : root_->subviews()) {
    const auto* const button = dynamic_cast<const NSButton*>(view.get());
    if (button) titles[button->identifier()] = button->title();
  }
  EXPECT_THAT(titles, testing::ElementsAre(testing::Pair("nextButton", "\u25B6\u25B6"),
                                           testing::Pair("playButton", "\u25B6"),
                                           testing::Pair("previousButton", "\u25C0\u25C0"),
                                           testing::Pair("toggleLyricsButton", "Show Lyrics")));
  EXPECT_EQ(outlet<LyricsTextView>("lyricsView").string(), "");
  EXPECT_TRUE(outlet<LyricsTextView>("lyricsView").textHeight());
}

TEST_F(TheWidgetsInterfaceFile, SetsItsControlsUpForUse) {
  const auto& rating = outlet<NSLevelIndicator>("songRatingIndicator");
  EXPECT_EQ(rating.cell(), owner_.outlet<SongRatingLevelIndicatorCell>("songRatingCell"));
  EXPECT_EQ(rating.cell()->levelIndicatorStyle(), NSRatingLevelIndicatorStyle);
  EXPECT_EQ(rating.cell()->focusRingType(), NSFocusRingTypeNone);
  EXPECT_TRUE(rating.cell()->isEditable());
  EXPECT_TRUE(rating.cell()->isContinuous());

  EXPECT_TRUE(outlet<NSSlider>("soundVolume").isContinuous());
  EXPECT_EQ(outlet<NSProgressIndicator>("progressBar").minValue(), 0);
  EXPECT_EQ(outlet<NSProgressIndicator>("progressBar").maxValue(), 100);
}

TEST_F(TheWidgetsInterfaceFile, LaysItsViewsOutWithinTheMargins) {
  EXPECT_EQ(root_->frame(), NSMakeRect(0, 0, 320, 285));
  for (const double width : {320.0, 400.0}) {
    root_->setFrameSize({.width = width, .height = 405});
    for (const auto& view : root_->subviews()) {
      const NSRect frame = view->frame();
      EXPECT_GE(frame.origin.x, 16) << view->accessibilityLabel();
      EXPECT_LE(right(frame), width - 16) << view->accessibilityLabel();
      EXPECT_LE(top(frame), 405 - 16) << view->accessibilityLabel();
      EXPECT_GE(frame.origin.y, 8) << view->accessibilityLabel();
    }
  }
}

TEST_F(TheWidgetsInterfaceFile, GivesAllTheHeightThatItGrowsByToTheLyrics) {
  auto& lyrics = outlet<LyricsTextView>("lyricsView");
  const auto folded = distancesFromTheTop();
  EXPECT_EQ(lyrics.frame().size.height, 0);

  root_->setFrameSize({.width = 320, .height = 285 + 120});
  EXPECT_EQ(lyrics.frame().size, (NSSize{.width = 288, .height = 120}));
  auto unfolded = distancesFromTheTop();
  unfolded[&lyrics].second -= 120;
  EXPECT_EQ(unfolded, folded);

  root_->setFrameSize({.width = 320, .height = 285});
  EXPECT_EQ(distancesFromTheTop(), folded);
}

TEST_F(TheWidgetsInterfaceFile, NamesEveryViewThatDoesNotNameItselfByItsText) {
  for (const auto& view : root_->subviews()) {
    const auto* const field = dynamic_cast<const NSTextField*>(view.get());
    const bool isItsOwnName = view == owner_.outlet<NSView>("toggleLyricsButton") ||
                              (field && field->stringValue() == "Volume");
    EXPECT_NE(view->accessibilityLabel().empty(), !isItsOwnName);
  }
  EXPECT_EQ(outlet<NSView>("soundVolume").accessibilityLabel(), "Volume");
}

}  // namespace
}  // namespace Corvella
