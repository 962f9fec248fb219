#include <cstddef>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

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
#include "tests/support/RowName.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ElementsAre;

constexpr std::string_view frame = R"(<rect key="frame" x="1" y="2" width="3" height="4"/>)";

constexpr std::string_view documentStart =
    R"(<document type="com.apple.InterfaceBuilder3.Cocoa.XIB" version="3.0">)";

/// A document whose owner has `outlets` on line 2 and whose root view has `views` on line 4.
std::string documentOf(std::string_view outlets, std::string_view views) {
  return std::string(documentStart)
      .append("<objects>\n<customObject id=\"-2\" customClass=\"Owner\" customModule=\"Tests\">")
      .append("<connections><outlet property=\"view\" destination=\"root\"/>")
      .append(outlets)
      .append("</connections></customObject>\n<customView id=\"root\">")
      .append(frame)
      .append("<subviews>\n")
      .append(views)
      .append("\n</subviews></customView></objects></document>\n");
}

/// An element of that name and these attributes, with a frame and then `rest`.
std::string element(const std::string& name, const std::string& attributes,
                    const std::string& rest = {}) {
  return "<" + name + " " + attributes + ">" + std::string(frame) + rest + "</" + name + ">";
}

std::string button(const std::string& attributes, const std::string& rest = {}) {
  return element("button", attributes, "<buttonCell key=\"cell\" title=\"Go\"/>" + rest);
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
  const std::string views =
      element("customView", R"(id="1" customClass="Waking" customModule="Tests" identifier="a")") +
      element("customView", R"(id="2" customClass="Waking" customModule="Tests" identifier="b")");
  load(documentOf(R"(<outlet property="some" destination="1"/>)", views), owner);
  EXPECT_THAT(owner.events,
              ElementsAre("outlet some", "outlet view", "a awake", "b awake", "owner awake"));
  EXPECT_EQ(owner.view()->subviews().size(), 2U);
  EXPECT_EQ(owner.outlet<NSView>("some")->superview(), owner.view());
}

