#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "players/mpris/PlayerRoster.h"
#include "tests/support/Eventually.h"

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
    roster_.propertiesChanged(owner, PropertyMap({{property, value}}), {});
  }
  /// Whom the choice falls on now.
  std::string chosen() {
    const auto player = roster_.chooseCurrent();
    return player ? player->owner : "";
  }
  /// What has been told since the last time.
  std::vector<PlayerNews> news() { return std::exchange(listener_.news, {}); }

  struct Listener final : PlayerNewsListener {
    void playerNews(PlayerNews told) override { news.push_back(told); }
    std::vector<PlayerNews> news;
  };
  Listener listener_;
  PlayerRoster roster_{"", &listener_};
};

struct ChoiceRow {
  std::string owner;
  std::string property;
  std::string value;
  std::string current;  ///< The owner of the current player then.
};

TEST_F(ARoster, KeepsTheOneThatPlaysElseTakesTheLastThatChangedAndStoppedOnesLast) {
  appear("a", ":1", "Paused");
  appear("b", ":2", "Playing");
  appear("c", ":3", "Stopped");
  const std::vector<ChoiceRow> rows{{":1", "PlaybackStatus", "Playing", ":2"},
                                    {":2", "PlaybackStatus", "Paused", ":1"},
                                    {":2", "PlaybackStatus", "Playing", ":1"},
                                    {":1", "PlaybackStatus", "Paused", ":2"},
                                    {":2", "PlaybackStatus", "Paused", ":2"},
                                    {":1", "Metadata", "", ":1"},
                                    {":3", "Metadata", "", ":1"},
                                    {":1", "PlaybackStatus", "Stopped", ":2"}};
  EXPECT_EQ(chosen(), ":2");
  for (const auto& row : rows) {
    change(row.owner, row.property, {row.value});
    EXPECT_EQ(chosen(), row.current) << &row - rows.data();
  }
}

TEST(ARosterOfPlayersThatStop, KeepsTheCurrentOneForAMomentUnlessAnotherPlays) {
  using Row = std::pair<milliseconds, std::string>;
  for (const auto& [betweenTracks, kept] : {Row{60'000'000, ":1"}, Row{0, ":2"}}) {
    PlayerRoster roster("", nullptr, betweenTracks);
    const auto tell = [&](const std::string& owner, const char* status) {
      roster.propertiesChanged(
          owner, PropertyMap(std::vector<Property>{{"PlaybackStatus", {status}}}), {});
      return roster.chooseCurrent()->owner;
    };
    roster.playerAppeared(kPrefix + "a", ":1");
    roster.playerAppeared(kPrefix + "b", ":2");
    EXPECT_EQ(tell(":1", "Playing"), ":1");
    EXPECT_EQ(tell(":2", "Paused"), ":1");
    EXPECT_EQ(tell(":1", "Stopped"), kept);
    EXPECT_EQ(tell(":2", "Playing"), ":2");
  }
}

TEST_F(ARoster, ForgetsAPlayerWithTheLastOfItsNames) {
  appear("vlc", ":1", "Playing");
  appear("vlc.instance7", ":1", "Playing");
  appear("b", ":2", "Paused");
  EXPECT_EQ(roster_.candidates().size(), 2U);
  roster_.playerVanished(kPrefix + "vlc.instance7");
  EXPECT_EQ(chosen(), ":1");
  roster_.playerVanished(kPrefix + "vlc");
  EXPECT_EQ(chosen(), ":2");
  roster_.busLost();
  EXPECT_EQ(chosen(), "");
}

TEST_F(ARoster, StandsByItsChoiceUntilItIsAskedToChooseAgain) {
  appear("a", ":1", "Paused");
  EXPECT_EQ(chosen(), ":1");
  appear("b", ":2", "Playing");
  EXPECT_EQ(roster_.current()->owner, ":1");
  roster_.playerVanished(kPrefix + "a");
  EXPECT_EQ(roster_.current(), std::nullopt);
  EXPECT_FALSE(roster_.currentDescription().exists());
  EXPECT_EQ(chosen(), ":2");
}

