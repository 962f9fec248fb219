#include <memory>

#include <gtest/gtest.h>

#include "extension/SnapshotTaker.h"
#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSLevelIndicator.h"

namespace Corvella {
namespace {

TEST(ASnapshot, HoldsWhatChangedSinceTheLastOneAtItsPlaceInTheWidget) {
  const auto root = std::make_shared<NSView>(NSRect{{0, 0}, {320, 285}});
  const auto box = std::make_shared<NSView>(NSRect{{10, 20}, {100, 100}});
  const auto button = std::make_shared<NSButton>(NSRect{{3, 4}, {50, 24}});
  root->addSubview(box);
  box->addSubview(button);
  EXPECT_EQ(SnapshotTaker::takeChangedViews(*root).size(), 3U);
  EXPECT_TRUE(SnapshotTaker::takeChangedViews(*root).empty());

  button->setTitle("Play");
  const auto changed = SnapshotTaker::takeChangedViews(*root);
  ASSERT_EQ(changed.size(), 1U);
  EXPECT_EQ(changed[0].frame, (NSRect{{13, 24}, {50, 24}}));
  EXPECT_EQ(std::get<ButtonContent>(changed[0].content).title, "Play");
  button->setTitle("Play");
  EXPECT_TRUE(SnapshotTaker::takeChangedViews(*root).empty());
}

TEST(ASnapshotOfStars, TakesTheirLookFromTheCell) {
  const auto stars = std::make_shared<NSLevelIndicator>();
  stars->setMaxValue(5);
  stars->setIntegerValue(3);
  stars->setCell(NSLevelIndicatorCell::initWithLevelIndicatorStyle(NSRatingLevelIndicatorStyle));
  SnapshotTaker::takeChangedViews(*stars);
  stars->cell()->setHighlighted(true);
  const auto changed = SnapshotTaker::takeChangedViews(*stars);
  ASSERT_EQ(changed.size(), 1U);
  const auto content = std::get<RatingContent>(changed[0].content);
  EXPECT_EQ(content.stars, 3);
  EXPECT_EQ(content.mostStars, 5);
  EXPECT_TRUE(content.highlighted);
  EXPECT_FALSE(content.editable);
}

}  // namespace
}  // namespace Corvella
