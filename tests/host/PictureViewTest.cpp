#include <QBuffer>
#include <QImage>

#include <gtest/gtest.h>

#include "host/controls/PictureView.h"
#include "host/services/QtImageDecoder.h"

namespace Corvella {
namespace {

/// Every other pixel is black, like the fields of a chessboard.
QImage chessboard(int side) {
  QImage board(side, side, QImage::Format_RGB32);
  for (int i = 0; i < side * side; ++i) {
    const QPoint field(i % side, i / side);
    board.setPixelColor(field, (field.x() + field.y()) % 2 == 0 ? Qt::black : Qt::white);
  }
  return board;
}

TEST(APictureOfTwiceThePixelsOfItsView, IsDrawnPixelByPixelAtTwiceTheScale) {
  const auto board = chessboard(80);
  QBuffer file;
  file.open(QIODevice::WriteOnly);
  ASSERT_TRUE(board.save(&file, "PNG"));
  PictureView view;
  view.resize(board.size() / 2);
  view.display({NSImage::initWithData(std::as_bytes(std::span(file.data())), QtImageDecoder())});

  QImage drawn(board.size(), QImage::Format_RGB32);
  drawn.setDevicePixelRatio(2);
  view.render(&drawn);

  drawn.setDevicePixelRatio(1);
  const QRect withoutRoundedCorners(0, 12, 80, 56);
  EXPECT_EQ(drawn.copy(withoutRoundedCorners), board.copy(withoutRoundedCorners));
}

}  // namespace
}  // namespace Corvella
