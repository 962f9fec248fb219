#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "players/mpris/track/TimedReads.h"
#include "players/mpris/track/TrackFileReader.h"
#include "tests/support/Eventually.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;

/// Reads against a file system of which some addresses answer when the test lets them.
class TimedReadsOfSlowFiles : public testing::Test {
 protected:
  static TimedReads::Deadline in(std::chrono::milliseconds time) {
    return std::chrono::steady_clock::now() + time;
  }
  /// A read that ends when it is let go, and is given up before.
  std::string readStuck(const std::string& address) {
    return reads_->read(address, in(10ms), [gate = gate_] {
      gate.wait();
      return std::string("late");
    });
  }
  std::string readSound(const std::string& address) {
    return reads_->read(address, in(1h), [] { return std::string("sound"); });
  }
  void letGo() { open_.set_value(); }

  std::promise<void> open_;
  std::shared_future<void> gate_ = open_.get_future().share();
  std::shared_ptr<TimedReads> reads_ = std::make_shared<TimedReads>();
};

TEST_F(TimedReadsOfSlowFiles, GiveUpTheStuckFileAndNoOther) {
  EXPECT_EQ(readStuck("/stuck"), "");
  EXPECT_EQ(readSound("/stuck"), "");
  EXPECT_EQ(readSound("/other"), "sound");

  letGo();
  EXPECT_TRUE(eventually([this] { return readSound("/stuck") == "sound"; }));
}

TEST_F(TimedReadsOfSlowFiles, KeepNoMoreThanAFewStuckThreads) {
  for (std::size_t file = 0; file < TimedReads::kMostGivenUp; ++file) {
    EXPECT_EQ(readSound("/other"), "sound") << file;
    readStuck("/" + std::to_string(file));
  }
  EXPECT_EQ(readSound("/other"), "");

  letGo();
  EXPECT_TRUE(eventually([this] { return readSound("/other") == "sound"; }));
}

TEST_F(TimedReadsOfSlowFiles, EndWithoutWaitingForWhatIsStuck) {
  auto owned = std::make_shared<int>(7);
  const std::weak_ptr<int> used = owned;
  reads_->read("/stuck", in(10ms), [gate = gate_, owned = std::move(owned)] {
    gate.wait();
    return *owned;
  });

  reads_.reset();

  letGo();
  EXPECT_TRUE(eventually([&] { return used.expired(); }));
}

TEST_F(TimedReadsOfSlowFiles, TakeAFailureForAnEmptyFile) {
  const auto fail = []() -> std::string { throw std::runtime_error("no memory"); };
  EXPECT_EQ(reads_->read("/broken", in(1h), fail), "");
  EXPECT_EQ(readSound("/broken"), "sound");
}

TEST_F(TimedReadsOfSlowFiles, LeaveATrackWithWhatItsPlayerSays) {
  const TemporaryFolder folders[2];
  const auto stuck = urlOf(makeTrack(folders[0], {"La", "0.7", pictureBytes("a")}));
  const auto sound = urlOf(makeTrack(folders[1], {"Lu", "0.2", pictureBytes("b")}));
  TrackFileReader reader(0s, 1h, reads_);
  readStuck(stuck);

  EXPECT_EQ(reader.tags(stuck, "said").lyrics, "said");
  EXPECT_EQ(reader.tags(stuck).rating, std::nullopt);
  EXPECT_EQ(reader.picture(stuck), std::nullopt);
  EXPECT_EQ(reader.tags(sound).rating, 20);
  // A picture file that is stuck leaves the picture in the track.
  EXPECT_EQ(textOf(reader.picture(sound, stuck)), pictureBytes("b"));

  letGo();
  EXPECT_TRUE(eventually([&] { return reader.lyrics(stuck, "said") == "La"; }));
}

TEST_F(TimedReadsOfSlowFiles, WaitForTheSameFileUntilTheDeadlineOfTheirScript) {
  const TemporaryFolder folder;
  const auto track = urlOf(makeTrack(folder, {"", "", pictureBytes("a")}));
  // A read that has begun, takes until it is let go and has all the time that it needs.
  std::promise<void> begun;
  auto slow = std::async(std::launch::async, [&] {
    return reads_->read("/cover", in(1h), [&] {
      begun.set_value();
      gate_.wait();
      return std::string("slow");
    });
  });
  begun.get_future().wait();

  // The time is used up by the cover, although the track itself could be read.
  EXPECT_EQ(TrackFileReader(0s, 10ms, reads_).picture(track, "/cover"), std::nullopt);
  // A read that nobody has time for is not begun, so the track is not taken for stuck.
  EXPECT_EQ(textOf(TrackFileReader(0s, 1h, reads_).picture(track)), pictureBytes("a"));

  letGo();
  EXPECT_EQ(slow.get(), "slow");
}

}  // namespace
}  // namespace Corvella
