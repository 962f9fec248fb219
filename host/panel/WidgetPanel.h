#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "extension/WidgetSnapshot.h"
#include "players/PlayerDescription.h"

class QKeyEvent;

namespace Corvella {

class LyricsView;
class PushButton;
class StarRating;
class ValueSlider;

/// The widget as Qt widgets: one control for each of its views, under the view's identifier as the
/// object name, where and as large as the view is. As large itself as the widget.
///
/// A control that the user moves keeps what the user set: what the widget shows of it meanwhile
/// waits until it is let go and the widget has answered (`acknowledge`).
class WidgetPanel final : public QWidget {
  Q_OBJECT

 public:
  explicit WidgetPanel(QWidget* parent);

  void apply(const WidgetSnapshot& snapshot);

  /// The widget has dealt with every `valueChosen` up to this input.
  void acknowledge(quint64 input);
  /// There is another widget now, which will never answer what the one before was asked.
  void forgetInput() {
    wantedStep_.reset();
    acknowledge(inputs_);
  }
  /// What is shown has just been read from the player, as `lookWanted` has asked.
  void takeWantedStep();

  /// Offers what this player is able to do. Other controls are disabled, and their tooltips say
  /// why.
  void setPlayer(const PlayerDescription& player);

  /// Does what a key asks for; false when it asks for nothing.
  bool actOnKey(const QKeyEvent& event);

 signals:
  void clicked(const QString& identifier);
  void valueChosen(const QString& identifier, double value, quint64 input);
  /// The user steps a value, which should be read again before.
  void lookWanted();
  /// There are other lyrics to read now, or those of another song.
  void lyricsReplaced();
  /// That part of the panel is to be seen: the user moves a cursor there.
  void placeReached(const QRect& place);

 private:
  struct ContentDisplayer;
  struct Control {
    std::unique_ptr<QWidget> widget;
    std::function<bool()> isDown = [] { return false; };
    quint64 lastInput = 0;
    std::optional<ViewSnapshot> waiting;
    QString toolTip;
    bool enabled = true;  // As far as the widget is concerned.
    QString refusal;      // Why what it shows cannot be used, whoever plays; mostly empty.
  };

  void applyView(const ViewSnapshot& view);
  void showView(const ViewSnapshot& view);
  bool isHeld(const Control& control) const;
  /// Has the control be usable, or not, and say why not.
  void offer(const std::string& identifier, const Control& control) const;
  /// Has Tab go from the top to the bottom, and from left to right.
  void orderForTab();
  void showWaiting();
  void startLyricsOfAnotherSong();
  void choose(const std::string& identifier, double value);
  void step(ValueSlider& slider, int change);

  bool has(const ViewSnapshot& view) const;
  template <typename Widget>
  Widget& control(const ViewSnapshot& view);
  void namePlayButton(const ViewSnapshot& view, const std::string& sign);
  void connectInput(QWidget& widget, const std::string& identifier);
  void connectInput(PushButton& button, const std::string& identifier);
  void connectInput(ValueSlider& slider, const std::string& identifier);
  void connectInput(StarRating& rating, const std::string& identifier);
  void connectInput(LyricsView& lyrics, const std::string& identifier);

  std::map<std::string, Control> controls_;
  PlayerDescription player_;
  double height_ = 0;  // Of the widget, in points.
  QStringList song_;   // The texts that tell the song shown last from others.
  struct WantedStep {
    ValueSlider* slider;
    int change;
  };
  std::optional<WantedStep> wantedStep_;  // Until the value has been read again.
  QElapsedTimer sinceStep_;
  quint64 inputs_ = 0;
  quint64 acknowledged_ = 0;
};

}  // namespace Corvella
