#pragma once

#include <array>
#include <span>
#include <string_view>

namespace Corvella {

/// The keys that act on a control of the widget wherever the focus is.
struct ControlKeys {
  std::string_view control;  ///< Its identifier.
  const char* names;         ///< As its tooltip tells the keys.
  /// `Qt::Key`s, followed by zeros: one clicks a button, the first of two raises the value of a
  /// slider and the second lowers it, and each sets as many stars as there are keys before it.
  std::array<int, 6> keys;
};

std::span<const ControlKeys> controlKeys();

/// The keys of a control as its tooltip tells them; empty when it has none.
const char* keyNames(std::string_view control);

}  // namespace Corvella
