#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSNib.h"
#include "platform/appkit/NSNibLoader.h"
#include "platform/appkit/NSOutletConnection.h"
#include "platform/foundation/NSClassRegistry.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"
#include "tests/support/RecordingOwner.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ElementsAre;

constexpr auto documentStart =
    R"(<document type="com.apple.InterfaceBuilder3.Cocoa.XIB" version="3.0">)";

/// The text with a frame for every "{frame}".
std::string framed(std::string xml) {
  constexpr std::string_view mark = "{frame}";
  for (auto at = xml.find(mark); at != std::string::npos; at = xml.find(mark, at)) {
    xml.replace(at, mark.size(), R"(<rect key="frame" x="1" y="2" width="3" height="4"/>)");
  }
  return xml;
}

/// A document whose owner has `outlets` on line 2 and whose root view has `views` on line 4.
std::string documentOf(const std::string& outlets, const std::string& views) {
  return framed(documentStart + std::string(R"(<objects>
<customObject id="-2" customClass="Owner" customModule="Tests"><connections>)") +
                R"(<outlet property="view" destination="root"/>)" + outlets +
                "</connections></customObject>\n<customView id=\"root\">{frame}<subviews>\n" +
                views + "\n</subviews></customView></objects></document>\n");
}

/// Has, besides its view, the outlet "button" and the action "go:".
class PickyOwner final : public RecordingOwner {
 public:
  using RecordingOwner::RecordingOwner;

  NSOutletConnection connectOutlet(std::string_view name,
                                   const std::shared_ptr<NSObject>& object) override {
    if (name == "button") return NSConnectOutlet(button_, object);
    return NSViewController::connectOutlet(name, object);
  }

  NSOutletConnection connectAction(std::string_view selector, NSControl& control) override {
    if (selector == "slide:") return NSOutletConnection::WrongType;
    return selector == "go:" ? RecordingOwner::connectAction(selector, control)
                             : NSOutletConnection::UnknownName;
  }

 private:
  std::weak_ptr<NSButton> button_;
};

/// A view that writes down when it wakes up.
class WakingView final : public NSView {
 public:
  WakingView(const NSCoder& coder, RecordingOwner& owner) : NSView(coder), owner_(owner) {}
  void awakeFromNib() override { owner_.events.push_back(identifier() + " awake"); }

 private:
  RecordingOwner& owner_;
};

class AnInterfaceFile : public testing::Test {
 protected:
  AnInterfaceFile() {
    classes_.registerClass("Tests.Owner", NSClass::initialised<RecordingOwner>(nullptr));
    classes_.registerClass("Tests.Other", NSClass::decoded<NSView>());
  }

  void load(const std::string& xml, RecordingOwner& owner) {
    NSNib(std::as_bytes(std::span(xml)), "Some.xib").instantiateWithOwner(owner, services());
  }

  std::string errorOf(const std::string& xml, RecordingOwner& owner) {
    try {
      load(xml, owner);
      return "no error";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  NSNibServices services() const { return {classes_, measurer_, fonts_}; }

  FixedTextMeasurer measurer_;
  FixedFontFinder fonts_;
  NSClassRegistry classes_;
  NSBundle bundle_{""};
  NSNibLoader loader_{bundle_, services()};
};

TEST_F(AnInterfaceFile, WakesItsObjectsWhenAllAreConnectedAndTheOwnerLast) {
  RecordingOwner owner(loader_);
  classes_.registerClass("Tests.Waking", {.init = nullptr,
                                          .initWithCoder =
                                              [&owner](const NSCoder& coder) {
                                                return std::make_shared<WakingView>(coder, owner);
                                              },
                                          .isKindOfClass = nullptr});
  constexpr auto views = R"(
<customView id="1" customClass="Waking" customModule="Tests" identifier="a">{frame}</customView>
<customView id="2" customClass="Waking" customModule="Tests" identifier="b">{frame}</customView>)";
  load(documentOf(R"(<outlet property="some" destination="1"/>)", views), owner);
  EXPECT_THAT(owner.events,
              ElementsAre("outlet some", "outlet view", "a awake", "b awake", "owner awake"));
  EXPECT_EQ(owner.view()->subviews().size(), 2U);
  EXPECT_EQ(owner.outlet<NSView>("some")->superview(), owner.view());
}

TEST_F(AnInterfaceFile, LeavesNoViewBehindWhenItFails) {
  const Corvella::TemporaryFolder folder;
  folder.write("Bad.xib", documentOf(R"(<outlet property="gone" destination="root"/>)", ""));
  const auto bundle = std::make_shared<NSBundle>(folder.path());
  PickyOwner owner(loader_, "Bad", bundle);
  EXPECT_THROW(owner.view(), std::runtime_error);
  EXPECT_FALSE(owner.isViewLoaded());
  EXPECT_THAT(owner.events, ElementsAre());
}

TEST_F(AnInterfaceFile, IsLookedForInTheOwnersBundleAndElseInTheMainOne) {
  const Corvella::TemporaryFolder folder;
  folder.write("Good.xib", documentOf("", ""));
  const auto bundle = std::make_shared<NSBundle>(folder.path());
  EXPECT_NE(RecordingOwner(loader_, "Good", bundle).view(), nullptr);
  EXPECT_NE(RecordingOwner(NSNibLoader(*bundle, services()), "Good", nullptr).view(), nullptr);
  try {
    RecordingOwner(loader_, "Missing", bundle).view();
    FAIL() << "was found";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(),
              (folder.path() / "Missing.xib").string() + ": the interface file cannot be read");
  }
}

