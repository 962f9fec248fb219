#include "tests/support/RealMpv.h"

#include <csignal>
#include <stdexcept>

#include "tests/support/Eventually.h"

namespace Corvella {

namespace {

std::vector<std::string> commandFor(const RealMpv::Options& options) {
  std::vector<std::string> command{
      "mpv",          "--no-config", "--script=/usr/lib/mpv-mpris/mpris.so",
      "--no-video",   "--ao=null",   "--idle=yes",
      "--no-terminal"};
  if (options.paused) command.emplace_back("--pause");
  if (options.looped) command.emplace_back("--loop-playlist=inf");
  command.emplace_back("--");
  command.insert(command.end(), options.files.begin(), options.files.end());
  return command;
}

}  // namespace

RealMpv::RealMpv(const std::string& address, Options options)
    : client_(address), process_(commandFor(options), {"DBUS_SESSION_BUS_ADDRESS=" + address}) {
  const bool started = eventually(
      [&] {
        busName_ = nameOnTheBus().value_or("");
        const bool ready = !busName_.empty() && (options.files.empty() || hasATrack());
        return ready || !process_.running();
      },
      std::chrono::seconds{20});
  if (!started || !process_.running()) throw std::runtime_error("no mpv: " + process_.errors());
}

void RealMpv::kill() {
  process_.kill(SIGKILL);
  process_.wait();
}

std::optional<std::string> RealMpv::nameOnTheBus() {
  for (const auto& name : client_.names()) {
    if (name.starts_with("org.mpris.MediaPlayer2.mpv") && client_.ownerOf(name) == process_.id()) {
      return name;
    }
  }
  return std::nullopt;
}

// The title and the url stand there before the file is open, the length does not.
bool RealMpv::hasATrack() {
  return client_.metadata(busName_).contains("mpris:length");
}

}  // namespace Corvella
