#pragma once

/// A place, in points.
struct NSPoint {
  double x = 0;
  double y = 0;
  friend bool operator==(const NSPoint&, const NSPoint&) = default;
};

/// An extent, in points.
struct NSSize {
  double width = 0;
  double height = 0;
  friend bool operator==(const NSSize&, const NSSize&) = default;
};

/// A rectangle, in points of the enclosing view. The origin is its lower left corner; y grows
/// upwards.
struct NSRect {
  NSPoint origin;
  NSSize size;
  friend bool operator==(const NSRect&, const NSRect&) = default;
};

constexpr NSRect NSMakeRect(double x, double y, double width, double height) {
  return {.origin = {.x = x, .y = y}, .size = {.width = width, .height = height}};
}
