#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/appkit/NSGeometry.h"
#include "platform/foundation/NSCoder.h"
#include "platform/foundation/NSObject.h"

/// Which parts of a view's place follow the size of the view around it; bits to be joined.
enum NSAutoresizingMaskOptions : unsigned {
  NSViewNotSizable = 0,
  NSViewMinXMargin = 1,
  NSViewWidthSizable = 2,
  NSViewMaxXMargin = 4,
  NSViewMinYMargin = 8,
  NSViewHeightSizable = 16,
  NSViewMaxYMargin = 32,
};

/// A rectangle of the window that shows something. It holds what is shown and remembers that it
/// changed; whoever draws it reads `needsDisplay` and clears it. A setter that is given what the
/// view already has changes nothing and marks nothing.
///
/// Owned by the view around it. Lives on the main queue.
class NSView : public NSObject, public std::enable_shared_from_this<NSView> {
 public:
  explicit NSView(NSRect frame = {});
  /// Reads the children "frame" and "autoresizingMask" and what is common to all views.
  explicit NSView(const NSCoder& coder);

  /// Where the view lies in the view around it.
  NSRect frame() const { return frame_; }
  /// The view's own extent: its size, with the origin at zero.
  NSRect bounds() const { return {.origin = {}, .size = frame_.size}; }
  /// Moves and resizes; sizes below zero become zero. A rectangle with a number that is not finite
  /// is ignored.
  void setFrame(NSRect frame);
  /// Resizes, the lower left corner staying in place; see `setFrame`. The subviews follow by their
  /// autoresizing masks.
  void setFrameSize(NSSize size);

  /// Bits of `NSAutoresizingMaskOptions`.
  void setAutoresizingMask(unsigned mask) { autoresizingMask_ = mask; }

  /// Puts `view` in front of the others.
  void addSubview(std::shared_ptr<NSView> view);
  /// From the rearmost to the foremost.
  const std::vector<std::shared_ptr<NSView>>& subviews() const { return subviews_; }

  /// Whether the view looks different from when the mark was last cleared; true for a new view.
  bool needsDisplay() const { return needsDisplay_; }
  virtual void setNeedsDisplay(bool needsDisplay) { needsDisplay_ = needsDisplay; }

  /// Empty where there is none.
  const std::string& accessibilityLabel() const { return accessibilityLabel_; }
  const std::string& identifier() const { return identifier_; }

  /// Says that the view's natural size may have changed: the layout must be worked out anew.
  virtual void invalidateIntrinsicContentSize();
  bool needsUpdateConstraints() const { return needsUpdateConstraints_; }

 protected:
  /// Stores a value of a derived view; one that differs marks the view for display. Gives whether
  /// it differed.
  template <class Value>
  bool store(Value& field, Value value) {
    if (field == value) return false;
    field = std::move(value);
    setNeedsDisplay(true);
    return true;
  }

  /// Called after the view's size has changed, before its subviews follow.
  virtual void frameSizeDidChange() {}

 private:
  void resizeWithOldSuperviewSize(NSSize oldSize, NSSize newSize);

  NSRect frame_;
  unsigned autoresizingMask_ = NSViewNotSizable;
  std::vector<std::shared_ptr<NSView>> subviews_;
  std::string accessibilityLabel_;
  std::string identifier_;
  bool needsDisplay_ = true;
  bool needsUpdateConstraints_ = false;
};
