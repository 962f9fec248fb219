#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <functional>
#include <iterator>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "host/ExtensionThread.h"
#include "host/WidgetDisplay.h"
#include "players/embedded/EmbeddedPlayer.h"
#include "tests/support/Eventually.h"
#include "tests/support/HostParts.h"
#include "tests/support/ScriptGate.h"
#include "tests/support/ScriptedStack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;

/// Keeps the display up to date and waits for it to show something.
class WatchingHost final : public WidgetHost {
 public:
  void displayChanged(WidgetSnapshot snapshot) override {
    const std::lock_guard lock(mutex_);
    ++snapshots_;
    display_.apply(std::move(snapshot));
  }
  void updateReported(NCUpdateResult result) override {
    const std::lock_guard lock(mutex_);
    reports_.push_back(result);
  }
  void answered(std::uint64_t number) override {
    const std::lock_guard lock(mutex_);
    answered_ = number;
  }
  void startFailed(const std::string& reason) override {
    const std::lock_guard lock(mutex_);
    failure_ = reason;
  }

  bool waitUntil(const std::function<bool(const WidgetDisplay&)>& shown) {
    const auto isShown = [&] {
      const std::lock_guard lock(mutex_);
      return shown(display_);
    };
    return eventually(isShown, 20s);
  }
  bool waitForTitle(const std::string& title) {
    return waitUntil([&](const auto& display) {
      const auto* field = display.template content<TextFieldContent>("songTitle");
      return field != nullptr && field->text == title;
    });
  }
  bool waitForButton(const std::string& button, const std::string& title) {
    return waitUntil([&](const auto& display) {
      const auto* content = display.template content<ButtonContent>(button);
      return content != nullptr && content->title == title;
    });
  }
  std::vector<NCUpdateResult> reports() { return copyOf(reports_); }
  std::string failure() { return copyOf(failure_); }
  std::uint64_t newestAnswer() { return copyOf(answered_); }
  int snapshots() { return copyOf(snapshots_); }

 private:
  template <typename Value>
  Value copyOf(const Value& value) {
    const std::lock_guard lock(mutex_);
    return value;
  }

  std::mutex mutex_;
  WidgetDisplay display_;
  std::vector<NCUpdateResult> reports_;
  std::string failure_;
  int snapshots_ = 0;
  std::uint64_t answered_ = 0;
};

class AnExtension : public testing::Test {
 protected:
  HostParts parts_;
  EmbeddedPlayer player_{parts_.clock, parts_.bundle};
  PlayerScriptRunner runner_{player_, shippedTargets()};
  ScriptGate gate_{runner_};
  WatchingHost host_;
};

/// The scripts that the user's input sends while the widget is busy with a first one.
class ABusyExtension : public AnExtension {
 protected:
  std::vector<std::string> sentAfter(const std::function<void(ExtensionThread&)>& input) {
    EXPECT_TRUE(player_.perform(PlaybackRequest::Pause));  // No ticks in between.
    ExtensionThread extension(parts_.services(gate_), host_);
    extension.appear();
    EXPECT_TRUE(host_.waitForTitle(embeddedTracks()[0].track.name));
    gate_.close();
    const auto before = static_cast<std::ptrdiff_t>(gate_.scripts().size());
    extension.setValue("soundVolume", 1);
    EXPECT_TRUE(eventually([&] { return gate_.count("set sound volume to 1") == 1; }, 20s));
    input(extension);
    extension.ping(1);
    gate_.open();
    EXPECT_TRUE(eventually([&] { return host_.newestAnswer() == 1; }, 20s));
    const auto all = gate_.scripts();
    std::vector<std::string> sent;
    std::copy_if(all.begin() + before + 1, all.end(), std::back_inserter(sent),
                 [](const std::string& script) {
                   return script.find("to set ") != std::string::npos ||
                          script.ends_with("to next track") || script.ends_with("to pause") ||
                          script.ends_with("to play");
                 });
    return sent;
  }
};

TEST_F(ABusyExtension, SendsTheNewestValueOfEachControl) {
  const auto sent = sentAfter([](ExtensionThread& extension) {
    for (int volume = 2; volume <= 50; ++volume) extension.setValue("soundVolume", volume);
    for (int stars = 1; stars <= 5; ++stars) extension.setValue("songRatingIndicator", stars);
  });
  EXPECT_THAT(sent, testing::ElementsAre(testing::EndsWith("set sound volume to 50"),
                                         testing::EndsWith("set rating of current track to 100")));
}

TEST_F(ABusyExtension, KeepsValuesAndClicksInOrder) {
  const auto sent = sentAfter([](ExtensionThread& extension) {
    extension.setValue("songRatingIndicator", 1);
    extension.click("nextButton");
    extension.setValue("songRatingIndicator", 5);
    extension.click("playButton");
    extension.click("playButton");
  });
  EXPECT_THAT(sent,
              testing::ElementsAre(testing::EndsWith("set rating of current track to 20"),
                                   testing::EndsWith("to next track"),
                                   testing::EndsWith("set rating of current track to 100"),
                                   testing::EndsWith("to play"), testing::EndsWith("to pause")));
}

TEST_F(AnExtension, StartsNoScriptOnceItEnds) {
  EndingScriptRunner runner(gate_);
  EXPECT_NE(runner.initWithSource("one"), nullptr);
  runner.end();
  EXPECT_EQ(runner.initWithSource("two"), nullptr);
  EXPECT_THAT(gate_.scripts(), testing::ElementsAre("one"));
}

TEST_F(AnExtension, TellsOfUpdatesAfterTheDisplayAndOfNothingTwice) {
  ExtensionThread extension(parts_.services(gate_), host_);
  extension.appear();
  ASSERT_TRUE(host_.waitForTitle(embeddedTracks()[0].track.name));
  extension.click("playButton");
  ASSERT_TRUE(host_.waitForButton("playButton", "\u25b6"));
  const auto before = host_.snapshots();
  extension.click("nosuchButton");
  extension.performUpdate();
  ASSERT_TRUE(eventually([&] { return !host_.reports().empty(); }));
  EXPECT_THAT(host_.reports(), testing::ElementsAre(NCUpdateResultNewData));
  EXPECT_EQ(host_.snapshots(), before);
}

TEST_F(AnExtension, EndsCleanlyWhileScriptsAndRefreshesAreUnderWay) {
  for (int round = 0; round < 10; ++round) {
    WatchingHost host;
    ExtensionThread extension(parts_.services(gate_), host);
    extension.appear();
    for (int i = 0; i < round; ++i)
      extension.click(i % 2 == 0 ? "nextButton" : "toggleLyricsButton");
    if (round % 3 == 0)
      host.waitUntil([](const auto& display) { return !display.views().empty(); });
  }
}

TEST_F(AnExtension, WithoutItsInterfaceFileSaysWhyItDidNotStart) {
  const TemporaryFolder folder;
  folder.write("Info.plist", "<plist/>");
  const NSBundle bundle(folder.path());
  ExtensionThread extension(parts_.services(gate_, bundle), host_);
  extension.appear();
  ASSERT_TRUE(eventually([&] { return !host_.failure().empty(); }));
  EXPECT_THAT(host_.failure(), testing::HasSubstr("Info.plist"));
}

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleMock(&argc, argv);
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
