#include "host/Composition.h"

#include <QString>

namespace Corvella {

Composition::Composition(const std::string& player)
    : runner_([this, player] { return services_.makeScriptRunner(player); },
              [this](const std::string& reason) { bridge_.startFailed(reason); }),
      application_(fonts_),
      view_(services_.with(runner_), bridge_,
            player == "auto" ? "The player" : QString::fromStdString(player)) {}

}  // namespace Corvella
