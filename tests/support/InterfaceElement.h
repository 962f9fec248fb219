#pragma once

#include "platform/foundation/NSCoder.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"

/// An element of an interface file, for objects that are made from one, with the services that such
/// objects use.
struct InterfaceElement {
  FixedTextMeasurer measurer;
  FixedFontFinder fonts;
  NSCoder coder{"Some.xib:1", measurer, fonts};
};
