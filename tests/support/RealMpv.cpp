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
  command.insert(command.end(), options.files.begin(), options.files.end());
  return command;
}

}  // namespace

RealMpv::RealMpv(const std::string& address, const Options& options)
    : address_(address), process_(commandFor(options), {"DBUS_SESSION_BUS_ADDRESS=" + address}) {
  // The title and the url stand there before the file is open, the length does not.
  const auto ready = [this] {
    return property("Metadata").find("mpris:length") != std::string::npos;
  };
  eventually([&] { return ready() || !process_.running(); });
  if (!ready()) throw std::runtime_error("no mpv: " + process_.errors());
}

std::string RealMpv::property(const std::string& name) const {
  Process look({"dbus-send", "--bus=" + address_, "--print-reply=literal", "--dest=" + busName(),
                "/org/mpris/MediaPlayer2", "org.freedesktop.DBus.Properties.Get",
                "string:org.mpris.MediaPlayer2.Player", "string:" + name});
  look.wait();
  return look.output();
}

void RealMpv::kill() {
  process_.kill(SIGKILL);
  process_.wait();
}

}  // namespace Corvella
