#include "host/ProgramServices.h"

#include <iostream>
#include <stdexcept>
#include <utility>

#include "host/PlayerSelection.h"
#include "host/ProgramFolders.h"
#include "platform/foundation/NSPropertyList.h"
#include "players/PlayerScriptRunner.h"
#include "players/ScriptingTargets.h"

namespace Corvella {

namespace {

ScriptingTargets entitledTargets(const NSBundle& bundle) {
  constexpr auto name = "Corvella.entitlements";
  const auto path = bundle.pathForResource(name).string();
  const auto bytes = bundle.dataForResource(name);
  if (!bytes) throw std::runtime_error("cannot read " + path);
  return ScriptingTargets::fromEntitlements(NSPropertyList::propertyListWithData(*bytes, path));
}

/// A script runner together with the player that it asks.
class PlayerWithRunner final : public ScriptRunner {
 public:
  PlayerWithRunner(std::unique_ptr<MusicPlayer> player, const ScriptingTargets& targets)
      : player_(std::move(player)), runner_(*player_, targets) {}

  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override {
    return runner_.initWithSource(std::move(source));
  }

 private:
  const std::unique_ptr<MusicPlayer> player_;
  PlayerScriptRunner runner_;
};

}  // namespace

ProgramServices::ProgramServices() : bundle_(ProgramFolders::resources()) {}

std::unique_ptr<ScriptRunner> ProgramServices::makeScriptRunner(const std::string& player) const {
  return std::make_unique<PlayerWithRunner>(selectPlayer(player, clock_, bundle_, std::cerr),
                                            entitledTargets(bundle_));
}

HostServices ProgramServices::with(ScriptRunner& runner) const {
  return {.clock = clock_,
          .scriptRunner = runner,
          .bundle = bundle_,
          .imageDecoder = imageDecoder_,
          .fontFinder = fontFinder_,
          .textMeasurer = textMeasurer_};
}

}  // namespace Corvella
