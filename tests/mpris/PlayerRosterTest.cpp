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
    roster_->playerAppeared(kPrefix + name, owner);
    const PropertyValue value{status};
    roster_->playerAnswered(owner, &value);
  }
  void change(const std::string& owner, const std::string& property, const PropertyValue& value) {
    roster_->propertiesChanged(owner, PropertyMap({{property, value}}), {});
  }
  /// Whom the choice falls on now.
  std::string chosen() {
    const auto player = roster_->chooseCurrent();
    return player ? player->owner : "";
  }
  std::string chosenAfter(const char* owner, const char* property, const std::string& value) {
    change(owner, property, {value});
    return chosen();
  }
  /// What has been told since the last time.
  std::vector<PlayerNews> news() { return std::exchange(listener_.news, {}); }

  struct Listener final : PlayerNewsListener {
    void playerNews(PlayerNews told) override { news.push_back(told); }
    std::vector<PlayerNews> news;
  };
  Listener listener_;
  std::optional<PlayerRoster> roster_{std::in_place, "", &listener_};
};

TEST_F(ARoster, KeepsTheOneThatPlaysElseTakesTheLastThatChangedAndStoppedOnesLast) {
  appear("a", ":1", "Paused");
  appear("b", ":2", "Playing");
  appear("c", ":3", "Stopped");
  EXPECT_EQ(chosen(), ":2");
  EXPECT_EQ(chosenAfter(":1", "PlaybackStatus", "Playing"), ":2");
  EXPECT_EQ(chosenAfter(":2", "PlaybackStatus", "Paused"), ":1");
  EXPECT_EQ(chosenAfter(":2", "PlaybackStatus", "Playing"), ":1");
  EXPECT_EQ(chosenAfter(":1", "PlaybackStatus", "Paused"), ":2");
  EXPECT_EQ(chosenAfter(":2", "PlaybackStatus", "Paused"), ":2");
  EXPECT_EQ(chosenAfter(":1", "Metadata", ""), ":1");
  EXPECT_EQ(chosenAfter(":3", "Metadata", ""), ":1");
  EXPECT_EQ(chosenAfter(":1", "PlaybackStatus", "Stopped"), ":2");
}

TEST_F(ARoster, KeepsTheOneThatStopsForAMomentUnlessAnotherPlays) {
  for (const auto& [betweenTracks, kept] : {std::pair(60'000'000, ":1"), std::pair(0, ":2")}) {
    roster_.emplace("", nullptr, milliseconds(betweenTracks));
    appear("a", ":1", "Playing");
    appear("b", ":2", "Paused");
    EXPECT_EQ(chosen(), ":1");
    EXPECT_EQ(chosenAfter(":1", "PlaybackStatus", "Stopped"), kept);
    EXPECT_EQ(chosenAfter(":2", "PlaybackStatus", "Playing"), ":2");
  }
}

TEST_F(ARoster, ForgetsAPlayerWithTheLastOfItsNames) {
  appear("vlc", ":1", "Playing");
  appear("vlc.instance7", ":1", "Playing");
  appear("b", ":2", "Paused");
  EXPECT_EQ(roster_->candidates().size(), 2U);
  EXPECT_EQ(roster_->candidates().front().owner, ":2");  // By their names.
  roster_->playerVanished(kPrefix + "vlc.instance7");
  EXPECT_EQ(chosen(), ":1");
  roster_->playerVanished(kPrefix + "vlc");
  EXPECT_EQ(chosen(), ":2");
  roster_->busLost();
  EXPECT_EQ(chosen(), "");
}

TEST_F(ARoster, StandsByItsChoiceUntilItIsAskedToChooseAgain) {
  appear("a", ":1", "Paused");
  EXPECT_EQ(chosen(), ":1");
  appear("b", ":2", "Playing");
  EXPECT_EQ(roster_->current()->owner, ":1");
  roster_->playerVanished(kPrefix + "a");
  EXPECT_EQ(roster_->current(), std::nullopt);
  EXPECT_FALSE(roster_->currentDescription().exists());
  EXPECT_EQ(chosen(), ":2");
}

