#pragma once

#include <string>

namespace Corvella {

/// A few bytes that say that they are a picture of 30000 × 30000 pixels, which they are.
std::string giantPng();

/// A few kilobytes that say that they are a picture that takes thousands of passes over all of its
/// pixels.
std::string manyScansJpeg();

}  // namespace Corvella
