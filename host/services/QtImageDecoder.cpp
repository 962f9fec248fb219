#include "host/services/QtImageDecoder.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageIOHandler>
#include <QImageReader>
#include <QSize>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include <png.h>

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

/// Whether a JPEG file's last scan has no end marker behind it. Qt would draw
/// what is missing in grey.
bool isCutJpeg(std::string_view file) {
  if (!file.starts_with("\xff\xd8")) return false;
  const auto scan = file.rfind("\xff\xda");
  return scan == std::string_view::npos || file.find("\xff\xd9", scan) == std::string_view::npos;
}

/// The parts of a JPEG file that say how much work it is.
struct JpegWork {
  int scans = 0;
  bool inRows = true;  ///< Its rows follow each other, so that no more than a few are in memory.
};

/// Goes through the markers of a JPEG file, each 0xff and a number, and over the segments that they
/// begin: a segment may hold another picture, such as a small one for lists. ITU-T T.81, annex B.
JpegWork workOfJpeg(std::string_view file) {
  constexpr unsigned char kEndOfImage = 0xd9;
  constexpr unsigned char kStartOfScan = 0xda;
  const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(file[at]); };
  // Numbers without a segment: escaped data, private use, restarts and the start of an image.
  const auto standsAlone = [](unsigned char marker) {
    return marker <= 0x01 || (marker >= 0xd0 && marker <= 0xd8);
  };
  // The frames are 0xc0 to 0xcf, but for three tables among them; the first two are read in rows.
  const auto isOtherFrame = [](unsigned char marker) {
    return marker >= 0xc2 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
  };
  JpegWork work;
  auto at = file.find('\xff');
  while (at < file.size() && at + 3 < file.size()) {
    const auto marker = byteAt(at + 1);
    if (marker == kEndOfImage) break;
    if (marker == kStartOfScan) ++work.scans;
    if (isOtherFrame(marker)) work.inRows = false;
    const auto length = standsAlone(marker) ? 0U : byteAt(at + 2) * 256U + byteAt(at + 3);
    at = file.find('\xff', at + (marker == 0xff ? 1U : 2U + length));
  }
  // A picture whose colours come one after the other is kept whole until the last of them.
  if (work.scans > 1) work.inRows = false;
  return work;
}

/// Whether a BMP file is shorter than its header says, in four bytes from byte 2 on, the lowest
/// first.
bool isCutBmp(std::string_view file) {
  if (!file.starts_with("BM") || file.size() < 6) return false;
  std::uint32_t size = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    size |= std::uint32_t{static_cast<unsigned char>(file[2 + i])} << (8 * i);
  }
  return size > file.size();
}

bool isPng(std::string_view file) {
  return file.starts_with("\x89PNG\r\n\x1a\n");
}

/// The product of what a file gives as its width and height may be too large for any number.
bool isTooLarge(long long width, long long height,
                long long mostPixels = QtImageDecoder::kMostPixels) {
  return height > 0 && width > mostPixels / height;
}

/// Whether a PNG file has no end. libpng has all pixels before it comes to the mark there, and so
/// does not look for it.
bool isCutPng(std::string_view file) {
  return isPng(file) && file.rfind("IEND\xae\x42\x60\x82") == std::string_view::npos;
}

/// Whether a PNG file says that it has more pixels than these. PNG Specification, "IHDR Image
/// header": width and height are bytes 16 to 23.
bool saysPngIsLarger(std::string_view file, long long pixels) {
  if (!isPng(file) || file.size() < 29) return false;
  const auto number = [&](std::size_t at) {
    long long result = 0;
    for (const char c : file.substr(at, 4)) result = result << 8U | static_cast<unsigned char>(c);
    return result;
  };
  return isTooLarge(number(16), number(20), pixels);
}

/// Whether a PNG file has so many pixels that it must not be decoded as a whole, but has them in
/// rows, so that Qt makes them fewer while it reads: byte 28 is zero then.
bool isPngForRows(std::string_view file) {
  return saysPngIsLarger(file, QtImageDecoder::kMostPixels) && file[28] == '\0';
}

/// A PNG picture; null where the file is broken. Qt reads PNG files with libpng, too, but lets it
/// write its complaints to standard error, past Qt's message handler. The interface of libpng that
/// is used here keeps them to itself.
QImage decodedPng(std::string_view file) {
  png_image header{};
  header.version = PNG_IMAGE_VERSION;
  const auto release = [](png_image* image) { ::png_image_free(image); };
  const std::unique_ptr<png_image, decltype(release)> png(&header, release);
  if (::png_image_begin_read_from_memory(&header, file.data(), file.size()) == 0) return {};
  if (isTooLarge(header.width, header.height)) return {};

  header.format = PNG_FORMAT_RGBA;
  QImage image(static_cast<int>(header.width), static_cast<int>(header.height),
               QImage::Format_RGBA8888);
  if (image.isNull()) return {};
  const auto bytesOfARow = static_cast<png_int_32>(image.bytesPerLine());
  const bool isWhole =
      ::png_image_finish_read(&header, nullptr, image.bits(), bytesOfARow, nullptr) != 0;
  return isWhole ? image : QImage();
}

