#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSNibLoader.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSTextView.h"
#include "platform/foundation/NSClassRegistry.h"
#include "platform/notification_center/NSExtensionMain.h"
#include "tests/support/InterfaceElement.h"
#include "tests/support/RecordingOwner.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ThrowsMessage;

constexpr auto most = std::numeric_limits<std::int64_t>::max();
constexpr auto least = std::numeric_limits<std::int64_t>::min();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct ResizeRow {
  unsigned mask;
  NSRect before;
  NSRect after;
};

// The superview grows from 320 x 285 to 350 x 405. The view is filled by one of its own.
TEST(ASubviewOfAGrowingView, FollowsByItsAutoresizingMask) {
  const auto margins = NSViewMinXMargin | NSViewMaxXMargin | NSViewMinYMargin;
  const auto sizable = NSViewWidthSizable | NSViewHeightSizable;
  const auto frame = NSMakeRect(10, 20, 30, 40);
  const std::vector<ResizeRow> rows{
      {NSViewMinXMargin | NSViewMinYMargin, frame, NSMakeRect(40, 140, 30, 40)},
      {NSViewMaxXMargin | NSViewMaxYMargin, frame, frame},
      {sizable, NSMakeRect(20, 0, 280, 0), NSMakeRect(20, 0, 310, 120)},
      {NSViewMinXMargin | NSViewMaxXMargin, frame, NSMakeRect(25, 20, 30, 40)},
      {margins | sizable, frame, NSMakeRect(20, 80, 40, 100)}};
  for (const auto& [mask, before, after] : rows) {
    const auto root = std::make_shared<NSView>(NSMakeRect(0, 0, 320, 285));
    const auto view = std::make_shared<NSView>(before);
    const auto inner = std::make_shared<NSView>(NSRect{.origin = {}, .size = before.size});
    view->setAutoresizingMask(mask);
    inner->setAutoresizingMask(sizable);
    root->addSubview(view);
    view->addSubview(inner);
    for (const auto& [size, expected] :
         {std::pair(NSSize{350, 405}, after), {{320, 285}, before}}) {
      root->setFrameSize(size);
      EXPECT_EQ(view->frame(), expected) << "mask " << mask;
      EXPECT_EQ(inner->frame().size, expected.size) << "mask " << mask;
    }
  }
}

TEST(AView, IsNeverSmallerThanNothingAndAlwaysFinite) {
  NSView view(NSMakeRect(1, 2, 3, 4));
  view.setFrameSize({.width = -5, .height = 6});
  view.setFrameSize({.width = notANumber, .height = 8});
  EXPECT_EQ(view.frame(), NSMakeRect(1, 2, 0, 6));
  EXPECT_EQ(NSView(NSMakeRect(notANumber, 2, 3, 4)).frame(), NSRect());
}

template <class View, class Change>
void expectMarkedByTheFirst(const char* name, Change change) {
  View view;
  EXPECT_TRUE(view.needsDisplay()) << name;
  for (const bool expected : {true, false}) {
    view.setNeedsDisplay(false);
    change(view);
    EXPECT_EQ(view.needsDisplay(), expected) << name;
  }
}

TEST(AViewThatIsChanged, IsMarkedForDisplayByTheFirstChangeOnly) {
  const auto font = NSFont::systemFontOfSize(15);
  expectMarkedByTheFirst<NSTextField>("text", [](auto& field) { field.setStringValue("♫"); });
  expectMarkedByTheFirst<NSButton>("enabled", [](auto& button) { button.setEnabled(false); });
  expectMarkedByTheFirst<NSView>("frame", [](auto& v) { v.setFrame(NSMakeRect(1, 0, 0, 0)); });
  expectMarkedByTheFirst<NSTextView>("lyrics", [](auto& view) { view.setString("♫"); });
  expectMarkedByTheFirst<NSTextView>("font", [&](auto& view) { view.setFont(font); });
  expectMarkedByTheFirst<NSSlider>("value", [](auto& slider) { slider.setIntegerValue(1); });
  expectMarkedByTheFirst<NSSlider>("range", [](auto& slider) { slider.setMaxValue(100); });
  expectMarkedByTheFirst<NSProgressIndicator>("end", [](auto& bar) { bar.setMaxValue(5); });
}

