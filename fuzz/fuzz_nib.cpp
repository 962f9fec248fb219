#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>

#include "controls/LyricsTextView.h"
#include "controls/SongRatingLevelIndicatorCell.h"
#include "platform/appkit/NSNib.h"
#include "platform/appkit/NSNibLoader.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSClassRegistry.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"
#include "tests/support/RecordingOwner.h"

/// Loads any bytes as an interface file and, where they are one, resizes the view. Nothing but a
/// `std::runtime_error` may come of it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  NSClassRegistry classes;
  classes.registerClass("Corvella.TodayViewController",
                        NSClass::initialised<RecordingOwner>(nullptr));
  classes.registerClass("Corvella.LyricsTextView", NSClass::decoded<Corvella::LyricsTextView>());
  classes.registerClass("Corvella.SongRatingLevelIndicatorCell",
                        NSClass::decoded<Corvella::SongRatingLevelIndicatorCell>());
  const FixedTextMeasurer measurer;
  const FixedFontFinder fonts;
  const NSNibServices services{classes, measurer, fonts};
  const NSBundle bundle("");
  const NSNibLoader loader(bundle, services);
  RecordingOwner owner(loader);
  try {
    const NSNib nib(std::as_bytes(std::span(data, size)), "Fuzz.xib");
    nib.instantiateWithOwner(owner, services);
    if (owner.isViewLoaded()) owner.view()->setFrameSize({.width = 400, .height = 500});
  } catch (const std::runtime_error&) {
    return 0;  // What is expected of most bytes.
  }
  return 0;
}
