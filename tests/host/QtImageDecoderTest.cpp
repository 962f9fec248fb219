#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QImage>
#include <span>

#include <gtest/gtest.h>

#include "host/QtImageDecoder.h"

namespace Corvella {
namespace {

std::span<const std::byte> bytesOf(const QByteArray& data) {
  return std::as_bytes(std::span(data.data(), static_cast<std::size_t>(data.size())));
}

QByteArray encoded(int width, int height, const char* format) {
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(QColor(200, 30, 40));
  QByteArray data;
  QBuffer buffer(&data);
  buffer.open(QIODevice::WriteOnly);
  EXPECT_TRUE(image.save(&buffer, format));
  return data;
}

TEST(APicture, IsDecodedWhateverItsKind) {
  for (const auto* format : {"PNG", "JPEG", "BMP"}) {
    const auto picture = QtImageDecoder().decode(bytesOf(encoded(40, 30, format)));
    ASSERT_TRUE(picture.has_value()) << format;
    EXPECT_EQ(picture->width, 40);
    EXPECT_EQ(picture->bitmap.pixelsHigh, 30);
    const QColor colour(picture->bitmap.pixels.at(40 * 30 - 1));
    EXPECT_NEAR(colour.red(), 200, 3) << format;
  }
}

TEST(ALargePicture, KeepsItsSizeAndGetsASmallerBitmap) {
  const auto picture = QtImageDecoder().decode(bytesOf(encoded(3000, 1500, "JPEG")));
  ASSERT_TRUE(picture.has_value());
  EXPECT_EQ(picture->width, 3000);
  EXPECT_EQ(picture->height, 1500);
  EXPECT_EQ(picture->bitmap.pixelsWide, 512);
  EXPECT_EQ(picture->bitmap.pixelsHigh, 256);
  EXPECT_EQ(picture->bitmap.pixels.size(), 512U * 256U);

  const auto thin = QtImageDecoder().decode(bytesOf(encoded(5000, 1, "PNG")));
  ASSERT_TRUE(thin.has_value());
  EXPECT_EQ(thin->bitmap.pixelsHigh, 1);
}

TEST(BytesThatAreNoPicture, GiveNone) {
  const QtImageDecoder decoder;
  EXPECT_FALSE(decoder.decode({}).has_value());
  EXPECT_FALSE(decoder.decode(bytesOf("<html>not found</html>")).has_value());
  for (const auto* format : {"PNG", "JPEG", "BMP"}) {
    const auto whole = encoded(400, 300, format);
    EXPECT_FALSE(decoder.decode(bytesOf(whole.left(whole.size() / 2))).has_value()) << format;
  }
}

TEST(APictureOfAbsurdSize, IsRefusedByItsHeader) {
  constexpr int side = 5'478;  // 30,008,484 pixels
  QImage image(side, side, QImage::Format_Mono);
  image.fill(0);
  QByteArray data;
  QBuffer buffer(&data);
  buffer.open(QIODevice::WriteOnly);
  ASSERT_TRUE(image.save(&buffer, "PNG"));
  EXPECT_FALSE(QtImageDecoder().decode(bytesOf(data)).has_value());
}

}  // namespace
}  // namespace Corvella
