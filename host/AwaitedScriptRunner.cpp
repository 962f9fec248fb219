#include "host/AwaitedScriptRunner.h"

#include <exception>
#include <utility>

namespace Corvella {

AwaitedScriptRunner::AwaitedScriptRunner(Make make, Failed failed)
    : runner_(std::async(
          std::launch::async,
          [make = std::move(make), failed = std::move(failed)]() -> std::unique_ptr<ScriptRunner> {
            try {
              return make();
            } catch (const std::exception& error) {
              failed(error.what());
              return nullptr;
            }
          })) {}

std::unique_ptr<NSAppleScript> AwaitedScriptRunner::initWithSource(std::string source) {
  const auto& runner = runner_.get();
  return runner ? runner->initWithSource(std::move(source)) : nullptr;
}

}  // namespace Corvella
