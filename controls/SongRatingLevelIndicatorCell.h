#pragma once

#include <memory>
#include <string_view>

#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSLevelIndicatorCell.h"
#include "platform/foundation/NSCoder.h"

namespace Corvella {

/// The cell of the star rating. Once its highlight has been written it stays highlighted, whatever
/// the platform or the widget writes. Owned by its level indicator. Lives on the main queue.
class SongRatingLevelIndicatorCell : public NSLevelIndicatorCell {
 public:
  /// A highlighted, editable and continuous cell of the rating style, whatever style is asked for,
  /// without a focus ring; null when the platform gives no cell.
  static std::shared_ptr<SongRatingLevelIndicatorCell> initWithLevelIndicatorStyle(
      NSLevelIndicatorStyle style);

  /// A cell with the settings of the interface file and no others; it is highlighted by the first
  /// write only.
  explicit SongRatingLevelIndicatorCell(const NSCoder& coder);

  /// These initialisers are not supported: each says so on standard error and stops the program.
  [[noreturn]] static std::shared_ptr<SongRatingLevelIndicatorCell> initTextCell(
      std::string_view text);
  [[noreturn]] static std::shared_ptr<SongRatingLevelIndicatorCell> initImageCell(
      const std::shared_ptr<const NSImage>& image);
  [[noreturn]] static std::shared_ptr<SongRatingLevelIndicatorCell> init();

  /// Leaves the cell highlighted, also when `highlighted` is false.
  void setHighlighted(bool highlighted) override;

  /// Called by `initWithLevelIndicatorStyle`, which initialises the cell afterwards.
  explicit SongRatingLevelIndicatorCell(Allocated allocated);
};

}  // namespace Corvella
