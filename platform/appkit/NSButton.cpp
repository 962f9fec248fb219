#include "platform/appkit/NSButton.h"

NSButton::NSButton(NSRect frame) : NSControl(frame) {}

NSButton::NSButton(const NSCoder& coder)
    : NSControl(coder),
      title_(coder.cell().decodeStringForKey("title")),
      font_(NSFont::decodeForKey(coder.cell(), "font")) {}

void NSButton::performClick() {
  if (isEnabled()) sendAction();
}
