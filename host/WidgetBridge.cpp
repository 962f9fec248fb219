#include "host/WidgetBridge.h"

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
  change(news_);
  if (std::exchange(posted_, true)) return;
  QMetaObject::invokeMethod(this, "deliver", Qt::QueuedConnection);
}

void WidgetBridge::displayChanged(WidgetSnapshot snapshot) {
  post([&](News& news) { merge(news.snapshot, std::move(snapshot)); });
}

void WidgetBridge::updateReported(NCUpdateResult result) {
  post([&](News& news) { news.report = result; });
}

void WidgetBridge::answered(std::uint64_t number) {
  post([&](News& news) { news.answer = number; });
}

void WidgetBridge::startFailed(const std::string& reason) {
  post([&](News& news) { news.failure = reason; });
}

void WidgetBridge::deliver() {
  News news;
  {
    const std::lock_guard lock(mutex_);
    news = std::exchange(news_, {});
    posted_ = false;
  }
  if (news.snapshot) emit displayShown(*news.snapshot);
  if (news.report) emit reported(*news.report);
  if (news.answer) emit pingAnswered(*news.answer);
  if (news.failure) emit failed(QString::fromStdString(*news.failure));
}

}  // namespace Corvella