TEST_F(AnInterfaceFile, LeavesNoViewBehindWhenItFails) {
  const Corvella::TemporaryFolder folder;
  folder.write("Bad.xib",
               documentOf(R"(<outlet property="gone" destination="1"/>)", button("id=\"1\"")));
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

struct FaultRow {
  const char* name;
  std::string xml;
  const char* error;
};

class AFaultyInterfaceFile : public AnInterfaceFile,
                             public testing::WithParamInterface<FaultRow> {};

TEST_P(AFaultyInterfaceFile, IsRefusedWithItsNameTheLineAndTheFault) {
  PickyOwner owner(loader_);
  EXPECT_EQ(errorOf(GetParam().xml, owner), std::string("Some.xib:") + GetParam().error);
}

FaultRow inDocument(const char* name, const std::string& parts, const char* error) {
  return {name, std::string(documentStart) + "\n" + parts + "</document>", error};
}

FaultRow inView(const char* name, const std::string& view, const char* error) {
  return {name, documentOf("", view), error};
}

FaultRow inOutlet(const char* name, const std::string& outlet, const char* error) {
  return {name, documentOf(outlet, button("id=\"go\"") + element("customView", "id=\"box\"")),
          error};
}

FaultRow inAction(const char* name, const std::string& view, const std::string& attributes,
                  const char* error) {
  const std::string action = "<connections>\n<action " + attributes + "/></connections>";
  return inView(name, view == "button" ? button("", action) : element(view, "", action), error);
}

INSTANTIATE_TEST_SUITE_P(
    Document, AFaultyInterfaceFile,
    testing::Values(
        FaultRow{"Empty", "", "1: No document element found"},
        FaultRow{"Malformed", "<document>\n<objects>\n</document>\n", "3: Start-end tags mismatch"},
        FaultRow{"AnotherRoot", "\n<plist/>", "2: unknown element 'plist'"},
        FaultRow{"NoType", "<document/>", "1: <document> has no attribute 'type'"},
        FaultRow{"AnotherType", "<document type=\"iOS\"/>", "1: unknown type of document 'iOS'"},
        FaultRow{"AnotherVersion",
                 "<document type=\"com.apple.InterfaceBuilder3.Cocoa.XIB\" version=\"2.0\"/>",
                 "1: unknown version '2.0'"},
        inDocument("UnknownPart", "<classes/>", "2: unknown element 'classes'"),
        inDocument("UnknownOwner",
                   "<objects><customObject id=\"-2\" customClass=\"Nobody\"/></objects>",
                   "2: unknown class 'Nobody'"),
        inDocument("AnotherOwner",
                   "<objects><customObject id=\"-2\" customClass=\"Tests.Other\"/></objects>",
                   "2: the owner is not a 'Tests.Other'"),
        inDocument("UnknownPlaceholder", "<objects><customObject id=\"7\"/></objects>",
                   "2: unknown object '7'")),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    View, AFaultyInterfaceFile,
    testing::Values(
        inView("UnknownElement", "<popUpButton/>", "4: unknown element 'popUpButton'"),
        inView("UnknownElementWithin", button("", "\n<constraints/>"),
               "5: unknown element 'constraints'"),
        inView("ElementWithinAValue", element("textView", "", "<font key=\"font\"><size/></font>"),
               "4: unknown element 'size'"),
        inView("AnothersCell", element("slider", "", "<buttonCell key=\"cell\"/>"),
               "4: unknown element 'buttonCell'"),
        inView("UnknownKey", element("textView", "", "<color key=\"textColour\"/>"),
               "4: unknown key 'textColour'"),
        inView("UnknownKeyOfACell", element("slider", "", "<sliderCell key=\"knob\"/>"),
               "4: unknown key 'knob'"),
        inView("SecondFrame", element("textView", "", "\n" + std::string(frame)),
               "5: a second element for the key 'frame'"),
        inView("Text", element("textView", "", "la la"), "4: text within the element 'textView'"),
        inView("UnknownClass",
               element("textView", "customClass=\"Poem\" customModule=\"Corvella\""),
               "4: unknown class 'Corvella.Poem'"),
        inView("UnknownModule", element("customView", "customClass=\"Other\""),
               "4: unknown class 'Other'"),
        inView("AnothersClass", element("textView", "customClass=\"Other\" customModule=\"Tests\""),
               "4: <textView> cannot be a 'Tests.Other'"),
        inView("ClassThatFilesDoNotCreate",
               element("customView", "customClass=\"Owner\" customModule=\"Tests\""),
               "4: <customView> cannot be a 'Tests.Owner'"),
        inView("ClassOfACellThatHasNone",
               element("slider", "",
                       "<sliderCell key=\"cell\" customClass=\"Other\" customModule=\"Tests\"/>"),
               "4: a cell that cannot have a class of its own 'Tests.Other'"),
        inView("AnothersClassForACell",
               element("levelIndicator", "",
                       "<levelIndicatorCell key=\"cell\" customClass=\"Other\" "
                       "customModule=\"Tests\"/>"),
               "4: <levelIndicatorCell> cannot be a 'Tests.Other'"),
        inView("NoCell", element("slider", ""), "4: an element without its 'sliderCell'"),
        inView("NoFrame", "<textView/>", "4: an element without its 'frame'"),
        inView("FrameWithoutANumber",
               "<textView><rect key=\"frame\" x=\"1\" y=\"1\" width=\"1\"/></textView>",
               "4: height: is missing"),
        inView("FrameWithABadNumber",
               "<textView>\n<rect key=\"frame\" x=\"1\" y=\"one\" width=\"1\" "
               "height=\"1\"/></textView>",
               "5: y: is not a number: \"one\""),
        inView(
            "FrameBelowZero",
            "<textView><rect key=\"frame\" x=\"-1\" y=\"1\" width=\"-1\" height=\"1\"/></textView>",
            "4: width: is below zero"),
        inView("BadNumber", element("slider", "", "<sliderCell key=\"cell\" maxValue=\"1,5\"/>"),
               "4: maxValue: is not a number: \"1,5\""),
        inView("SecondId", button("id=\"root\""), "4: a second object has the id 'root'")),

    rowName);

INSTANTIATE_TEST_SUITE_P(
    Connection, AFaultyInterfaceFile,
    testing::Values(
        inOutlet("UnknownOutlet", "<outlet property=\"buton\" destination=\"go\"/>",
                 "2: unknown outlet 'buton'"),
        inOutlet("OutletOfAnotherClass", "<outlet property=\"button\" destination=\"box\"/>",
                 "2: an object of the wrong class for the outlet 'button'"),
        inOutlet("SecondObjectOfAnOutlet",
                 "<outlet property=\"button\" destination=\"go\"/>\n"
                 "<outlet property=\"button\" destination=\"go\"/>",
                 "3: a second object for the outlet 'button'"),
        inOutlet("UnknownDestination", "<outlet property=\"button\" destination=\"gone\"/>",
                 "2: no object has the id 'gone'"),
        inOutlet("DestinationThatIsNoObject", "<outlet property=\"button\" destination=\"-2\"/>",
                 "2: no object has the id '-2'"),
        inOutlet("NoDestination", "<outlet property=\"button\"/>",
                 "2: <outlet> has no attribute 'destination'"),
        inOutlet("ActionOfTheOwner", "<action selector=\"go:\" target=\"-2\"/>",
                 "2: unknown element 'action'"),
        inAction("UnknownAction", "button", "selector=\"come:\" target=\"-2\"",
                 "5: unknown action 'come:'"),
        inAction("ActionOfAnotherClass", "button", "selector=\"slide:\" target=\"-2\"",
                 "5: a control of the wrong class for the action 'slide:'"),
        inAction("AnotherTarget", "button", "selector=\"go:\" target=\"-1\"",
                 "5: only the owner is a target, not '-1'"),
        inAction("NoSelector", "button", "target=\"-2\"",
                 "5: <action> has no attribute 'selector'"),
        inAction("ActionOfNoControl", "textView", "selector=\"go:\" target=\"-2\"",
                 "5: not a control, so it has no action 'go:'"),
        inAction("SecondAction", "button",
                 "selector=\"go:\" target=\"-2\"/><action selector=\"go:\" target=\"-2\"",
                 "5: a second action of a control 'go:'")),
    rowName);

TEST_F(AnInterfaceFile, IsRefusedWhenItsViewsGoTooDeep) {
  std::string views;
  for (int level = 0; level < 1000; ++level) {
    views += "<customView>" + std::string(frame) + "<subviews>";
  }
  for (int level = 0; level < 1000; ++level) views += "</subviews></customView>";
  PickyOwner owner(loader_);
  EXPECT_EQ(errorOf(documentOf("", views), owner),
            "Some.xib:4: views too deep within each other 'customView'");
}

}  // namespace