TEST(ALevelIndicator, IsMarkedForDisplayWhenItsCellChanges) {
  const auto indicator = std::make_shared<NSLevelIndicator>();
  const auto cell = NSLevelIndicatorCell::initWithLevelIndicatorStyle(NSRatingLevelIndicatorStyle);
  indicator->setCell(cell);
  for (const bool highlighted : {false, true}) {
    indicator->setNeedsDisplay(false);
    cell->setHighlighted(highlighted);
    EXPECT_EQ(indicator->needsDisplay(), highlighted);
  }
  EXPECT_EQ(NSLevelIndicatorCell::initWithLevelIndicatorStyle(NSLevelIndicatorStyle{4}), nullptr);
}

struct ValueRow {
  double minValue;
  double maxValue;
  double given;
  double expected;
  std::int64_t integer;
};

TEST(ASlider, KeepsItsValueInsideItsRange) {
  const std::vector<ValueRow> rows{{0, 100, 2.9, 2.9, 2},        {-5, 5, -2.9, -2.9, -2},
                                   {0, 100, 101, 100, 100},      {0, 100, -1, 0, 0},
                                   {0, 100, infinity, 100, 100}, {10, 5, 20, 10, 10},
                                   {10, 100, -infinity, 10, 10}, {10, 100, notANumber, 10, 10},
                                   {0, 1e300, 1e19, 1e19, most}, {-1e300, 0, -1e19, -1e19, least}};
  for (const auto& row : rows) {
    NSSlider slider;
    slider.setMinValue(row.minValue);
    slider.setMaxValue(row.maxValue);
    slider.setDoubleValue(row.given);
    EXPECT_EQ(slider.doubleValue(), row.expected) << row.given;
    EXPECT_EQ(slider.integerValue(), row.integer) << row.given;
  }
}

TEST(ASlider, MovesItsValueIntoANewRange) {
  NSSlider slider;
  slider.setMaxValue(100);
  slider.setIntegerValue(most);
  for (const double maxValue : {50.0, notANumber}) slider.setMaxValue(maxValue);
  EXPECT_EQ(slider.doubleValue(), 50);
  EXPECT_EQ(slider.maxValue(), 50);
  slider.setMaxValue(100);
  slider.setMinValue(60);
  EXPECT_EQ(slider.doubleValue(), 60);
  slider.setMinValue(-infinity);
  slider.setMaxValue(infinity);
  EXPECT_TRUE(std::isfinite(slider.maxValue() - slider.minValue()));
}

TEST(AProgressIndicator, KeepsAValueBeyondItsRange) {
  NSProgressIndicator bar;
  bar.setDoubleValue(150);
  EXPECT_EQ(bar.doubleValue(), 150);
  bar.setDoubleValue(notANumber);
  EXPECT_EQ(bar.doubleValue(), 0);
}

TEST(AButton, SendsItsActionWhenClickedAndEnabled) {
  NSButton button;
  button.performClick();
  int clicks = 0;
  button.setAction([&](NSControl& sender) {
    sender.setAction(nullptr);  // An action may take itself away.
    ++clicks;
  });
  for (const bool enabled : {false, true}) {
    button.setEnabled(enabled);
    button.performClick();
    EXPECT_EQ(clicks, enabled ? 1 : 0);
  }
  EXPECT_FALSE(button.sendAction());
}

class AViewOfAnInterfaceFile : public testing::Test, protected InterfaceElement {};

