// Pictures of any format: each becomes a bitmap within the decoder's own limits, or none.

#include <QGuiApplication>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "fuzz/Check.h"
#include "host/services/QtImageDecoder.h"

namespace Corvella {
namespace {

/// Whether no colour is stronger than the pixel is opaque, as it is in premultiplied pixels.
bool isPremultiplied(std::uint32_t pixel) {
  const auto alpha = pixel >> 24U;
  return (pixel >> 16U & 0xffU) <= alpha && (pixel >> 8U & 0xffU) <= alpha &&
         (pixel & 0xffU) <= alpha;
}

void checkPicture(std::span<const std::byte> file) {
  constexpr auto kLargest = QtImageDecoder::kLargestBitmap;
  const auto picture = QtImageDecoder().decode(file);
  if (!picture) return;
  const auto& [wide, high, pixels] = picture->bitmap;
  check(picture->width > 0 && picture->height > 0, "a picture has a size");
  check(wide > 0 && wide <= kLargest && high > 0 && high <= kLargest, "a bitmap is not large");
  check(wide <= picture->width && high <= picture->height, "no picture is enlarged");
  check(pixels.size() == static_cast<std::size_t>(wide) * static_cast<std::size_t>(high),
        "a bitmap has all of its pixels");
  check(std::ranges::all_of(pixels, isPremultiplied), "pixels are premultiplied");
}

}  // namespace
}  // namespace Corvella

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  // Qt's complaints about what is broken would fill the screen.
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  static const QGuiApplication application(*argc, *argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Corvella::checkPicture(std::as_bytes(std::span(data, size)));
  return 0;
}
