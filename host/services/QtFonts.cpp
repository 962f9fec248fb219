#include "host/services/QtFonts.h"

#include <QString>
#include <algorithm>
#include <cmath>

namespace Corvella {

namespace {

constexpr int kDefaultSize = 13;
constexpr double kLargestSize = 1000;

}  // namespace

QFont qtFont(const NSFont* font) {
  QFont result;
  if (font == nullptr) {
    result.setPixelSize(kDefaultSize);
    return result;
  }
  if (!font->familyName().empty()) result.setFamily(QString::fromStdString(font->familyName()));
  result.setPixelSize(
      std::max(1, static_cast<int>(std::lround(std::min(font->pointSize(), kLargestSize)))));
  result.setBold(font->isBold());
  return result;
}

}  // namespace Corvella
