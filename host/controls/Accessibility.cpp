#include "host/controls/Accessibility.h"

#include <QAccessibleWidget>
#include <memory>

#include "host/controls/AccessibleLyrics.h"
#include "host/controls/PictureView.h"
#include "host/controls/RangeWidget.h"

namespace Corvella {

namespace {

class AccessibleRange final : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit AccessibleRange(RangeWidget& range)
      : QAccessibleWidget(&range, range.role()), range_(range) {}

  void* interface_cast(QAccessible::InterfaceType type) override {
    // Qt offers to increase and decrease whatever has a number, and a bar that only shows how far
    // something is cannot be moved.
    const bool isFixed = range_.role() == QAccessible::ProgressBar;
    if (type == QAccessible::ValueInterface && !isFixed) {
      return static_cast<QAccessibleValueInterface*>(this);
    }
    return QAccessibleWidget::interface_cast(type);
  }

  /// Qt hands only the number on to AT-SPI, so the words are the description, too.
  QString text(QAccessible::Text kind) const override {
    const bool isWanted = kind == QAccessible::Value || kind == QAccessible::Description;
    return isWanted ? range_.valueText() : QAccessibleWidget::text(kind);
  }

  QVariant currentValue() const override { return range_.rangeValue(); }
  void setCurrentValue(const QVariant& value) override { range_.acceptValue(value.toDouble()); }
  QVariant maximumValue() const override { return range_.rangeMaximum(); }
  QVariant minimumValue() const override { return 0.0; }
  QVariant minimumStepSize() const override { return 1.0; }

 private:
  RangeWidget& range_;
};

/// A window that is no dialog and has no menu bar; Qt would tell of nothing but a container.
class AccessibleWindow final : public QAccessibleWidget {
 public:
  explicit AccessibleWindow(QWidget& window) : QAccessibleWidget(&window, QAccessible::Window) {}
};

class AccessiblePicture final : public QAccessibleWidget {
 public:
  explicit AccessiblePicture(PictureView& picture)
      : QAccessibleWidget(&picture, QAccessible::Graphic) {}
};

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
  // Qt deletes the interface when its object ends, so it is handed over without an owner.
  if (auto* const range = dynamic_cast<RangeWidget*>(object)) {
    return std::make_unique<AccessibleRange>(*range).release();
  }
  if (auto* const picture = dynamic_cast<PictureView*>(object)) {
    return std::make_unique<AccessiblePicture>(*picture).release();
  }
  if (auto* const lyrics = dynamic_cast<LyricsView*>(object)) {
    return std::make_unique<AccessibleLyrics>(*lyrics).release();
  }
  auto* const widget = qobject_cast<QWidget*>(object);
  if (widget != nullptr && widget->windowType() == Qt::Tool) {
    return std::make_unique<AccessibleWindow>(*widget).release();
  }
  return nullptr;
}

}  // namespace

void makeControlsAccessible() {
  QAccessible::installFactory(makeInterface);
}

}  // namespace Corvella
