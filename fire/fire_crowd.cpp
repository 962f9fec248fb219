// The crowd around Corvella, in a program of its own. Arguments: the descriptor of a channel by
// which it is told to "fire", "rest", "come back" or tell its "state"; the address of the bus, a
// seed, the folder with hostile files, and the address of the web server. It answers each message
// when it has done what that says, and ends with the channel.

#include <chrono>
#include <cstdio>
#include <exception>
#include <string>

#include <poll.h>

#include "fire/Channel.h"
#include "fire/Crowd.h"

namespace {

using namespace Corvella;

void serve(Crowd& crowd, const Channel& channel) {
  constexpr int kMilliseconds = 2;
  while (true) {
    crowd.turn();
    pollfd file{channel.descriptor(), POLLIN, 0};
    if (::poll(&file, 1, kMilliseconds) <= 0) continue;
    const auto told = channel.receive(std::chrono::milliseconds(0));
    if (!told) return;
    if (told == "fire") {
      crowd.fire();
    } else if (told == "rest") {
      crowd.rest();
    } else if (told == "come back") {
      crowd.comeBack();
    } else if (told != "state") {
      crowd.aimAt(*told);
    }
    channel.send(crowd.state());
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 6) return 2;
  const Channel channel(std::stoi(argv[1]));
  Crowd crowd(argv[2], std::stoull(argv[3]), {.server = argv[5], .folder = argv[4]});
  serve(crowd, channel);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "crowd: %s\n", error.what());
  return 1;
}
