#include "host/controls/ButtonSign.h"

#include <QPolygonF>

namespace Corvella {

namespace {

constexpr double kHeight = 14;
/// The width of a triangle that stands alone; one of a pair is narrower.
constexpr double kTriangle = 12;
constexpr double kBar = 4;

QPolygonF rightTriangle(double x, double width) {
  return QPolygonF({{x, 0}, {x + width, kHeight / 2}, {x, kHeight}, {x, 0}});
}

QPolygonF leftTriangle(double x, double width) {
  return QPolygonF({{x + width, 0}, {x, kHeight / 2}, {x + width, kHeight}, {x + width, 0}});
}

QPainterPath cross() {
  constexpr double kSize = 9;
  QPainterPath lines;
  lines.moveTo(0, 0);
  lines.lineTo(kSize, kSize);
  lines.moveTo(kSize, 0);
  lines.lineTo(0, kSize);
  QPainterPathStroker stroker;
  stroker.setWidth(1.5);
  stroker.setCapStyle(Qt::RoundCap);
  return stroker.createStroke(lines).simplified();
}

QPolygonF bar(double x) {
  return QRectF(x, 0, kBar, kHeight);
}

}  // namespace

QPainterPath buttonSign(std::string_view title) {
  constexpr double kNarrow = 0.8 * kTriangle;
  QPainterPath path;
  const auto add = [&](const QPolygonF& left, const QPolygonF& right) {
    path.addPolygon(left);
    path.addPolygon(right);
  };
  if (title == "\u25b6") path.addPolygon(rightTriangle(0, kTriangle));
  if (title == "\u25b6\u25b6") add(rightTriangle(0, kNarrow), rightTriangle(kNarrow, kNarrow));
  if (title == "\u25c0\u25c0") add(leftTriangle(0, kNarrow), leftTriangle(kNarrow, kNarrow));
  if (title == "\u275a\u275a") add(bar(0), bar(2 * kBar));
  if (title == "\u2715") path = cross();
  return path;
}

}  // namespace Corvella
