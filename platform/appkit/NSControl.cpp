#include "platform/appkit/NSControl.h"

NSControl::NSControl(NSRect frame) : NSView(frame) {}

NSControl::NSControl(const NSCoder& coder)
    : NSView(coder), enabled_(coder.cell().decodeBoolForKey("enabled", true)) {}

bool NSControl::sendAction() {
  const Action action = action_;
  if (!action) return false;
  action(*this);
  return true;
}