/// What is wrong in a file, and what the error says after its name.
using Faults = std::vector<std::pair<std::string, std::string>>;

class AFaultyInterfaceFile : public AnInterfaceFile {
 protected:
  /// Expects each fault to be found in the file that `makeFile` makes with it.
  template <typename MakeFile>
  void expectErrors(const Faults& faults, MakeFile makeFile) {
    for (const auto& [xml, error] : faults) {
      PickyOwner owner(loader_);
      EXPECT_EQ(errorOf(makeFile(xml), owner), "Some.xib:" + error);
    }
  }
};

TEST_F(AFaultyInterfaceFile, IsRefusedWhereItsDocumentIsNotOne) {
  const Faults whole{{"", "1: No document element found"},
                     {"<document>\n<objects>\n</document>\n", "3: Start-end tags mismatch"},
                     {"\n<plist/>", "2: unknown element 'plist'"},
                     {"<document/>", "1: <document> has no attribute 'type'"},
                     {R"(<document type="iOS"/>)", "1: unknown type of document 'iOS'"},
                     {R"(<document type="com.apple.InterfaceBuilder3.Cocoa.XIB" version="2.0"/>)",
                      "1: unknown version '2.0'"}};
  expectErrors(whole, [](const std::string& xml) { return xml; });
  const Faults parts{{"<classes/>", "2: unknown element 'classes'"},
                     {R"(<objects><customObject id="-2" customClass="Nobody"/></objects>)",
                      "2: unknown class 'Nobody'"},
                     {R"(<objects><customObject id="-2" customClass="Tests.Other"/></objects>)",
                      "2: the owner is not a 'Tests.Other'"},
                     {R"(<objects><customObject id="7"/></objects>)", "2: unknown object '7'"}};
  expectErrors(parts, [](const std::string& xml) {
    return documentStart + std::string("\n") + xml + "</document>";
  });
}

