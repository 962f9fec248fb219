#include "players/mpris/artwork/WebPictures.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "players/mpris/artwork/Artwork.h"

namespace Corvella {

using std::chrono::steady_clock;

struct WebPictures::Shared {
  std::mutex mutex;                  ///< Guards all that follows.
  std::condition_variable ended;     ///< Tells that the fetch of `url` has.
  std::function<void()> arrived;     ///< Empty after the end of the object.
  std::string url;                   ///< The address that was asked for last.
  bool isUnderWay = false;           ///< Its fetch.
  bool isMissed = false;             ///< A call has gone without it.
  std::optional<Bytes> picture;      ///< What the fetch brought.
  steady_clock::time_point retry{};  ///< When it brought nothing: not before then again.
  int fetches = 0;
};

WebPictures::WebPictures(std::chrono::milliseconds patience, std::function<void()> arrived,
                         Fetch fetch)
    : patience_(patience), fetch_(std::move(fetch)), shared_(std::make_shared<Shared>()) {
  shared_->arrived = std::move(arrived);
}

WebPictures::~WebPictures() {
  const std::lock_guard lock(shared_->mutex);
  shared_->arrived = nullptr;
}

std::optional<WebPictures::Bytes> WebPictures::fetched(const std::string& url) {
  return readArtwork(url);
}

std::optional<WebPictures::Bytes> WebPictures::picture(const std::string& url) {
  auto& shared = *shared_;
  std::unique_lock lock(shared.mutex);
  if (shared.url != url) {
    shared.url = url;
    shared.isUnderWay = shared.isMissed = false;
    shared.picture.reset();
    shared.retry = {};
    shared.ended.notify_all();  // Nobody waits for the other one any more.
  }
  if (shared.picture) return shared.picture;
  if (!shared.isUnderWay && steady_clock::now() >= shared.retry) startFetch(url);
  const bool isThere = shared.ended.wait_for(
      lock, patience_, [&] { return shared.url != url || !shared.isUnderWay; });
  if (shared.url != url) return std::nullopt;
  shared.isMissed |= !isThere;
  return shared.picture;
}

/// With the lock held.
void WebPictures::startFetch(const std::string& url) {
  auto& shared = *shared_;
  if (shared.fetches >= kMostFetches) return;
  try {
    // Detached, as nobody may have to wait for a server.
    std::thread([shared = shared_, fetch = fetch_, url] { serve(shared, fetch, url); }).detach();
  } catch (const std::system_error&) {
    return;  // The system has no thread left.
  }
  ++shared.fetches;
  shared.isUnderWay = true;
}

void WebPictures::serve(const std::shared_ptr<Shared>& shared, const Fetch& fetch,
                        const std::string& url) {
  std::optional<Bytes> picture;
  try {
    picture = fetch(url);
  } catch (const std::exception&) {
    // The memory ran out: there is no picture.
  }
  const std::lock_guard lock(shared->mutex);
  --shared->fetches;
  if (shared->url != url) return;  // By now the player shows another one.
  shared->isUnderWay = false;
  shared->picture = std::move(picture);
  if (!shared->picture) shared->retry = steady_clock::now() + kAfterFailure;
  const bool isNews = std::exchange(shared->isMissed, false) && shared->picture;
  shared->ended.notify_all();
  if (isNews && shared->arrived) shared->arrived();
}

}  // namespace Corvella
