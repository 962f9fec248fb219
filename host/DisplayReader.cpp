#include "host/DisplayReader.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace Corvella {

WidgetDisplay DisplayReader::read(bool unfolded) {
  ExtensionThread extension(services_, *this);
  extension.performUpdate();
  extension.appear();
  // The first report answers the callback itself, the second the appearance.
  waitFor([this] { return reports_ >= 2; });
  if (report_ == NCUpdateResultNewData) {
    waitFor([this] { return display_.preferredContentSize().has_value(); });
    if (unfolded) unfold(extension);
  }
  const std::lock_guard lock(mutex_);
  return display_;
}

void DisplayReader::unfold(ExtensionThread& extension) {
  {
    const std::lock_guard lock(mutex_);
    if (toggleReads("No Lyrics")) return;
  }
  extension.click("toggleLyricsButton");
  waitFor([this] { return toggleReads("Hide Lyrics"); });
}

bool DisplayReader::toggleReads(const std::string& title) const {
  const auto* button = display_.content<ButtonContent>("toggleLyricsButton");
  return button != nullptr && button->title == title;
}

void DisplayReader::waitFor(const std::function<bool()>& condition) {
  std::unique_lock lock(mutex_);
  const bool reached =
      changed_.wait_for(lock, std::chrono::seconds(30), [&] { return failure_ || condition(); });
  if (failure_) throw std::runtime_error(*failure_);
  if (!reached) throw std::runtime_error("the widget did not show anything in time");
}

void DisplayReader::displayChanged(WidgetSnapshot snapshot) {
  const std::lock_guard lock(mutex_);
  display_.apply(std::move(snapshot));
  changed_.notify_all();
}

void DisplayReader::updateReported(NCUpdateResult result) {
  const std::lock_guard lock(mutex_);
  report_ = result;
  ++reports_;
  changed_.notify_all();
}

void DisplayReader::startFailed(const std::string& reason) {
  const std::lock_guard lock(mutex_);
  failure_ = reason;
  changed_.notify_all();
}

}  // namespace Corvella
