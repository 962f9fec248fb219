#pragma once

#include <QColor>
#include <QPainter>
#include <QRect>
#include <QString>

/// How the Today view looks.
namespace Corvella::theme {

inline QColor panel() {
  return {0x1c, 0x1c, 0x20, 0xf4};
}
inline QColor panelEdge() {
  return {0xff, 0xff, 0xff, 0x24};
}
inline QColor groove() {
  return {0xff, 0xff, 0xff, 0x38};
}
inline QColor accent() {
  return {0x6c, 0xb2, 0xff};
}
inline QColor dimmed() {
  return {0xb0, 0xb0, 0xb6};
}
inline QColor star() {
  return {0xff, 0xc9, 0x3c};
}
inline QColor starPreview() {
  return {0xff, 0xe0, 0x92};
}

constexpr int kCornerRadius = 12;

/// The style sheet of the window and all that it holds.
QString styleSheet();

/// A ring just inside `area`.
void paintFocusRing(QPainter& painter, const QRect& area);

}  // namespace Corvella::theme
