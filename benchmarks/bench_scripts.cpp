// What the scripts of one tick cost, against reads of the same properties with sd-bus alone.

#include <cstdio>
#include <exception>

#include "benchmarks/Ratio.h"
#include "benchmarks/RawReader.h"
#include "platform/dispatch/Clock.h"
#include "players/embedded/EmbeddedPlayer.h"
#include "players/mpris/MprisPlayer.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RealMpv.h"
#include "tests/support/ScriptedStack.h"
#include "tests/support/TaggedTrack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

/// The three scripts of one tick.
void runTickScripts(const SongController& controller) {
  controller.playerPosition();
  controller.songInfo();
}

void run() {
  const TemporaryFolder folder;
  const auto track = folder.path() / "track.flac";
  makeTrack(track, {.title = "A Title of Usual Length",
                    .artist = "An Artist",
                    .album = "An Album",
                    .lyrics = "A line of lyrics\nand another one",
                    .cover = CORVELLA_RESOURCES "/covers/harbour.png",
                    .seconds = 600});
  PrivateBus bus;
  const ScopedSessionBus session(bus.address());
  const RealMpv mpv(bus.address(), {.files = {track}});
  RawReader raw(bus.address(), mpv.busName());

  MprisPlayer mprisPlayer;
  const ScriptedStack mpris(mprisPlayer);
  printRatio(
      "tick over MPRIS / three raw reads",
      measureRatio([&] { runTickScripts(mpris.controller); }, [&] { raw.readTick(); }, 20, 20, 300),
      1.05);

  const SteadyClock clock;
  const NSBundle bundle(CORVELLA_RESOURCES);
  EmbeddedPlayer embeddedPlayer(clock, bundle);
  const ScriptedStack embedded(embeddedPlayer);
  printRatio("tick on the embedded player / one raw read",
             measureRatio([&] { runTickScripts(embedded.controller); },
                          [&] { raw.read("Position"); }, 1000, 20, 300),
             0.03);
}

}  // namespace
}  // namespace Corvella

int main() {
  try {
    Corvella::run();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_scripts: %s\n", error.what());
    return 1;
  }
}
