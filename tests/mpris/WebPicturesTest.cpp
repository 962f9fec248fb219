#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "players/mpris/artwork/WebPictures.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using Bytes = WebPictures::Bytes;

Bytes bytes(char content) {
  return {static_cast<std::byte>(content)};
}

TEST(AWebPicture, HoldsNobodyUpAndIsFetchedOnce) {
  std::promise<std::optional<Bytes>> answer;
  std::atomic<int> fetches = 0;
  std::promise<void> arrived;
  const auto fetch = [&, come = answer.get_future().share()](const std::string& url) {
    ++fetches;
    if (url == "slow") return come.get();
    return url == "none" ? std::nullopt : std::optional(bytes('f'));
  };
  WebPictures slow(
      0ms, [&] { arrived.set_value(); }, fetch);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(slow.picture("slow"), std::nullopt);
  answer.set_value(bytes('s'));
  arrived.get_future().wait();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(slow.picture("slow"), bytes('s'));
  EXPECT_EQ(fetches, 1);

  WebPictures patient(
      1h, [] { FAIL() << "nobody has missed it"; }, fetch);
  for (const auto& [url, picture] : {std::pair("fast", std::optional(bytes('f'))), {"none", {}}}) {
    fetches = 0;
    for (int i = 0; i < 2; ++i) EXPECT_EQ(patient.picture(url), picture);
    EXPECT_EQ(fetches, 1) << url;
  }
}

}  // namespace
}  // namespace Corvella
