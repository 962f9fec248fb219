#include "host/WidgetClasses.h"

#include "controls/LyricsTextView.h"
#include "controls/SongRatingLevelIndicatorCell.h"
#include "platform/foundation/NSClass.h"

namespace Corvella {

void registerWidgetClasses(NSClassRegistry& classes) {
  classes.registerClass("Corvella.SongRatingLevelIndicatorCell",
                        NSClass::decoded<SongRatingLevelIndicatorCell>());
  classes.registerClass("Corvella.LyricsTextView", NSClass::decoded<LyricsTextView>());
}

}  // namespace Corvella
