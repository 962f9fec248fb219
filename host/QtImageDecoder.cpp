#include "host/QtImageDecoder.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageIOHandler>
#include <QImageReader>
#include <QSize>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

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

/// Whether a JPEG file's last scan has no end marker behind it. Qt fills up what is missing with
/// grey.
bool isCutJpeg(std::string_view file) {
  if (!file.starts_with("\xff\xd8")) return false;
  const auto scan = file.rfind("\xff\xda");
  return scan == std::string_view::npos || file.find("\xff\xd9", scan) == std::string_view::npos;
}

/// Whether a BMP file is shorter than it says in its header, from byte 2 on, the lowest byte first.
bool isCutBmp(std::string_view file) {
  if (!file.starts_with("BM") || file.size() < 6) return false;
  std::uint32_t size = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    size |= std::uint32_t{static_cast<unsigned char>(file[2 + i])} << (8 * i);
  }
  return size > file.size();
}

/// The format of the usual files, by their first bytes; empty for others. To find it out by itself,
/// Qt would load all of its plugins.
QByteArray formatOf(std::string_view file) {
  if (file.starts_with("\x89PNG\r\n\x1a\n")) return "png";
  return file.starts_with("\xff\xd8\xff") ? "jpeg" : QByteArray();
}

}  // namespace

std::optional<NSDecodedImage> QtImageDecoder::decode(std::span<const std::byte> bytes) const {
  // Qt's bytes are chars.
  const auto* const chars = reinterpret_cast<const char*>(bytes.data());
  const std::string_view file(chars, bytes.size());
  if (isCutJpeg(file) || isCutBmp(file)) return std::nullopt;

  QByteArray data = QByteArray::fromRawData(chars, static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&data);
  buffer.open(QIODevice::ReadOnly);

  const auto format = formatOf(file);
  QImageReader reader(&buffer, format);
  reader.setAutoDetectImageFormat(format.isEmpty());
  reader.setDecideFormatFromContent(format.isEmpty());
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
