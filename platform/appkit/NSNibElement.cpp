#include "platform/appkit/NSNibElement.h"

#include <algorithm>
#include <array>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSTextView.h"
#include "platform/appkit/NSView.h"

const NSNibElement* NSNibElement::named(std::string_view name) {
  static const std::array known{
      NSNibElement{"customView", NSClass::decoded<NSView>(), ""},
      NSNibElement{"imageView", NSClass::decoded<NSImageView>(), "imageCell"},
      NSNibElement{"textField", NSClass::decoded<NSTextField>(), "textFieldCell"},
      NSNibElement{"button", NSClass::decoded<NSButton>(), "buttonCell"},
      NSNibElement{"slider", NSClass::decoded<NSSlider>(), "sliderCell"},
      NSNibElement{"levelIndicator", NSClass::decoded<NSLevelIndicator>(), "levelIndicatorCell"},
      NSNibElement{"progressIndicator", NSClass::decoded<NSProgressIndicator>(), ""},
      NSNibElement{"textView", NSClass::decoded<NSTextView>(), ""},
  };
  const auto found = std::ranges::find(known, name, &NSNibElement::name);
  return found == known.end() ? nullptr : &*found;
}
