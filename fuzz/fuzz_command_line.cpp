// The arguments of the program, each ended by NUL as the kernel keeps them.

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "fuzz/Check.h"
#include "host/program/CommandLine.h"

namespace Corvella {
namespace {

std::vector<std::string> argumentsIn(const std::string& text) {
  std::vector<std::string> arguments;
  for (std::size_t at = 0; at < text.size(); at += arguments.back().size() + 1) {
    arguments.emplace_back(text.c_str() + at);
  }
  return arguments;
}

void checkCommand(const CommandLine& command) {
  using Action = CommandLine::Action;
  check(command.scale >= 0.5 && command.scale <= 4, "a scale keeps its bounds");
  check(!command.player.empty(), "a player has a name");
  check(command.playerIsGiven || command.player == "auto", "without a name, any player will do");
  check((command.action == Action::Snapshot) == !command.file.empty(),
        "a snapshot alone goes into a file");
  check(!(command.json || command.follow) || command.action == Action::Print,
        "options that go with printing are refused elsewhere");
  check(!command.hidden || command.action == Action::Open, "only what opens can be hidden");
}

void checkArguments(std::vector<std::string> arguments) {
  const auto parsed = parseCommandLine(arguments);
  if (const auto* error = std::get_if<UsageError>(&parsed)) {
    check(!error->message.empty(), "an error says what is wrong");
    check(error->message.find('\n') == std::string::npos, "an error is one line");
    return;
  }
  checkCommand(std::get<CommandLine>(parsed));
  arguments.insert(arguments.begin(), "--help");
  const auto withHelp = parseCommandLine(arguments);
  check(std::get<CommandLine>(withHelp).action == CommandLine::Action::Help,
        "help can always be asked for");
}

}  // namespace
}  // namespace Corvella

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Corvella::checkArguments(Corvella::argumentsIn(std::string(data, data + size)));
  return 0;
}