TEST_F(AViewOfAnInterfaceFile, TakesItsPlaceStateRangeAndValueAndRefusesWhatIsNoNumber) {
  auto& frame = coder.encodeChild("frame", "Some.xib:8");
  for (const char* const key : {"x", "y", "width", "height"}) frame.encodeString(key, "12.5");
  auto& cell = coder.encodeChild("cell", "Some.xib:10");
  cell.encodeString("enabled", "NO");
  cell.encodeString("maxValue", "5");
  cell.encodeString("doubleValue", "9");
  const NSLevelIndicator indicator(coder);
  EXPECT_EQ(indicator.frame(), NSMakeRect(12.5, 12.5, 12.5, 12.5));
  EXPECT_FALSE(indicator.isEnabled());
  EXPECT_EQ(indicator.integerValue(), 5);
  cell.encodeString("minValue", "2");
  cell.encodeString("doubleValue", "1");
  EXPECT_EQ(NSLevelIndicator(coder).integerValue(), 2);
  cell.encodeString("title", "Go");
  EXPECT_EQ(NSButton(coder).title(), "Go");
  for (const auto& [word, style] : {std::pair("relevancy", NSRelevancyLevelIndicatorStyle),
                                    {"continuousCapacity", NSContinuousCapacityLevelIndicatorStyle},
                                    {"discreteCapacity", NSDiscreteCapacityLevelIndicatorStyle},
                                    {"rating", NSRatingLevelIndicatorStyle}}) {
    cell.encodeString("levelIndicatorStyle", word);
    EXPECT_EQ(NSLevelIndicatorCell(cell).levelIndicatorStyle(), style);
  }
  auto& mask = coder.encodeChild("autoresizingMask", "Some.xib:9");
  for (const char* const key : {"flexibleMinX", "flexibleMaxX", "flexibleMinY", "flexibleMaxY"}) {
    mask.encodeString(key, "YES");
  }
  const auto root = std::make_shared<NSView>(NSMakeRect(0, 0, 37.5, 37.5));
  const auto view = std::make_shared<NSView>(coder);
  root->addSubview(view);
  root->setFrameSize({.width = 57.5, .height = 57.5});
  EXPECT_EQ(view->frame(), NSMakeRect(22.5, 22.5, 12.5, 12.5));
  coder.encodeString("doubleValue", "7");
  EXPECT_EQ(NSProgressIndicator(coder).doubleValue(), 7);
  for (const std::string text : {"", "12pt", "inf", "nan", "1e999", "-1"}) {
    frame.encodeString("width", text);
    EXPECT_THAT([&] { NSButton{coder}; },
                ThrowsMessage<std::runtime_error>("Some.xib:8: width cannot be '" + text + "'"));
  }
}

TEST_F(AViewOfAnInterfaceFile, TakesItsColourByNameOrByItsParts) {
  using Attributes = std::vector<std::pair<const char*, const char*>>;
  const std::vector<std::pair<Attributes, NSColor>> rows{
      {{{"name", "lightGrayColor"}, {"white", "1"}}, NSColor::lightGrayColor()},
      {{{"name", "labelColor"}}, NSColor::labelColor()},
      {{{"white", "0.5"}, {"alpha", "0.25"}, {"red", "1"}}, {0.5, 0.5, 0.5, 0.25}},
      {{{"red", "0.1"}, {"green", "0.2"}, {"blue", "0.3"}}, {0.1, 0.2, 0.3, 1}}};
  EXPECT_EQ(NSTextField(coder).textColor(), NSColor::labelColor());
  for (const auto& [attributes, expected] : rows) {
    auto& color = coder.encodeChild("textColor", "Some.xib:2");
    for (const auto& [key, value] : attributes) color.encodeString(key, value);
    EXPECT_EQ(NSTextField(coder).textColor(), expected) << attributes[0].second;
  }
}

