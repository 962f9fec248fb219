#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "platform/appkit/NSNibLoader.h"
#include "platform/foundation/NSClassRegistry.h"
#include "tests/support/InterfaceElement.h"
#include "tests/support/RecordingOwner.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ThrowsMessage;

constexpr std::string_view interface =
    R"(<document type="com.apple.InterfaceBuilder3.Cocoa.XIB" version="3.0"><objects>
<customObject id="-2" customClass="Owner" customModule="Tests"><connections>
<outlet property="view" destination="root" id="o1"/>
<outlet property="button" destination="go" id="o2"/>
</connections></customObject><customView identifier="root" id="root" customClass="Waking">
<rect key="frame" x="1" y="2" width="3" height="4"/><subviews>
<button id="go"><rect key="frame" x="5" y="6" width="7" height="8"/><buttonCell key="cell"/>
<connections><action selector="go:" target="-2" id="a"/></connections></button>
<slider id="slider"><rect key="frame" x="1" y="2" width="3" height="4"/>
<sliderCell key="cell" maxValue="5"/></slider>
</subviews></customView></objects></document>)";

/// The interface with its first `old` replaced.
std::string interfaceWith(std::string_view old, std::string_view replacement) {
  std::string changed(interface);
  return changed.replace(changed.find(old), old.size(), replacement);
}

class AnInterfaceFile : public testing::Test, protected InterfaceElement {
 protected:
  /// Writes down when it wakes up.
  struct WakingView final : NSView {
    WakingView(const NSCoder& element, std::vector<std::string>& log)
        : NSView(element), events(log) {}
    void awakeFromNib() override { events.push_back(identifier() + " awake"); }

    std::vector<std::string>& events;
  };

  AnInterfaceFile() {
    const auto waking = [this](const auto& element) {
      return std::make_shared<WakingView>(element, owner_.events);
    };
    classes_.registerClass("Waking", {nullptr, waking, nullptr});
    classes_.registerClass("Tests.Owner", NSClass::initialised<RecordingOwner>(nullptr));
    classes_.registerClass("Tests.Other", NSClass::decoded<NSView>());
  }

  Corvella::TemporaryFolder folder_;
  std::shared_ptr<const NSBundle> bundle_ = std::make_shared<NSBundle>(folder_.path());
  NSClassRegistry classes_;
  NSNibLoader loader_{*bundle_, {classes_, measurer, fonts}};
  RecordingOwner owner_{loader_, "Some", nullptr};
};

TEST_F(AnInterfaceFile, IsLoadedOnceAndWakesItsObjectsWhenAllAreConnectedAndTheOwnerLast) {
  folder_.write("Some.xib", interface);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(owner_.view()->frame(), NSMakeRect(1, 2, 3, 4));
  EXPECT_THAT(owner_.events, testing::ElementsAre("action go:", "outlet button", "outlet view",
                                                  "root awake", "owner awake"));
  EXPECT_EQ(owner_.view()->subviews().size(), 2U);
  EXPECT_EQ(owner_.outlets["button"], owner_.view()->subviews()[0]);
}

TEST_F(AnInterfaceFile, IsLookedForInTheOwnersBundleAndElseInTheMainOne) {
  const NSBundle elsewhere("");
  const NSNibLoader loader(elsewhere, {classes_, measurer, fonts});
  folder_.write("Some.xib", interface);
  EXPECT_NE(RecordingOwner(loader, "Some", bundle_).view(), nullptr);
  EXPECT_THAT([&] { RecordingOwner(loader, "Some", nullptr).view(); },
              ThrowsMessage<std::runtime_error>("Some.xib: the interface file cannot be read"));
}

TEST_F(AnInterfaceFile, WithAFaultLeavesNoViewAndIsRefusedWithFileLineAndName) {
  std::string deep;
  for (int i = 0; i < 1000; ++i) deep += "<customView id=\"" + std::to_string(i) + "\"><subviews>";
  for (int i = 0; i < 1000; ++i) deep += "</subviews></customView>";
  deep += "</subviews>";
  const std::vector<std::array<std::string_view, 3>> rows{
      {interface, "", "1: No document element found"},
      {"</slider>", "\n</silder>", "11: Start-end tags mismatch"},
      {"3.0", "2.0", "1: no interface file of the known type and version 'document'"},

      {"<slider id", "<popUpButton/><slider id", "9: unknown in <subviews> 'popUpButton'"},
      {"<sliderCell", "<buttonCell", "10: unknown in <slider> 'buttonCell'"},
      {"<buttonCell", "buttonCell<buttonCell", "7: unknown in <button> 'buttonCell'"},
      {"</subviews>", deep, "11: elements too deep within each other 'customView'"},
      {R"(key="cell")", R"(key="knob")", "7: unknown key 'knob'"},
      {R"(<buttonCell)", R"(<rect key="frame"/><buttonCell)", "7: a second 'frame'"},
      {R"(<slider id="slider")", R"(<slider id="o1")", "9: a second id 'o1'"},

      {R"(<slider id="slider")", "<slider", "9: an element without its 'id'"},
      {R"( height="8")", "", "7: an element without its 'height'"},
      {R"( property="button")", "", "4: an element without its 'property'"},

      {R"("Waking")", R"("Gone")", "5: no class for the element 'Gone'"},
      {R"("Waking")", R"("Owner" customModule="Tests")",
       "5: no class for the element 'Tests.Owner'"},
      {"<button", R"(<button customClass="Waking")", "7: no class for the element 'Waking'"},
      {R"(<buttonCell)", R"(<buttonCell customClass="Waking")",
       "7: no class for the element 'Waking'"},
      {R"("Owner")", R"("Nobody")", "2: no class for the element 'Tests.Nobody'"},
      {R"("Owner")", R"("Other")", "2: no class for the element 'Tests.Other'"},
      {R"(id="-2")", R"(id="-4")", "2: no class for the element 'Tests.Owner'"},

      {R"("button")", R"("nonesuch")",
       "4: the owner has no such outlet for that object 'nonesuch'"},
      {R"("go" id)", R"("gone" id)", "4: no object has the id 'gone'"},
      {R"("go" id)", R"("-2" id)", "4: no object has the id '-2'"},
      {R"("button")", R"("view")", "4: a second 'view'"},
      {R"(<action selector="go:" target="-2")", R"(<outlet property="button" destination="go")",
       "8: not an outlet of the owner 'button'"},
      {R"("go:")", R"("nonesuch")", "8: the owner has no such action for that object 'nonesuch'"},
      {R"(target="-2")", R"(target="-1")", "8: not the owner, so no target '-1'"},
      {"<action", R"(<action selector="go:" target="-2" id="b"/><action)",
       "8: one of several actions 'go:'"},
      {"</connections></customObject>",
       R"(<action selector="go:" target="-2" id="b"/></connections></customObject>)",
       "5: the owner has no such action for that object 'go:'"}};
  const auto path = (folder_.path() / "Some.xib").string();
  for (const auto& [old, replacement, error] : rows) {
    folder_.write("Some.xib", interfaceWith(old, replacement));
    RecordingOwner owner(loader_, "Some", nullptr);
    EXPECT_THAT([&] { owner.view(); },
                ThrowsMessage<std::runtime_error>(path + ":" + std::string(error)));
    EXPECT_FALSE(owner.isViewLoaded());
  }
  folder_.write("Some.xib", interfaceWith(R"("view")", R"("another")"));
  EXPECT_THAT([&] { owner_.view(); },
              ThrowsMessage<std::runtime_error>("Some: the file connects no view to its owner"));
}

}  // namespace
