#include <QCoreApplication>
#include <map>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "host/panel/WidgetBridge.h"

namespace Corvella {
namespace {

TEST(ABridge, CarriesTheLatestOfEachViewAtOnce) {
  WidgetBridge bridge;
  std::map<std::string, std::string> shown;
  int times = 0;
  QObject::connect(&bridge, &WidgetBridge::displayShown, [&](const WidgetSnapshot& snapshot) {
    ++times;
    for (const auto& view : snapshot.views) shown[view.identifier] += view.accessibilityLabel;
  });
  const std::map<std::string, std::string> first{{"title", "old"}, {"volume", "loud"}};
  const std::map<std::string, std::string> second{{"title", "new"}, {"rating", "best"}};
  for (const auto& views : {first, second}) {
    WidgetSnapshot snapshot;
    for (const auto& [identifier, label] : views) {
      snapshot.views.push_back(
          {.identifier = identifier, .frame = {}, .accessibilityLabel = label, .content = {}});
    }
    bridge.displayChanged(std::move(snapshot));
  }
  QCoreApplication::processEvents();
  EXPECT_EQ(times, 1);
  const std::map<std::string, std::string> expected{
      {"title", "new"}, {"volume", "loud"}, {"rating", "best"}};
  EXPECT_EQ(shown, expected);
}

}  // namespace
}  // namespace Corvella
