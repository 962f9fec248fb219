#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "extension/ExtensionThread.h"
#include "host/services/FontconfigFinder.h"
#include "host/services/QtImageDecoder.h"
#include "host/services/QtTextMeasurer.h"
#include "players/embedded/EmbeddedPlayer.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ScriptedStack.h"

namespace Corvella {

/// Lets scripts through to a runner, and holds them up while it is closed.
class ScriptGate final : public ScriptRunner {
 public:
  explicit ScriptGate(ScriptRunner& runner) : runner_(runner) {}

  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override {
    std::unique_lock lock(mutex_);
    scripts_.push_back(source);
    ++held_;
    mayPass_.wait(lock, [this] { return isOpen_ || passes_ > 0; });
    if (!isOpen_) --passes_;
    --held_;
    lock.unlock();
    return runner_.initWithSource(std::move(source));
  }

  void close() {
    change([this] { isOpen_ = false; });
  }
  void open() {
    change([this] { isOpen_ = true; });
  }
  /// Lets one script pass, while the gate stays closed.
  void letOnePass() {
    change([this] { ++passes_; });
  }

  bool isHoldingScripts() {
    const std::lock_guard lock(mutex_);
    return held_ > passes_;
  }

  /// All scripts that have come, oldest first.
  std::vector<std::string> scripts() {
    const std::lock_guard lock(mutex_);
    return scripts_;
  }
  /// How many scripts have come that end like that.
  std::ptrdiff_t count(const std::string& ending) {
    return std::ranges::count_if(scripts(),
                                 [&](const auto& text) { return text.ends_with(ending); });
  }
  /// How often the widget has appeared: only then it asks that.
  std::ptrdiff_t appearances() { return count("to running"); }

 private:
  template <typename Change>
  void change(Change change) {
    const std::lock_guard lock(mutex_);
    change();
    mayPass_.notify_all();
  }

  ScriptRunner& runner_;
  std::mutex mutex_;
  std::condition_variable mayPass_;
  bool isOpen_ = true;
  int passes_ = 0;
  int held_ = 0;
  std::vector<std::string> scripts_;
};

/// What the program brings to a widget on the embedded player, but that its scripts can be held up,
/// and that time stands still unless the test advances it. Needs a Qt application.
class HostParts {
 public:
  explicit HostParts(std::vector<EmbeddedTrack> tracks = embeddedTracks())
      : player(clock, bundle, std::move(tracks)) {}

  /// The parts, and the other bundle if there is to be one, have to outlive the services.
  HostServices services(const NSBundle* other = nullptr) const {
    return {.clock = clock,
            .bundle = other != nullptr ? *other : bundle,
            .imageDecoder = decoder_,
            .fontFinder = fonts_,
            .textMeasurer = measurer_};
  }

  ManualClock clock;
  const NSBundle bundle{CORVELLA_RESOURCES};
  EmbeddedPlayer player;
  PlayerScriptRunner runner{player, shippedTargets()};
  ScriptGate gate{runner};

 private:
  QtImageDecoder decoder_;
  FontconfigFinder fonts_;
  QtTextMeasurer measurer_;
};

}  // namespace Corvella
