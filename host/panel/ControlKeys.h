#pragma once

#include <span>

namespace Corvella {

/// A key that acts on a control of the widget wherever the focus is.
struct ControlKey {
  enum class Act : unsigned char { Click, Raise, Lower, Set };
  int key;  ///< A `Qt::Key`.
  const char* identifier;
  Act act;
  int value = 0;  ///< What `Act::Set` sets.
};

std::span<const ControlKey> controlKeys();

/// The keys of a control as its tooltip names them; empty when it has none.
const char* keyNames(const char* identifier);

}  // namespace Corvella