TEST_F(AViewOfAnInterfaceFile, FallsBackWhereAFontIsMissingAndRefusesUnknownWords) {
  auto& font = coder.encodeChild("font", "Some.xib:2");
  EXPECT_EQ(NSTextField(coder).font()->pointSize(), 13);
  font.encodeString("name", "Helvetica Neue");
  font.encodeString("size", "15");
  EXPECT_EQ(NSTextField(coder).font()->pointSize(), 15);
  font.encodeString("name", "Missing");
  EXPECT_EQ(NSTextField(coder).font(), nullptr);
  coder.encodeString("alignment", "centre");
  EXPECT_THROW(NSTextField{coder}, std::runtime_error);
}

struct ChangeRow {
  std::function<void()> change;
  int measurements;  ///< How often the text is measured until its layout is known.
  int lines;
};

TEST_F(AViewOfAnInterfaceFile, MeasuresItsTextWhenAskedAndOnceUntilTextFontOrWidthChanges) {
  NSTextView view(coder);
  auto& layoutManager = *view.layoutManager();
  const auto& container = *view.textContainer();
  const auto changeFont = [&](double size) {
    view.setFont(NSFont::fontWithName("Helvetica Neue", size, fonts));
  };
  view.setFrame(NSMakeRect(0, 0, 100, 0));
  const std::vector<ChangeRow> rows{
      {[&] { view.setString("eleven char"); }, 1, 2},
      {[&] { changeFont(15); }, 1, 2},
      {[&] { changeFont(16); }, 1, 2},
      {[&] { view.setFrameSize({.width = 50, .height = 0}); }, 1, 3},
      {[&] { view.setString("eleven char"); }, 0, 3},
      {[&] { changeFont(16); }, 0, 3},
      {[&] { view.setFrameSize({.width = 50, .height = 500}); }, 0, 3},
      {[&] { view.setAlignment(NSTextAlignmentCenter); }, 0, 3},
      {[&] { view.setTextColor(NSColor::lightGrayColor()); }, 0, 3}};
  for (const auto& [change, measurements, lines] : rows) {
    const int before = measurer.measurements;
    change();
    const bool isLaidOut = layoutManager.usedRectForTextContainer(container).size.height > 0;
    EXPECT_EQ(isLaidOut, measurements == 0);
    EXPECT_EQ(measurer.measurements, before);
    for (int i = 0; i < 2; ++i) layoutManager.ensureLayoutForTextContainer(container);
    EXPECT_EQ(measurer.measurements, before + measurements);
    EXPECT_EQ(layoutManager.usedRectForTextContainer(container).size.height,
              lines * FixedTextMeasurer::lineHeight);
  }
}

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

  void write(const std::string& name, std::string_view text) {
    folder_.write(name, text);
    // Those who look into the bundle hold a reference to it.
    std::destroy_at(bundle_.get());
    std::construct_at(bundle_.get(), folder_.path());
  }

  Corvella::TemporaryFolder folder_;
  std::shared_ptr<NSBundle> bundle_ = std::make_shared<NSBundle>(folder_.path());
  NSClassRegistry classes_;
  NSNibLoader loader_{*bundle_, {classes_, measurer, fonts}};
  RecordingOwner owner_{loader_, "Some", nullptr};
};

TEST_F(AnInterfaceFile, IsLoadedOnceAndWakesItsObjectsWhenAllAreConnectedAndTheOwnerLast) {
  write("Some.xib", interface);
  std::filesystem::remove(folder_.path() / "Some.xib");  // As when the program is uninstalled.
  for (int i = 0; i < 2; ++i) EXPECT_EQ(owner_.view()->frame(), NSMakeRect(1, 2, 3, 4));
  EXPECT_THAT(owner_.events, testing::ElementsAre("action go:", "outlet button", "outlet view",
                                                  "root awake", "owner awake"));
  EXPECT_EQ(owner_.view()->subviews().size(), 2U);
  EXPECT_EQ(owner_.outlets["button"], owner_.view()->subviews()[0]);
}

