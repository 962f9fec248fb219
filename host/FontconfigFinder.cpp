#include "host/QtFontFinder.h"

#include <QFontDatabase>
#include <QString>

namespace Corvella {

bool QtFontFinder::hasFamily(std::string_view family) const {
  return QFontDatabase::hasFamily(
      QString::fromUtf8(family.data(), static_cast<qsizetype>(family.size())));
}

}  // namespace Corvella
