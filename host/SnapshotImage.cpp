#include "host/SnapshotImage.h"

#include <QFile>
#include <QImageWriter>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace Corvella {

namespace {

constexpr std::chrono::seconds kPatience{30};
constexpr auto kToggle = "toggleLyricsButton";

}  // namespace

SnapshotImage::SnapshotImage(TodayView& view, const WidgetBridge& bridge) : view_(view) {
  connect(&bridge, &WidgetBridge::displayShown, this, [this](const WidgetSnapshot& snapshot) {
    display_.apply(snapshot);
    look();
  });
  connect(&bridge, &WidgetBridge::reported, this, [this](NCUpdateResult result) {
    report_ = result;
    look();
  });
  connect(&bridge, &WidgetBridge::failed, this, [this](const QString& reason) {
    failure_ = reason;
    loop_.exit(1);
  });
}

void SnapshotImage::open(bool unfolded) {
  unfolds_ = unfolded;
  view_.window().setEased(false);
  view_.open();
  view_.window().setTallest(QWIDGETSIZE_MAX);
  QTimer patience;
  connect(&patience, &QTimer::timeout, &loop_, [this] { loop_.exit(1); });
  patience.start(kPatience);
  const bool reached = loop_.exec() == 0;
  if (failure_) throw std::runtime_error(failure_->toStdString());
  if (!reached) throw std::runtime_error("the widget did not show anything in time");
}

void SnapshotImage::look() {
  if (isComplete()) loop_.exit(0);
}

bool SnapshotImage::isComplete() {
  if (report_ == NCUpdateResultNoData) return true;
  return display_.preferredContentSize() && (!unfolds_ || hasUnfolded());
}

bool SnapshotImage::hasUnfolded() {
  const auto* const button = display_.content<ButtonContent>(kToggle);
  if (button == nullptr || button->title == "No Lyrics") return true;
  if (!std::exchange(clicked_, true)) emit view_.window().panel().clicked(kToggle);
  return button->title == "Hide Lyrics";
}

QImage SnapshotImage::draw(double scale) {
  auto& window = view_.window();
  const auto drawnScale = std::max(scale, 1.0);  // Qt takes less for 1.
  QImage image((QSizeF(window.size()) * drawnScale).toSize(), QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) throw std::runtime_error("a picture of that size does not fit into memory");
  image.setDevicePixelRatio(drawnScale);
  image.fill(Qt::transparent);
  window.render(&image, {}, {}, QWidget::DrawChildren);
  if (scale == drawnScale) return image;
  return image.scaled((QSizeF(window.size()) * scale).toSize(), Qt::IgnoreAspectRatio,
                      Qt::SmoothTransformation);
}

void SnapshotImage::write(const std::string& path, double scale) {
  const auto image = draw(scale);
  QFile file(QString::fromStdString(path));
  if (!file.open(QIODevice::WriteOnly)) {
    throw std::runtime_error("cannot write " + path + ": " + file.errorString().toStdString());
  }
  QImageWriter writer(&file, "png");
  if (!writer.write(image) || !file.flush()) {
    const auto reason = file.error() != QFile::NoError ? file.errorString() : writer.errorString();
    throw std::runtime_error("cannot write " + path + ": " + reason.toStdString());
  }
}

}  // namespace Corvella
