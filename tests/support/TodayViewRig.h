#pragma once

#include <QImage>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/controls/LyricsView.h"
#include "host/controls/TextLabel.h"
#include "host/panel/TodayView.h"
#include "tests/support/Eventually.h"
#include "tests/support/HostParts.h"

namespace Corvella {

/// A Today view over the embedded player.
class TodayViewRig : public HostParts {
 public:
  using HostParts::HostParts;

  /// Opens the view and waits for a track.
  void open() {
    view.open();
    ASSERT_TRUE(waitFor([this] {
      return find<TextLabel>("songTitle") != nullptr && text("songTitle") != "No Song Playing";
    }));
  }
  /// Unfolds the lyrics and waits for them; null when they do not come.
  LyricsView* unfold() {
    press(Qt::Key_L);
    const auto lyrics = [this] { return find<LyricsView>("lyricsView"); };
    const bool come = waitFor([&] { return lyrics() != nullptr && lyrics()->height() > 0; });
    return come ? lyrics() : nullptr;
  }
  void press(Qt::Key key) { QTest::keyClick(&window, key); }
  /// Waits until the widget has dealt with all that it was told.
  void settle() {
    const QSignalSpy settled(&view, &TodayView::settled);
    view.settle();
    ASSERT_TRUE(waitFor([&] { return settled.count() > 0; }));
  }

  /// The text that the label of that name shows in full.
  std::string text(const char* label) const { return find<TextLabel>(label)->text().toStdString(); }
  /// The widget of that name; null when there is none of that class.
  template <typename Widget = QWidget>
  Widget* find(const char* name) const {
    return window.findChild<Widget*>(name);
  }

  /// Lets the application run until the condition holds; false when it never does.
  static bool waitFor(auto condition) {
    return QTest::qWaitFor(condition, longestWait / std::chrono::milliseconds{1});
  }

  /// What the screen shows of a widget that is a window.
  static QImage onScreen(const QWidget& widget) {
    return widget.screen()->grabWindow(widget.winId()).toImage();
  }
  /// The smallest rectangle around the pixels of which one channel has more than `least`.
  static QRect brightPart(const QImage& image, int (*channel)(QRgb), int least) {
    QRect part;
    for (int i = 0; i < image.width() * image.height(); ++i) {
      const QPoint pixel(i % image.width(), i / image.width());
      if (channel(image.pixel(pixel)) > least) part |= QRect(pixel, QSize(1, 1));
    }
    return part;
  }

  /// What the player says of itself.
  PlayerDescription description{.name = "mpv", .identity = "mpv", .canRaise = true};
  /// Who is to be told the news of the player, and how often the widget has been started.
  PlayerNewsListener* listener = nullptr;
  int starts = 0;
  int raises = 0;

 private:
  class Session final : public WidgetSession {
   public:
    Session(TodayViewRig& rig, WidgetHost& host)
        : rig_(rig), extension_(rig.services(), rig.gate, host) {}

    ExtensionThread& extension() override { return extension_; }
    ScriptRunner& scripts() override { return rig_.gate; }
    PlayerDescription player() const override { return rig_.description; }
    std::vector<PlayerDescription> players() const override { return {rig_.description}; }
    void raisePlayer() override { ++rig_.raises; }

   private:
    TodayViewRig& rig_;
    ExtensionThread extension_;
  };

 public:
  TodayView view{[this](const std::string& /*name*/, WidgetHost& host, PlayerNewsListener& news) {
                   ++starts;
                   listener = &news;
                   return std::make_unique<Session>(*this, host);
                 },
                 "mpv"};
  TodayWindow& window = view.window();
};

}  // namespace Corvella
