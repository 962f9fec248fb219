#include "host/AwaitedScriptRunner.h"

#include <exception>
#include <utility>

namespace Corvella {

AwaitedScriptRunner::AwaitedScriptRunner(Make make)
    : runner_(std::async(std::launch::async, std::move(make))) {}

std::unique_ptr<NSAppleScript> AwaitedScriptRunner::initWithSource(std::string source) {
  try {
    runner_.get();
  } catch (const std::exception& error) {
    std::call_once(told_, [&] {
      if (failed_) failed_(error.what());
    });
    return nullptr;
  }
  return runner_.get()->initWithSource(std::move(source));
}

}  // namespace Corvella
