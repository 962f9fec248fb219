#pragma once

#include <memory>
#include <utility>

#include "platform/appkit/NSView.h"
#include "platform/foundation/NSCoder.h"
#include "platform/foundation/NSObject.h"

enum NSLevelIndicatorStyle : unsigned {
  NSRelevancyLevelIndicatorStyle = 0,
  NSContinuousCapacityLevelIndicatorStyle = 1,
  NSDiscreteCapacityLevelIndicatorStyle = 2,
  NSRatingLevelIndicatorStyle = 3,
};

enum NSFocusRingType : unsigned {
  NSFocusRingTypeDefault = 0,
  NSFocusRingTypeNone = 1,
  NSFocusRingTypeExterior = 2,
};

/// How a level indicator looks and behaves. Owned by its indicator, which is marked for display
/// when something of the cell changes. Lives on the main queue.
class NSLevelIndicatorCell : public NSObject {
 protected:
  /// Marks the constructor whose cell `initialiseWithStyle` still has to initialise.
  struct Allocated {
    explicit Allocated() = default;
  };

 public:
  explicit NSLevelIndicatorCell(Allocated) {}

  /// Null when the platform has no such style.
  static std::shared_ptr<NSLevelIndicatorCell> initWithLevelIndicatorStyle(
      NSLevelIndicatorStyle style);
  /// Reads "levelIndicatorStyle", "highlighted", "editable", "continuous" and "focusRingType".
  explicit NSLevelIndicatorCell(const NSCoder& coder);

  NSLevelIndicatorStyle levelIndicatorStyle() const { return levelIndicatorStyle_; }

  virtual bool isHighlighted() const { return highlighted_; }
  virtual void setHighlighted(bool highlighted) { store(highlighted_, highlighted); }

  /// Whether the user can set the value.
  bool isEditable() const { return editable_; }
  void setEditable(bool editable) { store(editable_, editable); }

  /// Whether the action is to be sent while the value changes, not only at the end.
  bool isContinuous() const { return continuous_; }
  void setContinuous(bool continuous) { store(continuous_, continuous); }

  NSFocusRingType focusRingType() const { return focusRingType_; }
  void setFocusRingType(NSFocusRingType type) { store(focusRingType_, type); }

  /// Null while the cell belongs to no indicator.
  std::shared_ptr<NSView> controlView() const { return controlView_.lock(); }
  void setControlView(std::weak_ptr<NSView> view) { controlView_ = std::move(view); }

 protected:
  /// False when the platform has no such style.
  bool initialiseWithStyle(NSLevelIndicatorStyle style);

 private:
  template <class Value>
  void store(Value& field, Value value) {
    if (field == value) return;
    field = value;
    if (const auto view = controlView()) view->setNeedsDisplay(true);
  }

  NSLevelIndicatorStyle levelIndicatorStyle_ = NSRatingLevelIndicatorStyle;
  NSFocusRingType focusRingType_ = NSFocusRingTypeDefault;
  bool highlighted_ = false;
  bool editable_ = false;
  bool continuous_ = false;
  std::weak_ptr<NSView> controlView_;
};
