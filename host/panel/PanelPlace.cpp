#include "host/panel/PanelPlace.h"

#include <algorithm>

namespace Corvella {

PanelPlace panelPlace(const QRect& free, int width, int leastHeight,
                      const std::optional<QPoint>& dragged) {
  constexpr int kMargin = 8;  // To the edges of the screen, where the user has not chosen another.
  const int right = free.left() + free.width();
  const int bottom = free.top() + free.height();
  QPoint position(right - kMargin - width, free.top() + kMargin);
  if (dragged) {
    // The upper and the left edge win on a screen that is too small for the panel.
    position.setX(std::max(free.left(), std::min(dragged->x(), right - width)));
    position.setY(std::max(free.top(), std::min(dragged->y(), bottom - leastHeight)));
  }
  // Close to the lower edge, the panel keeps its least height and gives up the margin.
  const int room = bottom - position.y();
  return {.position = position, .tallest = std::max(room - kMargin, std::min(leastHeight, room))};
}

}  // namespace Corvella
