#include "players/mpris/bus/SessionBus.h"

#include <stdexcept>
#include <string>
#include <system_error>

#include "players/mpris/bus/SdBus.h"

namespace Corvella {

void requireSessionBus() try { openSessionBus(); } catch (const std::system_error& error) {
  throw std::runtime_error(std::string("no session bus: ") + error.what());
}

bool sessionBusAnswers(std::chrono::milliseconds patience) try {
  connectToSessionBus(patience);
  return true;
} catch (const std::system_error&) {
  return false;
}

}  // namespace Corvella
