#pragma once

namespace Corvella {

/// Gives the controls of our own painting their accessible roles, names and values, from now on;
/// more calls do nothing.
void makeControlsAccessible();

}  // namespace Corvella
