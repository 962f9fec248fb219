#include "controls/SongRatingLevelIndicatorCell.h"

#include <cstdio>
#include <cstdlib>

namespace Corvella {

namespace {

[[noreturn]] void stopAtUnimplementedInitialiser(const char* initialiser) {
  std::fprintf(stderr,
               "Use of unimplemented initializer '%s' for class "
               "'Corvella.SongRatingLevelIndicatorCell'\n",
               initialiser);
  std::abort();
}

}  // namespace

std::shared_ptr<SongRatingLevelIndicatorCell>
SongRatingLevelIndicatorCell::initWithLevelIndicatorStyle(NSLevelIndicatorStyle) {
  auto cell = std::make_shared<SongRatingLevelIndicatorCell>(Allocated());
  if (!cell->initialiseWithStyle(NSRatingLevelIndicatorStyle)) return nullptr;
  cell->setHighlighted(true);
  cell->setEditable(true);
  cell->setContinuous(true);
  cell->setFocusRingType(NSFocusRingTypeNone);
  return cell;
}

SongRatingLevelIndicatorCell::SongRatingLevelIndicatorCell(const NSCoder& coder)
    : NSLevelIndicatorCell(coder) {}

SongRatingLevelIndicatorCell::SongRatingLevelIndicatorCell(Allocated allocated)
    : NSLevelIndicatorCell(allocated) {}

std::shared_ptr<SongRatingLevelIndicatorCell> SongRatingLevelIndicatorCell::initTextCell(
    std::string_view) {
  stopAtUnimplementedInitialiser("init(textCell:)");
}

std::shared_ptr<SongRatingLevelIndicatorCell> SongRatingLevelIndicatorCell::initImageCell(
    const std::shared_ptr<const NSImage>&) {
  stopAtUnimplementedInitialiser("init(imageCell:)");
}

std::shared_ptr<SongRatingLevelIndicatorCell> SongRatingLevelIndicatorCell::init() {
  stopAtUnimplementedInitialiser("init()");
}

void SongRatingLevelIndicatorCell::setHighlighted(bool highlighted) {
  NSLevelIndicatorCell::setHighlighted(highlighted);
  NSLevelIndicatorCell::setHighlighted(true);
}

}  // namespace Corvella
