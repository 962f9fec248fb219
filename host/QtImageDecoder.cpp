#include "host/QtImageDecoder.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageIOHandler>
#include <QImageReader>
#include <QSize>
#include <cstring>

namespace Corvella {

namespace {

QSize withinBitmapLimits(QSize size) {
  constexpr QSize largest(QtImageDecoder::kLargestBitmap, QtImageDecoder::kLargestBitmap);
  const bool fits = size.width() <= largest.width() && size.height() <= largest.height();
  return fits ? size : size.scaled(largest, Qt::KeepAspectRatio).expandedTo({1, 1});
}

NSBitmapImageRep bitmapOf(const QImage& image) {
  NSBitmapImageRep bitmap{.pixelsWide = image.width(), .pixelsHigh = image.height(), .pixels = {}};
  const auto width = static_cast<std::size_t>(image.width());
  bitmap.pixels.resize(width * static_cast<std::size_t>(image.height()));
  for (int y = 0; y < image.height(); ++y) {
    std::memcpy(bitmap.pixels.data() + width * static_cast<std::size_t>(y), image.constScanLine(y),
                width * sizeof(std::uint32_t));
  }
  return bitmap;
}

}  // namespace

std::optional<NSDecodedImage> QtImageDecoder::decode(std::span<const std::byte> bytes) const {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): Qt's bytes are chars.
  const auto* const chars = reinterpret_cast<const char*>(bytes.data());
  QByteArray data = QByteArray::fromRawData(chars, static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&data);
  buffer.open(QIODevice::ReadOnly);

  QImageReader reader(&buffer);
  reader.setDecideFormatFromContent(true);
  reader.setAutoTransform(true);
  const QSize stored = reader.size();
  if (stored.isEmpty() || 1LL * stored.width() * stored.height() > kMostPixels) return std::nullopt;

  reader.setScaledSize(withinBitmapLimits(stored));
  const QImage image = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return std::nullopt;

  const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
  return NSDecodedImage{.width = turned ? stored.height() : stored.width(),
                        .height = turned ? stored.width() : stored.height(),
                        .bitmap = bitmapOf(image)};
}

}  // namespace Corvella