TEST_F(ARoster, TellsTheNewsOfTheCurrentPlayer) {
  using enum PlayerNews;
  roster_->playersListed();
  appear("a", ":1", "Stopped");
  EXPECT_THAT(news(), testing::IsEmpty());  // Nobody has looked yet.
  roster_->playerVanished(kPrefix + "a");
  EXPECT_FALSE(roster_->currentDescription().known);
  EXPECT_EQ(chosen(), "");
  EXPECT_TRUE(roster_->currentDescription().known);
  appear("a", ":1", "Playing");
  EXPECT_THAT(news(), testing::ElementsAre(Changed));  // There is one to be shown.
  EXPECT_EQ(chosen(), ":1");
  appear("b", ":2", "Paused");
  const PropertyValue no{false};
  const PropertyMap identity({{"Identity", {"A"}}, {"CanRaise", {true}}});
  const PropertyMap none;
  PlayerDescription shown{.name = "a", .identity = "A", .canRaise = true};
  shown.keepsRating = shown.keepsVolume = shown.canGoNext = false;
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
      {"first answer", [&] { roster_->noticeVolume(":1", 50); }, {}},
      {"same answer", [&] { roster_->noticeVolume(":1", 50); }, {}},
      {"untold volume", [&] { roster_->noticeVolume(":1", 60); }, {Changed}},
      {"commanded", [&] { roster_->expectChange(":1"); }, {}},
      {"obeyed", [&] { roster_->noticeVolume(":1", 70); }, {}},
      {"first track", [&] { roster_->noticeTrack(":1", "x"); }, {}},
      {"untold artist", [&] { roster_->noticeTrack(":1", "y"); }, {Changed}},
      {"told volume", [&] { change(":1", "Volume", {0.8}); }, {Changed}},
      {"as told", [&] { roster_->noticeVolume(":1", 80); }, {}},
      {"told track", [&] { change(":1", "Metadata", {"z"}); }, {Changed}},
      {"track as told", [&] { roster_->noticeTrack(":1", "z"); }, {}},
      {"ability", [&] { change(":1", "CanGoNext", no); }, {Described}},
      {"invalid", [&] { roster_->propertiesChanged(":1", none, {"Metadata"}); }, {Changed}},
      {"jump", [&] { roster_->lookAgain(":1"); }, {Changed}},
      {"identity", [&] { roster_->identityListed(":1", identity); }, {Described}},
      {"no volume", [&] { roster_->propertiesListed(":1", bare); }, {Described}},
      {"state", [&] { change(":1", "PlaybackStatus", {"Paused"}); }, {Described, Halted}},
      {"another is better", [&] { change(":2", "PlaybackStatus", {"Playing"}); }, {Changed}},
      {"silent", [&] { roster_->fellSilent(":1"); }, {Described}},
      {"answers", [&] { roster_->playerAnswered(":1", nullptr); }, {Changed}},
      {"other left", [&] { roster_->playerVanished(kPrefix + "b"); }, {}},
      {"asked", [&] { EXPECT_EQ(roster_->currentDescription(), shown); }, {}},
      {"left", [&] { roster_->playerVanished(kPrefix + "a"); }, {Left}},
      {"stranger", [&] { roster_->noticeVolume(":9", 1); }, {}},
      {"no bus", [&] { roster_->busLost(); }, {Described}},
      {"still none", [&] { roster_->busLost(); }, {}},
      {"a silent bus", [&] { roster_->busFound(); }, {Described}},
      {"a bus", [&] { roster_->busConnected(); }, {Described}},
      {"gone with the bus", [&] { roster_->busLost(); }, {Left}}};
  news();
  for (const auto& row : rows) {
    row.happens();
    EXPECT_EQ(news(), row.told) << row.what;
  }
}

TEST(PropertyMaps, AreEqualWhereTheyListTheSame) {
  const auto ofVolume = [](double volume) { return PropertyMap({{"Volume", {volume}}}); };
  EXPECT_TRUE(ofVolume(0.5) == ofVolume(0.5) && !(ofVolume(0.5) == ofVolume(0.6)));
}

TEST_F(ARoster, IgnoresNewsOfStrangers) {
  change(":9", "PlaybackStatus", {"Playing"});
  roster_->learn(":9", PlayerState::Playing);
  roster_->learn(":9", PlayerAbilities());
  roster_->playerAnswered(":9", nullptr);
  roster_->propertiesListed(":9",
                            PropertyMap(std::vector<Property>{{"PlaybackStatus", {"Playing"}}}));
  roster_->identityListed(":9", PropertyMap(std::vector<Property>{{"Identity", {"X"}}}));
  EXPECT_FALSE(roster_->fellSilent(":9"));
  EXPECT_EQ(chosen(), "");
}

TEST_F(ARoster, HopesForBetterAnswersTenTimesAndAgainAfterNews) {
  appear("a", ":1", "Playing");
  for (int round = 0; round < 2; ++round) {
    for (int answer = 0; answer < 10; ++answer) EXPECT_TRUE(roster_->mayAnswerBetter(":1"));
    EXPECT_FALSE(roster_->mayAnswerBetter(":1"));
    change(":1", "Volume", {0.5});
  }
}

