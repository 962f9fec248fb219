#pragma once

#include <memory>

#include <fontconfig/fontconfig.h>

/// Smart pointers that own fontconfig's objects and release each in its own way.
namespace Corvella::Fontconfig {

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

}  // namespace Corvella::Fontconfig
