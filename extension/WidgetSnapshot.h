#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/appkit/NSColor.h"
#include "platform/appkit/NSFont.h"
#include "platform/appkit/NSGeometry.h"
#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSText.h"

namespace Corvella {

struct PlainContent {};

struct TextFieldContent {
  std::string text;
  NSColor color;
  std::shared_ptr<const NSFont> font;  ///< Null for the default.
  NSTextAlignment alignment = NSTextAlignmentLeft;
};

struct ButtonContent {
  std::string title;
  std::shared_ptr<const NSFont> font;  ///< Null for the default.
  bool enabled = true;
};

struct SliderContent {
  double minValue = 0;
  double maxValue = 0;
  double value = 0;
  bool continuous = true;  ///< Whether the widget is told of each step of a drag, or of its end.
};

struct RatingContent {
  int stars = 0;
  int mostStars = 0;
  bool editable = false;
  bool highlighted = false;
  bool continuous = true;  ///< As for sliders.
  bool focusRing = true;   ///< Whether the focus of the keyboard is shown.
};

struct ProgressContent {
  double minValue = 0;
  double maxValue = 0;
  double value = 0;  ///< As it was set; may lie beyond the ends.
};

struct ImageContent {
  std::shared_ptr<const NSImage> image;  ///< Null for none.
};

struct TextContent {
  std::string text;
  NSColor color;
  std::shared_ptr<const NSFont> font;  ///< Null for the default.
  NSTextAlignment alignment = NSTextAlignmentLeft;
};

/// What one view of the widget shows at one moment. A value: it shares nothing that changes.
struct ViewSnapshot {
  std::string identifier;  ///< As in the interface file; the same for a view's whole life.
  NSRect frame;            ///< In points; the origin is the lower left corner of the widget.
  std::string accessibilityLabel;
  std::variant<PlainContent, TextFieldContent, ButtonContent, SliderContent, RatingContent,
               ProgressContent, ImageContent, TextContent>
      content;
};

/// What changed in the widget during one turn of its run loop.
struct WidgetSnapshot {
  std::vector<ViewSnapshot> views;  ///< Those that changed.
  NSSize size;                      ///< Of the widget, in points.
  /// The size that the widget asks for; absent as long as it has asked for none.
  std::optional<NSSize> preferredContentSize;
};

}  // namespace Corvella
