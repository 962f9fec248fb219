#pragma once

class NSClassRegistry;
class NSFontFinder;
class NSTextMeasurer;

/// What creating the objects of an interface file needs. The text measurer and the font finder must
/// outlive those objects.
struct NSNibServices {
  const NSClassRegistry& classes;
  const NSTextMeasurer& textMeasurer;
  const NSFontFinder& fontFinder;
};
