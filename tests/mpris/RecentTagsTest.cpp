#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "players/mpris/track/RecentTags.h"

namespace Corvella {
namespace {

class RememberedTags : public testing::Test {
 protected:
  static std::shared_ptr<const TrackTags> tags(std::string lyrics) {
    return std::make_shared<const TrackTags>(TrackTags{std::move(lyrics), std::nullopt});
  }
  std::string found(const std::string& path, const FileIdentity& identity) {
    const auto known = recent_.find(path, identity);
    return known ? known->lyrics : "nothing";
  }

  RecentTags recent_;
  FileIdentity old_{1, 2, 3, 4, 5};
};

TEST_F(RememberedTags, AreForgottenForNewerOnesOfTheFileOrWhenManyFilesFollow) {
  auto touched = old_;
  touched.changed += 1;
  recent_.remember("/a", old_, tags("A"));
  recent_.remember("/a", touched, tags("A2"));
  EXPECT_EQ(found("/a", old_), "nothing");

  for (int file = 0; file < 20; ++file) {
    recent_.remember("/" + std::to_string(file), old_, tags("B"));
    EXPECT_EQ(found("/a", touched), "A2") << "asked for all the time";
  }

  EXPECT_EQ(found("/19", old_), "B");
  EXPECT_EQ(found("/0", old_), "nothing");
}

TEST_F(RememberedTags, LeaveOutFilesInTheirWriting) {
  auto fresh = old_;
  fresh.changed =
      std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
  recent_.remember("/fresh", fresh, tags("A"));

  EXPECT_EQ(found("/fresh", fresh), "nothing");
}

TEST_F(RememberedTags, ServeSeveralThreadsAtOnce) {
  const std::vector<std::string> paths{"/a", "/b", "/c", "/d"};
  for (const auto& path : paths) recent_.remember(path, old_, tags(path));
  std::vector<std::future<void>> threads(4);

  for (auto& thread : threads) {
    thread = std::async(std::launch::async, [&] {
      for (int round = 0; round < 50'000; ++round) {
        for (const auto& path : paths) EXPECT_EQ(found(path, old_), path);
        recent_.remember("/other", old_, tags("other"));
      }
    });
  }

  for (auto& thread : threads) thread.get();
}

}  // namespace
}  // namespace Corvella
