#include "players/PlayerModule.h"
#include "players/mpris/MprisPlayer.h"

namespace Corvella {

namespace {

std::string_view withoutPrefix(std::string_view name) {
  constexpr std::string_view prefix = "org.mpris.MediaPlayer2.";
  return name.starts_with(prefix) ? name.substr(prefix.size()) : name;
}

std::unique_ptr<MusicPlayer> makePlayer(const std::string& name) {
  return std::make_unique<MprisPlayer>(name);
}

std::vector<PlayerModule::ListedPlayer> listPlayers() {
  std::vector<PlayerModule::ListedPlayer> listed;
  for (const auto& player : MprisPlayer().players()) {
    listed.push_back({.name = std::string(withoutPrefix(player.name)),
                      .state = player.state,
                      .silent = player.silent});
  }
  return listed;
}

constexpr PlayerModule kModule{.makePlayer = makePlayer, .listPlayers = listPlayers};

}  // namespace

}  // namespace Corvella

extern "C" [[gnu::visibility("default")]] const Corvella::PlayerModule* corvellaPlayerModule() {
  return &Corvella::kModule;
}
