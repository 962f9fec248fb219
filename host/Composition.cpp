#include "host/Composition.h"

#include <QString>

namespace Corvella {

Composition::Composition(const std::string& player)
    : runner_([this, player] { return services_.makeScriptRunner(player); }),
      application_(fonts_),
      view_(services_.with(runner_), bridge_,
            player == "auto" ? "The player" : QString::fromStdString(player)) {
  runner_.setFailed([this](const std::string& reason) { bridge_.startFailed(reason); });
}

}  // namespace Corvella
