#include "host/FontconfigFinder.h"

#include <memory>
#include <string>

#include <fontconfig/fontconfig.h>

namespace Corvella {

namespace {

template <auto Destroy>
struct Destroyer {
  template <typename Object>
  void operator()(Object* object) const {
    Destroy(object);
  }
};
using Pattern = std::unique_ptr<FcPattern, Destroyer<FcPatternDestroy>>;
using FontSet = std::unique_ptr<FcFontSet, Destroyer<FcFontSetDestroy>>;
using ObjectSet = std::unique_ptr<FcObjectSet, Destroyer<FcObjectSetDestroy>>;

}  // namespace

bool FontconfigFinder::hasFamily(std::string_view family) const {
  const std::string name(family);
  const Pattern pattern(FcPatternCreate());
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): its characters are unsigned.
  FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(name.c_str()));
  const ObjectSet nothing(FcObjectSetCreate());
  const FontSet fonts(FcFontList(nullptr, pattern.get(), nothing.get()));
  return fonts && fonts->nfont > 0;
}

}  // namespace Corvella