/// Qt's name for the format of a file; null where covers do not come in it.
QByteArray formatOf(std::string_view file) {
  constexpr std::size_t kLongestPrologue = 4096;
  if (file.starts_with("\xff\xd8\xff")) return "jpeg";
  if (isPng(file)) return "png";
  if (file.starts_with("GIF8")) return "gif";
  if (file.starts_with("BM")) return "bmp";
  if (file.starts_with("RIFF") && file.find("WEBP") == 8) return "webp";
  const auto isDrawing = file.substr(0, kLongestPrologue).find("<svg") != std::string_view::npos;
  return isDrawing ? "svg" : QByteArray();
}

int countOf(std::string_view part, std::string_view text) {
  int count = 0;
  for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

/// Whether a drawing refers to nothing but to its own parts. Qt opens any file that a drawing
/// names, and a picture inside of it may be a drawing, too. An entity may hide a reference, and so
/// may an encoding other than UTF-8.
bool isSelfContained(std::string_view drawing) {
  const auto references = countOf("href", drawing);
  const auto own = countOf("href=\"#", drawing) + countOf("href='#", drawing);
  const auto encodings = countOf("encoding", drawing);
  const auto plain = countOf("encoding=\"UTF-8\"", drawing) + countOf("encoding='UTF-8'", drawing) +
                     countOf("encoding=\"utf-8\"", drawing) + countOf("encoding='utf-8'", drawing);
  return references == own && encodings == plain && countOf("<!ENTITY", drawing) == 0 &&
         drawing.find('\0') == std::string_view::npos;
}

/// Whether a drawing has so many parts that to draw it takes too long. Parts that use others, which
/// use others, multiply; so each use doubles what the drawing is taken for.
bool isTooMuchToDraw(std::string_view drawing) {
  constexpr std::size_t kLargestDrawing = std::size_t{32} << 10U;
  constexpr std::size_t kLargestWithUses = 4 * kLargestDrawing;
  const auto uses = countOf("<use", drawing) + countOf(":use", drawing);
  return drawing.size() > kLargestDrawing || uses > 10 ||
         drawing.size() << static_cast<unsigned>(uses) > kLargestWithUses;
}

NSDecodedImage decodedImageOf(const QImage& image) {
  const auto size = withinBitmapLimits(image.size());
  return {.width = image.width(),
          .height = image.height(),
          .bitmap = bitmapOf(image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                 .convertToFormat(QImage::Format_ARGB32_Premultiplied))};
}

}  // namespace

std::optional<NSDecodedImage> QtImageDecoder::decode(std::span<const std::byte> bytes) const {
  // Qt takes bytes as characters.
  const auto* const chars = reinterpret_cast<const char*>(bytes.data());
  const std::string_view file(chars, bytes.size());
  const auto format = formatOf(file);
  const bool isDrawing = format == "svg";
  if (format.isEmpty()) return std::nullopt;
  if (isDrawing && (!isSelfContained(file) || isTooMuchToDraw(file))) return std::nullopt;
  if (isCutJpeg(file) || isCutBmp(file) || isCutPng(file)) return std::nullopt;
  // Before Qt's libpng could complain of such a file on standard error.
  if (saysPngIsLarger(file, kMostPixelsInRows)) return std::nullopt;
  const bool isLargePng = isPngForRows(file);
  if (isPng(file) && !isLargePng) {
    const auto image = decodedPng(file);
    return image.isNull() ? std::nullopt : std::optional(decodedImageOf(image));
  }

  QByteArray data = QByteArray::fromRawData(chars, static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&data);

  const auto work = format == "jpeg" ? workOfJpeg(file) : JpegWork{.scans = 1, .inRows = false};
  if (work.scans > kMostScans) return std::nullopt;
  QImageReader reader(&buffer, format);
  // To find out the format by itself, Qt would load all of its plugins.
  reader.setAutoDetectImageFormat(false);
  reader.setAutoTransform(true);
  const QSize stored = reader.size();
  const auto most = work.inRows || isLargePng ? kMostPixelsInRows : kMostPixels;
  if (stored.isEmpty()) return std::nullopt;
  // A drawing is drawn at whatever size is wanted.
  if (!isDrawing && isTooLarge(stored.width(), stored.height(), most)) return std::nullopt;
  if (!isDrawing &&
      isTooLarge(stored.width(), std::int64_t{stored.height()} * work.scans, kMostPixelsInScans)) {
    return std::nullopt;
  }

  reader.setScaledSize(withinBitmapLimits(stored));
  const QImage image = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return std::nullopt;

  const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
  return NSDecodedImage{.width = turned ? stored.height() : stored.width(),
                        .height = turned ? stored.width() : stored.height(),
                        .bitmap = bitmapOf(image)};
}

}  // namespace Corvella