TEST_F(AFaultyInterfaceFile, IsRefusedWhereAViewIsNoneThatItKnows) {
  const Faults faults{
      {"<popUpButton/>", "4: unknown element 'popUpButton'"},
      {"<customView>{frame}\n<constraints/></customView>", "5: unknown element 'constraints'"},
      {R"(<textView>{frame}<font key="font"><size/></font></textView>)",
       "4: unknown element 'size'"},
      {R"(<slider>{frame}<buttonCell key="cell"/></slider>)", "4: unknown element 'buttonCell'"},
      {R"(<textView>{frame}<color key="textColour"/></textView>)", "4: unknown key 'textColour'"},
      {R"(<slider>{frame}<sliderCell key="knob"/></slider>)", "4: unknown key 'knob'"},
      {"<textView>{frame}\n{frame}</textView>", "5: a second element for the key 'frame'"},
      {"<textView>{frame}la la</textView>", "4: text within the element 'textView'"},
      {R"(<textView customClass="Poem" customModule="Corvella">{frame}</textView>)",
       "4: unknown class 'Corvella.Poem'"},
      {R"(<textView customClass="Other" customModule="Tests">{frame}</textView>)",
       "4: <textView> cannot be a 'Tests.Other'"},
      {R"(<customView customClass="Owner" customModule="Tests">{frame}</customView>)",
       "4: <customView> cannot be a 'Tests.Owner'"},
      {R"(<slider>{frame}<sliderCell key="cell" customClass="Tests.Other"/></slider>)",
       "4: a cell that cannot have a class of its own 'Tests.Other'"},
      {R"(<levelIndicator>{frame}<levelIndicatorCell key="cell" customClass="Tests.Other"/>
</levelIndicator>)",
       "4: <levelIndicatorCell> cannot be a 'Tests.Other'"},
      {"<slider>{frame}</slider>", "4: an element without its 'sliderCell'"},
      {"<textView/>", "4: an element without its 'frame'"},
      {R"(<textView><rect key="frame" x="1" y="1" width="1"/></textView>)",
       "4: height: is missing"},
      {R"(<textView>
<rect key="frame" x="1" y="one" width="1" height="1"/></textView>)",
       "5: y: is not a number: \"one\""},
      {R"(<textView><rect key="frame" x="-1" y="1" width="-1" height="1"/></textView>)",
       "4: width: is below zero"},
      {R"(<slider>{frame}<sliderCell key="cell" maxValue="1,5"/></slider>)",
       "4: maxValue: is not a number: \"1,5\""},
      {R"(<textView id="root">{frame}</textView>)", "4: a second object has the id 'root'"},
      {R"(<textView>{frame}<connections>
<action selector="go:" target="-2"/></connections></textView>)",
       "5: not a control, so it has no action 'go:'"}};
  expectErrors(faults, [](const std::string& view) { return documentOf("", view); });
}

TEST_F(AFaultyInterfaceFile, IsRefusedWhereAnOutletCannotBeConnected) {
  const Faults faults{
      {R"(<outlet property="buton" destination="go"/>)", "2: unknown outlet 'buton'"},
      {R"(<outlet property="button" destination="box"/>)",
       "2: an object of the wrong class for the outlet 'button'"},
      {R"(<outlet property="button" destination="go"/>
<outlet property="button" destination="go"/>)",
       "3: a second object for the outlet 'button'"},
      {R"(<outlet property="button" destination="gone"/>)", "2: no object has the id 'gone'"},
      {R"(<outlet property="button" destination="-2"/>)", "2: no object has the id '-2'"},
      {R"(<outlet property="button"/>)", "2: <outlet> has no attribute 'destination'"},
      {R"(<action selector="go:" target="-2"/>)", "2: unknown element 'action'"}};
  expectErrors(faults, [](const std::string& outlet) {
    return documentOf(outlet, R"(<button id="go">{frame}<buttonCell key="cell"/></button>
<customView id="box">{frame}</customView>)");
  });
}

TEST_F(AFaultyInterfaceFile, IsRefusedWhereAnActionCannotBeConnected) {
  const Faults faults{
      {R"(<action selector="come:" target="-2"/>)", "5: unknown action 'come:'"},
      {R"(<action selector="slide:" target="-2"/>)",
       "5: a control of the wrong class for the action 'slide:'"},
      {R"(<action selector="go:" target="-1"/>)", "5: only the owner is a target, not '-1'"},
      {R"(<action target="-2"/>)", "5: <action> has no attribute 'selector'"},
      {R"(<action selector="go:" target="-2"/><action selector="go:" target="-2"/>)",
       "5: a second action of a control 'go:'"}};
  expectErrors(faults, [](const std::string& action) {
    return documentOf("", R"(<button>{frame}<buttonCell key="cell"/><connections>)" +
                              ("\n" + action) + "</connections></button>");
  });
}

TEST_F(AnInterfaceFile, IsRefusedWhenItsViewsGoTooDeep) {
  std::string views;
  for (int level = 0; level < 1000; ++level) views += "<customView>{frame}<subviews>";
  for (int level = 0; level < 1000; ++level) views += "</subviews></customView>";
  PickyOwner owner(loader_);
  EXPECT_EQ(errorOf(documentOf("", views), owner),
            "Some.xib:4: views too deep within each other 'customView'");
}

}  // namespace
