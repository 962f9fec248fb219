#include "host/services/FontconfigFinder.h"

#include <string>

#include "host/services/Fontconfig.h"

namespace Corvella {

bool FontconfigFinder::hasFamily(std::string_view family) const {
  const std::string name(family);
  const Fontconfig::Pattern pattern(FcPatternCreate());
  // Fontconfig has unsigned characters.
  FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(name.c_str()));
  const Fontconfig::ObjectSet nothing(FcObjectSetCreate());
  const Fontconfig::FontSet fonts(FcFontList(nullptr, pattern.get(), nothing.get()));
  return fonts && fonts->nfont > 0;
}

}  // namespace Corvella
