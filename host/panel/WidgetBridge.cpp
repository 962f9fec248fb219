#include "host/panel/WidgetBridge.h"

#include <QMetaObject>
#include <algorithm>
#include <utility>

namespace Corvella {

namespace {

void merge(std::optional<WidgetSnapshot>& older, WidgetSnapshot newer) {
  if (older) {
    for (auto& view : older->views) {
      const auto same = [&](const ViewSnapshot& other) {
        return other.identifier == view.identifier;
      };
      if (std::none_of(newer.views.begin(), newer.views.end(), same)) {
        newer.views.push_back(std::move(view));
      }
    }
  }
  older = std::move(newer);
}

}  // namespace

template <typename Change>
void WidgetBridge::post(Change change) {
  const std::lock_guard lock(mutex_);
  change(changes_);
  if (std::exchange(posted_, true)) return;
  QMetaObject::invokeMethod(this, "deliver", Qt::QueuedConnection);
}

void WidgetBridge::displayChanged(WidgetSnapshot snapshot) {
  post([&](Changes& changes) { merge(changes.snapshot, std::move(snapshot)); });
}

void WidgetBridge::answered(std::uint64_t number) {
  post([&](Changes& changes) { changes.answer = number; });
}

void WidgetBridge::settled(std::uint64_t /*number*/) {
  post([&](Changes& changes) { changes.settled = true; });
}

void WidgetBridge::startFailed(const std::string& reason) {
  post([&](Changes& changes) { changes.failure = reason; });
}

void WidgetBridge::playerNews(PlayerNews news) {
  if (!listening_ && news != PlayerNews::Left) return;
  post([&](Changes& changes) { changes.news.insert(news); });
}

void WidgetBridge::deliver() {
  Changes changes;
  {
    const std::lock_guard lock(mutex_);
    changes = std::exchange(changes_, {});
    posted_ = false;
  }
  if (changes.snapshot) emit displayShown(*changes.snapshot);
  if (changes.answer) emit pingAnswered(*changes.answer);
  if (changes.settled) emit hasSettled();
  if (changes.failure) emit failed(QString::fromStdString(*changes.failure));
  for (const auto news : changes.news) emit playerHasNews(news);
}

}  // namespace Corvella
