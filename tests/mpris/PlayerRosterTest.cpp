#include <chrono>
#include <string>

#include <gmock/gmock.h>

#include "players/mpris/PlayerRoster.h"

namespace Corvella {
namespace {

using std::chrono::milliseconds;

const std::string kPrefix = "org.mpris.MediaPlayer2.";

class ARoster : public testing::Test {
 protected:
  void appear(const std::string& name, const std::string& owner, const std::string& status) {
    roster_.playerAppeared(kPrefix + name, owner);
    const PropertyValue value{status};
    roster_.playerAnswered(owner, &value);
  }
  void change(const std::string& owner, const std::string& property, const PropertyValue& value) {
    roster_.propertiesChanged(owner, PropertyMap({{property, value}}));
  }
  void change(const std::string& owner, const std::string& status) {
    change(owner, "PlaybackStatus", {status});
  }
  std::string current() {
    const auto player = roster_.current();
    return player ? player->owner : "";
  }

  PlayerRoster roster_;
};

TEST_F(ARoster, KeepsTheCurrentPlayerAsLongAsItPlays) {
  appear("a", ":1", "Paused");
  appear("b", ":2", "Playing");
  EXPECT_EQ(current(), ":2");
  change(":1", "Playing");
  EXPECT_EQ(current(), ":2");
  change(":2", "Paused");
  EXPECT_EQ(current(), ":1");
  change(":2", "Playing");
  EXPECT_EQ(current(), ":1");
}

TEST_F(ARoster, PrefersTheOneThatChangedLastAndStoppedOnesLeast) {
  appear("a", ":1", "Paused");
  appear("b", ":2", "Paused");
  appear("c", ":3", "Stopped");
  EXPECT_EQ(current(), ":2");
  change(":1", "Metadata", {});
  EXPECT_EQ(current(), ":1");
  change(":3", "Volume", {0.5});
  EXPECT_EQ(current(), ":1");
  change(":1", "Stopped");
  EXPECT_EQ(current(), ":2");
}

TEST_F(ARoster, ForgetsAPlayerWithTheLastOfItsNames) {
  appear("vlc", ":1", "Playing");
  appear("vlc.instance7", ":1", "Playing");
  appear("b", ":2", "Paused");
  EXPECT_EQ(roster_.players().size(), 2U);
  roster_.playerVanished(kPrefix + "vlc.instance7");
  EXPECT_EQ(current(), ":1");
  roster_.playerVanished(kPrefix + "vlc");
  EXPECT_EQ(current(), ":2");
  roster_.busLost();
  EXPECT_EQ(current(), "");
}

TEST_F(ARoster, IgnoresNewsOfStrangers) {
  change(":9", "Playing");
  roster_.learn(":9", PlayerState::Playing);
  EXPECT_FALSE(roster_.fellSilent(":9"));
  EXPECT_EQ(current(), "");
}

TEST_F(ARoster, PutsASilentPlayerLastUntilAProbeIsAnswered) {
  appear("a", ":1", "Playing");
  EXPECT_TRUE(roster_.fellSilent(":1"));
  EXPECT_FALSE(roster_.fellSilent(":1"));
  EXPECT_TRUE(roster_.current()->silent);
  appear("b", ":2", "Stopped");
  EXPECT_EQ(current(), ":2");
  change(":1", "Paused");
  EXPECT_EQ(current(), ":2");
  roster_.playerAnswered(":1", nullptr);
  EXPECT_EQ(current(), ":1");
  EXPECT_FALSE(roster_.current()->silent);
  EXPECT_EQ(roster_.current()->state, PlayerState::Paused);
}

TEST_F(ARoster, LearnsAbilitiesAnewWhenAPropertyTurnsUp) {
  appear("a", ":1", "Playing");
  roster_.learn(":1", PlayerAbilities{.listsVolume = true, .listsRating = false});
  change(":1", "Metadata", {});
  EXPECT_TRUE(roster_.current()->abilities.has_value());
  change(":1", "Rating", {0.5});
  EXPECT_FALSE(roster_.current()->abilities.has_value());
}

TEST(APinnedRoster, CountsOnlyPlayersOfThatName) {
  const auto counts = [](const std::string& pinned, const std::string& name) {
    PlayerRoster roster(pinned);
    roster.playerAppeared(kPrefix + name, ":1");
    return roster.current().has_value();
  };
  EXPECT_TRUE(counts("vlc", "vlc"));
  EXPECT_TRUE(counts("vlc", "vlc.instance42"));
  EXPECT_TRUE(counts("org.mpris.MediaPlayer2.vlc", "vlc"));
  EXPECT_FALSE(counts("vlc", "vlc2"));
  EXPECT_FALSE(counts("vlc.instance42", "vlc"));
}

TEST(AwaitingTheList, EndsWhenItIsThereOrAtTheDeadline) {
  PlayerRoster roster;
  const auto start = std::chrono::steady_clock::now();
  roster.awaitList(milliseconds(30));
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(30));
  roster.playersListed();
  roster.awaitList(std::chrono::hours(1));
}

}  // namespace
}  // namespace Corvella
