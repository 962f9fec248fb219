#include "host/FontPreload.h"

#include <QFontDatabase>
#include <utility>

#include "host/Fontconfig.h"

namespace Corvella {

namespace {

QString findSansSerif() {
  const Fontconfig::Pattern wanted(
      FcPatternBuild(nullptr, FC_FAMILY, FcTypeString, "sans-serif", nullptr));
  FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
  FcDefaultSubstitute(wanted.get());
  auto result = FcResultNoMatch;
  const Fontconfig::Pattern found(FcFontMatch(nullptr, wanted.get(), &result));
  FcChar8* family = nullptr;
  if (!found || FcPatternGetString(found.get(), FC_FAMILY, 0, &family) != FcResultMatch) return {};
  return QString::fromUtf8(reinterpret_cast<const char*>(family));
}

}  // namespace

FontPreload::FontPreload() {
  std::promise<QString> sansSerif;
  sansSerif_ = sansSerif.get_future();
  thread_ = std::thread(
      [sansSerif = std::move(sansSerif), application = application_.get_future()]() mutable {
        sansSerif.set_value(findSansSerif());
        if (application.get()) static_cast<void>(QFontDatabase::hasFamily({}));
      });
}

FontPreload::~FontPreload() {
  finish();
}

void FontPreload::listFonts() {
  isTold_ = true;
  application_.set_value(true);
}

void FontPreload::finish() {
  if (!std::exchange(isTold_, true)) application_.set_value(false);
  if (thread_.joinable()) thread_.join();
}

}  // namespace Corvella
