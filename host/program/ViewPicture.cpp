#include "host/program/ViewPicture.h"

#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QString>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>

#include "host/controls/LyricsView.h"

namespace Corvella {

namespace {

void waitUntilSettled(TodayView& view) {
  QEventLoop loop;
  std::optional<std::string> failure;
  QObject::connect(&view, &TodayView::settled, &loop, &QEventLoop::quit);
  QObject::connect(&view, &TodayView::failed, &loop, [&](const QString& reason) {
    failure = reason.toStdString();
    loop.quit();
  });
  view.settle();
  loop.exec();
  if (failure) throw std::runtime_error(*failure);
}

QImage drawnAt(TodayWindow& window, double scale) {
  // Qt takes a pixel ratio below 1 for 1, so a smaller picture is drawn at 1 and made smaller.
  const auto drawnScale = std::max(scale, 1.0);
  QImage image((QSizeF(window.size()) * drawnScale).toSize(), QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) throw std::runtime_error("a picture of that size does not fit into memory");
  image.setDevicePixelRatio(drawnScale);
  image.fill(Qt::transparent);
  // The lyrics paint what takes longer than a slice of time in a later turn of the event loop. A
  // picture is painted once, so here they have all the time that they need.
  if (auto* const lyrics = window.findChild<LyricsView*>()) {
    lyrics->setSlice(std::chrono::milliseconds::max());
  }
  window.render(&image, {}, {}, QWidget::DrawChildren);
  if (scale == drawnScale) return image;
  return image.scaled((QSizeF(window.size()) * scale).toSize(), Qt::IgnoreAspectRatio,
                      Qt::SmoothTransformation);
}

/// Opens a file as a shell does, but for a pipe: one that nobody reads is refused, where a shell
/// would wait for a reader.
int openForWriting(const std::string& path) {
  constexpr int kReadableByAll = 0666;  // But for what the user's mask takes away.
  const int descriptor =
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, kReadableByAll);
  if (descriptor < 0) {
    throw std::runtime_error("cannot write " + path + ": " +
                             std::generic_category().message(errno));
  }
  ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
  return descriptor;
}

}  // namespace

void openUnseen(TodayView& view, bool unfolded) {
  view.window().setEased(false);
  view.open();
  view.window().setTallest(QWIDGETSIZE_MAX);
  waitUntilSettled(view);
  if (!unfolded) return;
  emit view.window().panel().clicked("toggleLyricsButton");
  waitUntilSettled(view);
}

void writePicture(TodayView& view, const std::string& path, double scale) {
  const auto image = drawnAt(view.window(), scale);
  QFile file;
  if (!file.open(openForWriting(path), QIODevice::WriteOnly, QFile::AutoCloseHandle)) {
    throw std::runtime_error("cannot write " + path + ": " + file.errorString().toStdString());
  }
  QImageWriter writer(&file, "png");
  if (!writer.write(image) || !file.flush()) {
    const auto reason = file.error() != QFile::NoError ? file.errorString() : writer.errorString();
    throw std::runtime_error("cannot write " + path + ": " + reason.toStdString());
  }
}

}  // namespace Corvella
