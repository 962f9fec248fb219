#include "tests/support/PrivateBus.h"

#include <csignal>
#include <stdexcept>

#include "tests/support/Eventually.h"

namespace Corvella {

PrivateBus::PrivateBus() {
  const auto folder = folder_.path().string();
  std::filesystem::create_directory(folder + "/services");
  // Stands in for --session, which would bring the machine's services.
  const auto file = folder_.write(
      "bus.conf", "<busconfig><type>session</type><listen>unix:path=" + folder +
                      "/bus</listen><auth>EXTERNAL</auth><servicedir>" + folder +
                      "/services</servicedir><policy context=\"default\"><allow own=\"*\"/>"
                      "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
                      "<allow eavesdrop=\"true\"/></policy></busconfig>");
  daemon_.emplace(std::vector<std::string>{"dbus-daemon", "--nofork", "--print-address",
                                           "--config-file=" + file.string()});
  eventually([this] { return daemon_->output().ends_with('\n') || !daemon_->running(); });
  address_ = daemon_->output();
  if (!address_.ends_with('\n')) throw std::runtime_error("no bus: " + daemon_->errors());
  address_.pop_back();
}

void PrivateBus::addActivatableName(const std::string& name, const std::string& commandLine) {
  // The bus looks into the folder again when it is asked for a name that it does not know.
  folder_.write("services/" + name + ".service",
                "[D-BUS Service]\nName=" + name + "\nExec=" + commandLine + "\n");
}

void PrivateBus::stop() {
  daemon_->kill(SIGKILL);
  daemon_->wait();
}

}  // namespace Corvella
