#include "platform/appkit/NSImageView.h"

NSImageView::NSImageView(NSRect frame) : NSControl(frame) {}

NSImageView::NSImageView(const NSCoder& coder) : NSControl(coder) {}