TEST_F(ARoster, TellsTheNewsOfTheCurrentPlayer) {
  using enum PlayerNews;
  roster_.playersListed();
  appear("a", ":1", "Stopped");
  EXPECT_THAT(news(), testing::IsEmpty());  // Nobody has looked yet.
  roster_.playerVanished(kPrefix + "a");
  EXPECT_EQ(chosen(), "");
  appear("a", ":1", "Playing");
  EXPECT_THAT(news(), testing::ElementsAre(Changed));  // There is one to be shown.
  EXPECT_EQ(chosen(), ":1");
  appear("b", ":2", "Paused");
  const PropertyValue no{false};
  const PropertyMap identity({{"Identity", {"A"}}, {"CanRaise", {true}}});
  const PropertyMap bare(std::vector<Property>{{"PlaybackStatus", {"Playing"}}});
  struct Row {
    const char* what;
    std::function<void()> happens;
    std::vector<PlayerNews> told;
  };
  const std::vector<Row> rows{
      {"volume", [&] { change(":1", "Volume", {0.5}); }, {Changed}},
      {"of another", [&] { change(":2", "Volume", {0.5}); }, {}},
      {"nothing shown", [&] { change(":1", "LoopStatus", {"None"}); }, {}},
      {"ability", [&] { change(":1", "CanGoNext", no); }, {Described}},
      {"invalidated",
       [&] { roster_.propertiesChanged(":1", PropertyMap(), {"Metadata"}); },
       {Changed}},
      {"jump", [&] { roster_.lookAgain(":1"); }, {Changed}},
      {"identity", [&] { roster_.identityListed(":1", identity); }, {Described}},
      {"no volume", [&] { roster_.propertiesListed(":1", bare); }, {Described}},
      {"state", [&] { change(":1", "PlaybackStatus", {"Paused"}); }, {Described, Changed}},
      {"another is better", [&] { change(":2", "PlaybackStatus", {"Playing"}); }, {Changed}},
      {"silent", [&] { roster_.fellSilent(":1"); }, {Described}},
      {"answers", [&] { roster_.playerAnswered(":1", nullptr); }, {Changed}},
      {"other left", [&] { roster_.playerVanished(kPrefix + "b"); }, {}},
      {"left", [&] { roster_.playerVanished(kPrefix + "a"); }, {Left}},
      {"gone for good", [&] { roster_.busLost(); }, {}}};
  news();
  for (const auto& row : rows) {
    if (row.what == std::string("left")) {
      const auto shown = roster_.currentDescription();
      EXPECT_EQ(shown, (PlayerDescription{.name = "a",
                                          .identity = "A",
                                          .canRaise = true,
                                          .keepsRating = false,
                                          .keepsVolume = false,
                                          .canGoNext = false}));
    }
    row.happens();
    EXPECT_EQ(news(), row.told) << row.what;
  }
}

TEST_F(ARoster, IgnoresNewsOfStrangers) {
  change(":9", "PlaybackStatus", {"Playing"});
  roster_.learn(":9", PlayerState::Playing);
  roster_.learn(":9", PlayerAbilities());
  roster_.playerAnswered(":9", nullptr);
  EXPECT_FALSE(roster_.fellSilent(":9"));
  EXPECT_EQ(chosen(), "");
}

TEST_F(ARoster, PutsASilentPlayerLastUntilAProbeIsAnswered) {
  appear("a", ":1", "Playing");
  EXPECT_TRUE(roster_.fellSilent(":1"));
  EXPECT_FALSE(roster_.fellSilent(":1"));
  EXPECT_TRUE(roster_.current()->silent);
  appear("b", ":2", "Stopped");
  EXPECT_EQ(chosen(), ":2");
  change(":1", "PlaybackStatus", {"Paused"});
  EXPECT_EQ(chosen(), ":2");
  roster_.playerAnswered(":1", nullptr);
  EXPECT_EQ(chosen(), ":1");
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
  for (const auto& [pinned, name] : {std::pair{"vlc", "vlc"},
                                     {"vlc", "vlc.instance42"},
                                     {"org.mpris.MediaPlayer2.vlc", "vlc"},
                                     {"VLC", "vlc.instance42"},
                                     {"strawberry", "Strawberry"},
                                     {"org.mpris.mediaplayer2.VLC.instance42", "vlc.instance42"}}) {
    EXPECT_TRUE(counts(pinned, name)) << pinned << ", " << name;
  }
  EXPECT_FALSE(counts("vlc", "vlc2"));
  EXPECT_FALSE(counts("vlc.instance42", "vlc"));
}

TEST(AwaitingTheList, EndsWhenItIsThereOrAtTheDeadline) {
  PlayerRoster roster;
  roster.awaitList(milliseconds(1));
  std::atomic<bool> there = false;
  std::thread bus([&] {
    there = true;
    roster.playersListed();
  });

  roster.awaitList(longestWait);
  EXPECT_TRUE(there);
  bus.join();
}

}  // namespace
}  // namespace Corvella
