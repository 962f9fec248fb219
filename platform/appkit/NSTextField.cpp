#include "platform/appkit/NSTextField.h"

NSTextField::NSTextField(NSRect frame) : NSControl(frame) {}

NSTextField::NSTextField(const NSCoder& coder)
    : NSControl(coder),
      stringValue_(coder.cell().decodeStringForKey("title")),
      textColor_(NSColor::decodeForKey(coder.cell(), "textColor", NSColor::labelColor())),
      font_(NSFont::decodeForKey(coder.cell(), "font")),
      alignment_(NSDecodeTextAlignment(coder.cell())) {}
