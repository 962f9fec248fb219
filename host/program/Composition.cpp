#include "host/program/Composition.h"

#include <iostream>
#include <stdexcept>
#include <utility>

#include "host/program/PlayerChoice.h"
#include "host/program/ProgramFolders.h"
#include "platform/foundation/NSPropertyList.h"
#include "players/PlayerScriptRunner.h"
#include "players/ScriptingTargets.h"

namespace Corvella {

namespace {

ScriptingTargets entitledTargets(const NSBundle& bundle) {
  constexpr auto kName = "Corvella.entitlements";
  const auto path = bundle.pathForResource(kName).string();
  const auto bytes = bundle.dataForResource(kName);
  if (!bytes) throw std::runtime_error("cannot read " + path);
  return ScriptingTargets::fromEntitlements(NSPropertyList::propertyListWithData(*bytes, path));
}

/// The members use those above them, and end in the opposite order: the extension, which has
/// scripts run on its threads, before the runner that runs them, and the player last.
class SessionOnPlayer final : public WidgetSession {
 public:
  SessionOnPlayer(ChosenPlayer chosen, const ScriptingTargets& targets,
                  const HostServices& services, WidgetHost& host, PlayerNewsListener& listener)
      : chosen_(std::move(chosen)),
        runner_(*chosen_.player, targets, &listener),
        extension_(services, runner_, host) {}

  ExtensionThread& extension() override { return extension_; }
  ScriptRunner& scripts() override { return runner_; }
  std::string whyPlayerIsNotShown() const override { return chosen_.whyNotShown(); }
  PlayerDescription player() const override { return chosen_.player->description(); }
  std::vector<PlayerDescription> players() const override { return chosen_.player->players(); }
  void raisePlayer() override { chosen_.player->raise(); }

 private:
  const ChosenPlayer chosen_;
  PlayerScriptRunner runner_;
  ExtensionThread extension_;
};

}  // namespace

Composition::Composition(const MprisDeadlines& deadlines)
    : deadlines_(deadlines), bundle_(ProgramFolders::resources()) {}

std::unique_ptr<WidgetSession> Composition::startWidget(const std::string& player, WidgetHost& host,
                                                        PlayerNewsListener& listener) const {
  const HostServices services{.clock = clock_,
                              .bundle = bundle_,
                              .imageDecoder = imageDecoder_,
                              .fontFinder = fontFinder_,
                              .textMeasurer = textMeasurer_};
  return std::make_unique<SessionOnPlayer>(
      makePlayer(player, {.clock = clock_,
                          .bundle = bundle_,
                          .deadlines = deadlines_,
                          .listener = listener,
                          .notices = std::cerr,
                          .isFirst = std::exchange(isFirstPlayer_, false)}),
      entitledTargets(bundle_), services, host, listener);
}

}  // namespace Corvella
