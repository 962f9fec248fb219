#include "host/LateScriptRunner.h"

#include <exception>
#include <utility>

namespace Corvella {

LateScriptRunner::LateScriptRunner(Make make, Failed failed)
    : make_(std::move(make)), failed_(std::move(failed)) {}

std::unique_ptr<NSAppleScript> LateScriptRunner::initWithSource(std::string source) {
  std::call_once(made_, [this] { makeRunner(); });
  return runner_ ? runner_->initWithSource(std::move(source)) : nullptr;
}

void LateScriptRunner::makeRunner() {
  try {
    runner_ = make_();
  } catch (const std::exception& error) {
    failed_(error.what());
  }
}

}  // namespace Corvella
