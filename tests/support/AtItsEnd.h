#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace Corvella {

/// Something that does one thing when it is destroyed.
inline std::shared_ptr<void> atItsEnd(std::function<void()> action) {
  return {nullptr, [action = std::move(action)](void*) { action(); }};
}

}  // namespace Corvella
