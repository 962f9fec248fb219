#include "host/FontPreload.h"

#include <fontconfig/fontconfig.h>

namespace Corvella {

FontPreload::FontPreload() : thread_([] { FcInit(); }) {}

FontPreload::~FontPreload() {
  thread_.join();
}

}  // namespace Corvella
