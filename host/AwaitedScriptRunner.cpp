#include "host/AwaitedScriptRunner.h"

#include <exception>
#include <utility>

namespace Corvella {

AwaitedScriptRunner::AwaitedScriptRunner(Make make, Failed failed)
    : runner_(std::async(std::launch::async, std::move(make))), failed_(std::move(failed)) {}

std::unique_ptr<NSAppleScript> AwaitedScriptRunner::initWithSource(std::string source) {
  try {
    runner_.get();
  } catch (const std::exception& error) {
    std::call_once(told_, [&] { failed_(error.what()); });
    return nullptr;
  }
  return runner_.get()->initWithSource(std::move(source));
}

}  // namespace Corvella
