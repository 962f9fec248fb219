#include "platform/appkit/NSLevelIndicatorCell.h"

std::shared_ptr<NSLevelIndicatorCell> NSLevelIndicatorCell::initWithLevelIndicatorStyle(
    NSLevelIndicatorStyle style) {
  auto cell = std::make_shared<NSLevelIndicatorCell>(Allocated());
  return cell->initialiseWithStyle(style) ? cell : nullptr;
}

NSLevelIndicatorCell::NSLevelIndicatorCell(const NSCoder& coder)
    : levelIndicatorStyle_(
          coder.decodeCaseForKey("levelIndicatorStyle",
                                 {{"relevancy", NSRelevancyLevelIndicatorStyle},
                                  {"continuousCapacity", NSContinuousCapacityLevelIndicatorStyle},
                                  {"discreteCapacity", NSDiscreteCapacityLevelIndicatorStyle},
                                  {"rating", NSRatingLevelIndicatorStyle}},
                                 NSRelevancyLevelIndicatorStyle)),
      focusRingType_(coder.decodeCaseForKey("focusRingType",
                                            {{"default", NSFocusRingTypeDefault},
                                             {"none", NSFocusRingTypeNone},
                                             {"exterior", NSFocusRingTypeExterior}},
                                            NSFocusRingTypeDefault)),
      highlighted_(coder.decodeBoolForKey("highlighted")),
      editable_(coder.decodeBoolForKey("editable")),
      continuous_(coder.decodeBoolForKey("continuous")) {}

bool NSLevelIndicatorCell::initialiseWithStyle(NSLevelIndicatorStyle style) {
  if (style > NSRatingLevelIndicatorStyle) return false;
  levelIndicatorStyle_ = style;
  return true;
}
