#pragma once

#include <QColor>
#include <QPainter>
#include <QPalette>
#include <QRect>
#include <QString>

/// How the Today view looks. Its controls paint themselves: a style sheet for all of them would
/// make the program start a good deal later.
namespace Corvella::theme {

inline QColor panel() {
  return {0x1c, 0x1c, 0x20, 0xf4};
}
inline QColor panelEdge() {
  return {0x3d, 0x3d, 0x41, 0xf6};
}
inline QColor card() {
  return {0x2b, 0x2b, 0x31};
}
inline QColor text() {
  return {0xf2, 0xf2, 0xf4};
}
/// The colour of what cannot be used just now.
inline QColor faintText() {
  return {0x8e, 0x8e, 0x95};
}
/// The colour of the notice in the heading.
inline QColor notice() {
  return {0xff, 0xc7, 0x6e};
}
/// Of grooves and of stars that are not lit: three times as light as the card, so that they are
/// seen.
inline QColor groove() {
  return {0xff, 0xff, 0xff, 0x5c};
}
/// Of grooves and of such stars where they cannot be used just now.
inline QColor faintGroove() {
  return {0xff, 0xff, 0xff, 0x24};
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

constexpr double kCornerRadius = 12;

/// The colours of what Qt paints by itself, such as selected text and menus.
QPalette palette();
QPalette toolTipPalette();
QString scrollBarStyleSheet();

/// Fills `area` with its corners rounded.
void fillRounded(QPainter& painter, const QRectF& area, double radius, const QColor& color);
/// A ring just inside `area`.
void paintFocusRing(QPainter& painter, const QRect& area);

}  // namespace Corvella::theme
