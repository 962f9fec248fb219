#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Corvella {

/// Fetches pictures from the web beside those who ask for them, so that a server which is slow
/// holds up nothing else that is to be shown. The last picture is kept, as each look at a player
/// asks for it again; and so is, for a while, that there was none.
///
/// Any thread, and calls may overlap. Its end waits for no fetch.
class WebPictures {
 public:
  using Bytes = std::vector<std::byte>;
  using Fetch = std::function<std::optional<Bytes>(const std::string& url)>;

  /// For how long a picture that could not be fetched is not tried again.
  static constexpr std::chrono::seconds kAfterFailure{30};
  /// So many fetches may be under way, for pictures that nobody wants any more.
  static constexpr int kMostFetches = 4;

  /// `patience` is how long a call waits. `arrived` is told, on another thread, of each picture
  /// that came after its call had gone, if it is still the one that was asked for last; it must not
  /// call this object. `fetch` (see `readArtwork`) may run until after this object's end.
  WebPictures(std::chrono::milliseconds patience, std::function<void()> arrived,
              Fetch fetch = fetched);
  ~WebPictures();
  WebPictures(const WebPictures&) = delete;
  WebPictures& operator=(const WebPictures&) = delete;

  /// The picture behind an address of the web; absent when there is none, or none yet.
  std::optional<Bytes> picture(const std::string& url);

 private:
  struct Shared;

  static std::optional<Bytes> fetched(const std::string& url);
  static void serve(const std::shared_ptr<Shared>& shared, const Fetch& fetch,
                    const std::string& url);
  void startFetch(const std::string& url);

  const std::chrono::milliseconds patience_;
  const Fetch fetch_;
  const std::shared_ptr<Shared>
      shared_;  ///< Kept by each fetch too, so that none needs this object.
};

}  // namespace Corvella