TEST_F(ARoster, PutsASilentPlayerLastUntilAProbeIsAnswered) {
  appear("a", ":1", "Playing");
  EXPECT_TRUE(roster_->fellSilent(":1"));
  EXPECT_FALSE(roster_->fellSilent(":1"));
  EXPECT_TRUE(roster_->current()->silent);
  appear("b", ":2", "Stopped");
  EXPECT_EQ(chosen(), ":2");
  EXPECT_EQ(chosenAfter(":1", "PlaybackStatus", "Paused"), ":2");
  roster_->playerAnswered(":1", nullptr);
  EXPECT_EQ(chosen(), ":1");
  EXPECT_FALSE(roster_->current()->silent);
  EXPECT_EQ(roster_->current()->state, PlayerState::Paused);
}

TEST_F(ARoster, LearnsAbilitiesAnewWhenAPropertyTurnsUp) {
  appear("a", ":1", "Playing");
  EXPECT_EQ(chosen(), ":1");
  roster_->learn(":1", PlayerAbilities{.listsVolume = true, .listsRating = false});
  EXPECT_TRUE(roster_->currentDescription().keepsVolume);
  EXPECT_FALSE(roster_->currentDescription().keepsRating);
  change(":1", "Metadata", {});
  EXPECT_TRUE(roster_->current()->abilities.has_value());
  change(":1", "Rating", {0.5});
  EXPECT_FALSE(roster_->current()->abilities.has_value());
}

TEST_F(ARoster, CountsOnlyPlayersOfThePinnedName) {
  const auto counts = [this](const char* pinned, const char* name) {
    roster_.emplace(pinned);
    appear(name, ":1", "Playing");
    EXPECT_EQ(roster_->candidates().size(), chosen() == ":1" ? 1U : 0U);
    return chosen() == ":1";
  };
  EXPECT_TRUE(counts("vlc", "vlc"));
  EXPECT_TRUE(counts("vlc", "vlc.instance42"));
  EXPECT_TRUE(counts("org.mpris.MediaPlayer2.vlc", "vlc"));
  EXPECT_TRUE(counts("VLC", "vlc.instance42"));
  EXPECT_TRUE(counts("strawberry", "Strawberry"));
  EXPECT_TRUE(counts("org.mpris.mediaplayer2.VLC.instance42", "vlc.instance42"));
  EXPECT_FALSE(counts("vlc", "vlc2"));
  EXPECT_FALSE(counts("vlc.instance42", "vlc"));
}

TEST_F(ARoster, TakesACopyForThePinnedPlayerOnlyWhileThatIsNotThere) {
  roster_.emplace("vlc", &listener_);
  roster_->playersListed();
  appear("vlc.instance7", ":2", "Playing");
  EXPECT_EQ(chosen(), ":2");
  news();
  appear("vlc", ":1", "Paused");
  EXPECT_THAT(news(), testing::ElementsAre(PlayerNews::Left));
  EXPECT_EQ(chosen(), ":1");
}

TEST_F(ARoster, CountsAPlayerThatGivesUpThePinnedNameAsLeft) {
  for (const auto* const state : {"Playing", "Stopped"}) {  // One that stops may soon go on.
    roster_.emplace("foo", &listener_);
    roster_->playersListed();
    appear("foo", ":1", "Playing");
    appear("bar", ":1", "Playing");
    EXPECT_EQ(chosenAfter(":1", "PlaybackStatus", state), ":1");
    news();
    roster_->playerVanished(kPrefix + "foo");
    EXPECT_THAT(news(), testing::ElementsAre(PlayerNews::Left)) << state;
    EXPECT_EQ(roster_->current(), std::nullopt);
    EXPECT_FALSE(roster_->currentDescription().exists());
    EXPECT_EQ(chosen(), "");
  }
}

TEST_F(ARoster, TellsPlayersApartThatCallThemselvesTheSame) {
  for (const auto& [name, owner] : {std::pair("vlc", ":1"), {"vlc.instance7", ":2"}, {"b", ":3"}}) {
    appear(name, owner, "Paused");
    const PropertyValue identity{*name == 'v' ? "VLC" : "B"};
    roster_->identityListed(owner, PropertyMap({{"Identity", identity}}));
  }
  std::vector<std::string> identities;
  for (const auto& each : roster_->descriptions()) identities.push_back(each.identity);
  EXPECT_THAT(identities, testing::ElementsAre("B", "VLC (vlc)", "VLC (vlc.instance7)"));
}

TEST_F(ARoster, AwaitsItsListUntilTheDeadline) {
  roster_->awaitList(milliseconds(1));
  std::atomic<bool> there = false;
  const std::jthread bus([&] {
    there = true;
    roster_->playersListed();
  });
  roster_->awaitList(longestWait);
  EXPECT_TRUE(there);
}

}  // namespace
}  // namespace Corvella
