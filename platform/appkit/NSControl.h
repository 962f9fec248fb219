#pragma once

#include <functional>
#include <utility>

#include "platform/appkit/NSView.h"

/// A view that the user operates. Lives on the main queue.
class NSControl : public NSView {
 public:
  /// What a control does for the user: target and action in one. It is given the control.
  using Action = std::function<void(NSControl& sender)>;

  explicit NSControl(NSRect frame = {});
  explicit NSControl(const NSCoder& coder);

  /// The action must not hold its target, which owns the control. A null action takes
  /// the earlier one away.
  void setAction(Action action) { action_ = std::move(action); }
  /// Runs the action, whatever the control's state; gives whether there is one. The action may
  /// replace the control's action.
  bool sendAction();

  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled) { store(enabled_, enabled); }

 private:
  Action action_;
  bool enabled_ = true;
};