TEST_F(AnInterfaceFile, IsLookedForInTheOwnersBundleAndElseInTheMainOne) {
  const NSBundle elsewhere("");
  const NSNibLoader loader(elsewhere, {classes_, measurer, fonts});
  write("Some.xib", interface);
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
    write("Some.xib", interfaceWith(old, replacement));
    RecordingOwner owner(loader_, "Some", nullptr);
    EXPECT_THAT([&] { owner.view(); },
                ThrowsMessage<std::runtime_error>(path + ":" + std::string(error)));
    EXPECT_FALSE(owner.isViewLoaded());
  }
  write("Some.xib", interfaceWith(R"("view")", R"("another")"));
  EXPECT_THAT([&] { owner_.view(); },
              ThrowsMessage<std::runtime_error>("Some: the file connects no view to its owner"));
}

TEST_F(AnInterfaceFile, HasAnOwnerThatTellsTheHostOfEachNewPreferredSizeOnce) {
  std::vector<NSSize> told;
  owner_.setPreferredContentSizeObserver([&](NSSize size) {
    EXPECT_EQ(owner_.preferredContentSize(), size);
    told.push_back(size);
  });
  for (const double height : {285.0, 285.0, std::numeric_limits<double>::infinity(), -1.0}) {
    owner_.setPreferredContentSize({.width = 320, .height = height});
  }
  EXPECT_EQ(told, (std::vector<NSSize>{{.width = 320, .height = 285}, {.width = 320}}));
}

/// The property list of an extension with that element as its principal class.
std::string listWith(const std::string& principal,
                     const std::string& point = "com.apple.widget-extension") {
  return "<plist><dict><key>NSExtension</key><dict><key>NSExtensionPointIdentifier</key><string>" +
         point + "</string><key>NSExtensionPrincipalClass</key>" + principal +
         "</dict></dict></plist>";
}

using AnExtension = AnInterfaceFile;

TEST_F(AnExtension, IsRefusedWithTheNameOfItsPropertyListAndTheFault) {
  const auto noWidget = [this] { return std::make_shared<NSViewController>(loader_); };
  classes_.registerClass("NoWidget", NSClass::initialised<NSViewController>(noWidget));
  const std::vector<std::pair<std::string, std::string>> rows{
      {"", "No document element found"},
      {"<plist/>", "no property list inside"},
      {"<other><true/></other>", "no property list inside"},
      {"<plist><dict><true/></dict></plist>", "a value without a key"},
      {"<plist><dict><key>k</key></dict></plist>", "no value for the key k"},
      {"<plist><date>2020</date></plist>", "unknown kind of value <date>"},
      {"<plist><dict/></plist>", "NSExtension has no text 'NSExtensionPointIdentifier'"},
      {"<plist><true/></plist>", "NSExtension has no text 'NSExtensionPointIdentifier'"},
      {listWith("<string/>", "com.apple.share-services"),
       "unknown extension point 'com.apple.share-services'"},
      {listWith("<true/>"), "NSExtension has no text 'NSExtensionPrincipalClass'"},
      {listWith("<string>Gone</string>"), "unknown principal class 'Gone'"},
      // Objects of this class are created by interface files only.
      {listWith("<string>Tests.Other</string>"), "unknown principal class 'Tests.Other'"},
      {listWith("<string>NoWidget</string>"),
       "the principal class is not a widget's view controller 'NoWidget'"}};
  const auto start = [&] { NSExtensionMain(*bundle_, classes_); };
  const auto path = (folder_.path() / "Info.plist").string();
  EXPECT_THAT(start, ThrowsMessage<std::runtime_error>(path + ": cannot be read"));
  for (const auto& [list, fault] : rows) {
    write("Info.plist", list);
    EXPECT_THAT(start, ThrowsMessage<std::runtime_error>(path + ": " + fault)) << list;
  }
}

}  // namespace
