#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QDataStream>
#include <QImage>
#include <QtEndian>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <zlib.h>

#include "host/services/QtImageDecoder.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

std::optional<NSDecodedImage> decoded(const QByteArray& data) {
  return QtImageDecoder().decode(
      std::as_bytes(std::span(data.data(), static_cast<std::size_t>(data.size()))));
}

QByteArray encoded(int width, int height, const char* format,
                   QImage::Format pixels = QImage::Format_RGB32) {
  QImage image(width, height, pixels);
  image.fill(QColor(200, 30, 40));
  QByteArray data;
  QBuffer buffer(&data);
  buffer.open(QIODevice::WriteOnly);
  EXPECT_TRUE(image.save(&buffer, format));
  return data;
}

TEST(APicture, IsDecodedWhateverItsKind) {
  for (const auto* format : {"PNG", "JPEG", "BMP"}) {
    const auto picture = decoded(encoded(40, 30, format));
    ASSERT_TRUE(picture.has_value()) << format;
    EXPECT_EQ(picture->width, 40);
    EXPECT_EQ(picture->bitmap.pixelsHigh, 30);
    const QColor colour(picture->bitmap.pixels.at(40 * 30 - 1));
    EXPECT_NEAR(colour.red(), 200, 3) << format;
    EXPECT_NEAR(colour.blue(), 40, 3) << format;
  }
}

TEST(ALargePicture, KeepsItsSizeAndGetsASmallerBitmap) {
  for (const auto* format : {"PNG", "JPEG"}) {
    const auto picture = decoded(encoded(3000, 1500, format));
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(picture->width, 3000);
    EXPECT_EQ(picture->height, 1500);
    EXPECT_EQ(picture->bitmap.pixelsWide, 512);
    EXPECT_EQ(picture->bitmap.pixelsHigh, 256);
    EXPECT_EQ(decoded(encoded(5000, 1, format))->bitmap.pixelsHigh, 1);
  }
}

struct PngChunk {
  QByteArray name;
  QByteArray content;
};
using PngChunks = std::vector<PngChunk>;

constexpr qsizetype kPngSignature = 8;

PngChunks chunksOf(const QByteArray& png) {
  PngChunks chunks;
  for (auto at = kPngSignature; at < png.size();) {
    const auto length = qFromBigEndian<quint32>(png.data() + at);
    chunks.push_back({png.mid(at + 4, 4), png.mid(at + 8, length)});
    at += 12 + length;
  }
  return chunks;
}

/// A PNG file of these chunks, each with the right check sum.
QByteArray pngOf(const PngChunks& chunks) {
  auto png = encoded(1, 1, "PNG").left(kPngSignature);
  QDataStream stream(&png, QIODevice::Append);
  for (const auto& [name, content] : chunks) {
    const auto checked = (name + content).toStdString();
    stream << static_cast<quint32>(content.size());
    stream.writeRawData(checked.data(), static_cast<int>(checked.size()));
    const auto* const bytes = reinterpret_cast<const Bytef*>(checked.data());
    stream << static_cast<quint32>(::crc32(0, bytes, static_cast<uInt>(checked.size())));
  }
  return png;
}

struct BrokenRow {
  const char* name;
  QByteArray file;
};

std::vector<BrokenRow> brokenPictures() {
  const auto half = [](const char* format) {
    const auto whole = encoded(400, 300, format);
    return whole.left(whole.size() / 2);
  };
  const auto png = encoded(400, 300, "PNG");
  auto flipped = png;
  flipped[flipped.size() / 2] = static_cast<char>(~flipped[flipped.size() / 2]);
  std::vector<BrokenRow> rows{{"Empty", {}},
                              {"Text", "<html>not found</html>"},
                              {"HalfAPng", half("PNG")},
                              {"HalfAJpeg", half("JPEG")},
                              {"HalfABmp", half("BMP")},
                              {"PngWithoutItsLastByte", png.chopped(1)},
                              {"PngWithAWrongCheckSum", flipped},
                              // 30,008,484 pixels
                              {"HugePng", encoded(5'478, 5'478, "PNG", QImage::Format_Mono)},
                              {"HugeBmp", encoded(5'478, 5'478, "BMP", QImage::Format_Mono)}};

  // These have the right check sums, and content that cannot be.
  const auto add = [&](const char* name, const std::function<void(PngChunks&)>& change) {
    auto chunks = chunksOf(png);
    change(chunks);
    rows.push_back({name, pngOf(chunks)});
  };
  add("PngWithCutData", [](PngChunks& chunks) { chunks[chunks.size() - 2].content.chop(20); });
  add("PngWithTooFewRows", [](PngChunks& chunks) { ++chunks[0].content[7]; });
  add("PngWithoutItsHeader", [](PngChunks& chunks) { chunks.erase(chunks.begin()); });
  add("PngWithItsHeaderLater", [](PngChunks& chunks) { std::swap(chunks[0], chunks[1]); });
  add("PngWithAShortHeader", [](PngChunks& chunks) { chunks[0].content.chop(1); });
  add("PngWithoutItsData", [](PngChunks& chunks) { chunks.erase(chunks.end() - 2); });
  return rows;
}

class ABrokenPicture : public testing::TestWithParam<BrokenRow> {};

TEST_P(ABrokenPicture, IsNoneAndNothingIsPrinted) {
  testing::internal::CaptureStderr();  // The libraries behind Qt have their own ways to complain.
  EXPECT_FALSE(decoded(GetParam().file).has_value());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

INSTANTIATE_TEST_SUITE_P(Host, ABrokenPicture, testing::ValuesIn(brokenPictures()), rowName);

}  // namespace
}  // namespace Corvella
