#include "host/panel/WidgetPanel.h"

#include <QKeyEvent>
#include <QTextDocument>
#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "host/controls/Accessibility.h"
#include "host/controls/LyricsView.h"
#include "host/controls/PictureView.h"
#include "host/controls/PositionBar.h"
#include "host/controls/PushButton.h"
#include "host/controls/StarRating.h"
#include "host/controls/TextLabel.h"
#include "host/controls/ValueSlider.h"
#include "host/panel/ControlKeys.h"
#include "host/panel/ControlRefusal.h"

namespace Corvella {

namespace {

/// The widget's frames count y upwards from its lower edge, Qt counts it downwards from the upper.
QRect pixelRect(const NSRect& frame, double height) {
  const auto top = height - frame.origin.y - frame.size.height;
  return QRectF(frame.origin.x, top, frame.size.width, frame.size.height).toRect();
}

QString toolTipOf(const ViewSnapshot& view) {
  const QString keys(keyNames(view.identifier));
  if (keys.isEmpty()) return {};
  const auto name = view.accessibilityLabel.empty()
                        ? QString("Show or hide the lyrics")
                        : QString::fromStdString(view.accessibilityLabel);
  return QString("%1 (%2)").arg(name, keys);
}

/// Players choose their names, and Qt would take some for rich text.
QString plainToolTip(const QString& text) {
  return Qt::mightBeRichText(text) ? "<span>" + text.toHtmlEscaped() + "</span>" : text;
}

void describe(QWidget& widget, const ViewSnapshot& view) {
  const auto label = QString::fromStdString(view.accessibilityLabel);
  // A screen reader reads the name first, and that of a text is the text itself.
  if (std::holds_alternative<TextFieldContent>(view.content)) {
    widget.setAccessibleDescription(label);
  } else if (!label.isEmpty()) {
    widget.setAccessibleName(label);
  }
}

}  // namespace

WidgetPanel::WidgetPanel(QWidget* parent) : QWidget(parent) {
  makeControlsAccessible();
  // Buttons and bars follow the run of a tape, which is the same in all languages; each text has
  // the direction of its letters.
  setLayoutDirection(Qt::LeftToRight);
}

void WidgetPanel::apply(const WidgetSnapshot& snapshot) {
  const bool moved = height_ != snapshot.size.height;
  const auto growth = static_cast<int>(std::lround(snapshot.size.height - height_));
  height_ = snapshot.size.height;
  setFixedSize(QSizeF(snapshot.size.width, snapshot.size.height).toSize());
  if (moved) {
    // A snapshot holds only the views that changed. The frames of the others count from the lower
    // edge of the widget, so in the window they move with this edge.
    for (const auto& [identifier, control] : controls_) {
      control.widget->move(control.widget->x(), control.widget->y() + growth);
    }
  }
  const auto before = controls_.size();
  for (const auto& view : snapshot.views) applyView(view);
  if (controls_.size() != before) orderForTab();
  startLyricsOfAnotherSong();
}

/// Songs may have the same lyrics, and the view of the lyrics does not notice when only the song is
/// another one. While the widget looks at a song again it shows, for a moment, that there is none:
/// the song that follows is not another one for that, and its lyrics stay where they are.
void WidgetPanel::startLyricsOfAnotherSong() {
  QStringList song;
  for (const auto* label : {"songTitle", "songArtistAndAlbum"}) {
    if (const auto* shown = findChild<TextLabel*>(label)) song << shown->text();
  }
  if (song.isEmpty() || song.constFirst() == "No Song Playing" || song == song_) return;
  song_ = song;
  if (auto* const lyrics = findChild<LyricsView*>()) {
    lyrics->select(0, 0);
    emit lyricsReplaced();
  }
}

void WidgetPanel::orderForTab() {
  std::vector<QWidget*> inOrder;
  for (const auto& [identifier, control] : controls_) inOrder.push_back(control.widget.get());
  const auto place = [](const QWidget* widget) { return std::pair(widget->y(), widget->x()); };
  std::ranges::sort(inOrder, {}, place);
  for (std::size_t i = 1; i < inOrder.size(); ++i) setTabOrder(inOrder[i - 1], inOrder[i]);
}

void WidgetPanel::applyView(const ViewSnapshot& view) {
  const auto found = controls_.find(view.identifier);
  if (found == controls_.end() || !isHeld(found->second)) return showView(view);
  found->second.widget->setGeometry(pixelRect(view.frame, height_));
  found->second.waiting = view;
}

bool WidgetPanel::isHeld(const Control& control) const {
  return control.isDown() || control.lastInput > acknowledged_;
}

void WidgetPanel::setPlayer(const PlayerDescription& player) {
  player_ = player;
  for (const auto& [identifier, control] : controls_) offer(identifier, control);
}

void WidgetPanel::offer(const std::string& identifier, const Control& control) const {
  auto refusal = controlRefusal(identifier, player_);
  if (refusal.isEmpty()) refusal = control.refusal;
  control.widget->setEnabled(control.enabled && refusal.isEmpty());
  // A label's own tooltip is the text that it has no room for.
  if (dynamic_cast<TextLabel*>(control.widget.get()) != nullptr) return;
  control.widget->setToolTip(refusal.isEmpty() ? control.toolTip : plainToolTip(refusal));
}

void WidgetPanel::acknowledge(quint64 input) {
  acknowledged_ = input;
  showWaiting();
}

void WidgetPanel::showWaiting() {
  for (auto& [identifier, control] : controls_) {
    if (!control.waiting || isHeld(control)) continue;
    const auto view = std::exchange(control.waiting, std::nullopt);
    showView(*view);
  }
}

/// Shows a view with the class of Qt widget that its content needs.
struct WidgetPanel::ContentDisplayer {
  WidgetPanel& panel;
  const ViewSnapshot& view;

  void operator()(const PlainContent& /*content*/) const {}
  void operator()(const TextFieldContent& content) const { show<TextLabel>(content); }
  void operator()(const ButtonContent& content) const {
    if (view.identifier == "playButton") panel.namePlayButton(view, content.title);
    show<PushButton>(content);
  }
  void operator()(const SliderContent& content) const { show<ValueSlider>(content); }
  void operator()(const RatingContent& content) const { show<StarRating>(content); }
  void operator()(const ProgressContent& content) const { show<PositionBar>(content); }
  void operator()(const ImageContent& content) const { show<PictureView>(content); }
  void operator()(const TextContent& content) const {
    // Most of the time the lyrics are folded, so their view is made only for the first text.
    if (!content.text.empty() || panel.has(view)) show<LyricsView>(content);
  }

  template <typename Widget, typename Content>
  void show(const Content& content) const {
    auto& widget = panel.control<Widget>(view);
    widget.setGeometry(pixelRect(view.frame, panel.height_));
    widget.display(content);
    auto& control = panel.controls_[view.identifier];
    if constexpr (std::is_same_v<Content, ButtonContent>) {
      control.enabled = content.enabled;
      // The widget does nothing on a click then.
      control.refusal = content.title == "No Lyrics" ? "This track has no lyrics" : "";
    }
    panel.offer(view.identifier, control);
    widget.show();
  }
};

/// The sign on the button tells what a click does; so does the name for those who do not see it.
void WidgetPanel::namePlayButton(const ViewSnapshot& view, const std::string& sign) {
  const QString name = sign == "\u275a\u275a" ? "Pause" : "Play";
  auto& button = control<PushButton>(view);
  if (button.accessibleName() == name) return;
  button.setAccessibleName(name);
  controls_[view.identifier].toolTip = QString("%1 (%2)").arg(name, keyNames("playButton"));
}

void WidgetPanel::showView(const ViewSnapshot& view) {
  std::visit(ContentDisplayer{.panel = *this, .view = view}, view.content);
}

bool WidgetPanel::has(const ViewSnapshot& view) const {
  return controls_.contains(view.identifier);
}

template <typename Widget>
Widget& WidgetPanel::control(const ViewSnapshot& view) {
  auto& control = controls_[view.identifier];
  if (!control.widget) {
    auto widget = std::make_unique<Widget>(this);
    widget->setObjectName(QString::fromStdString(view.identifier));
    describe(*widget, view);
    control.toolTip = toolTipOf(view);
    connectInput(*widget, view.identifier);
    control.widget = std::move(widget);
  }
  return dynamic_cast<Widget&>(*control.widget);
}

void WidgetPanel::connectInput(QWidget& /*widget*/, const std::string& /*identifier*/) {}

void WidgetPanel::connectInput(PushButton& button, const std::string& identifier) {
  connect(&button, &QPushButton::clicked, this,
          [this, name = QString::fromStdString(identifier)] { emit clicked(name); });
}

void WidgetPanel::connectInput(ValueSlider& slider, const std::string& identifier) {
  controls_[identifier].isDown = [&slider] { return slider.isSliderDown(); };
  connect(&slider, &QSlider::valueChanged, this,
          [this, identifier](int value) { choose(identifier, value); });
  connect(&slider, &QSlider::sliderReleased, this, &WidgetPanel::showWaiting);
  connect(&slider, &ValueSlider::stepWanted, this,
          [this, &slider](int change) { step(slider, change); });
}

/// Some players tell nobody when their volume is changed elsewhere. A step from the value that was
/// shown would jump to near that one, so the value is read again, once for steps in quick
/// succession: some players take a while to change it.
void WidgetPanel::step(ValueSlider& slider, int change) {
  constexpr qint64 kQuickMilliseconds = 1000;
  const bool isFirst = !sinceStep_.isValid() || sinceStep_.hasExpired(kQuickMilliseconds);
  sinceStep_.start();
  if (wantedStep_ && wantedStep_->slider == &slider) {
    wantedStep_->change += change;
  } else if (isFirst) {
    wantedStep_ = {&slider, change};
    emit lookWanted();
  } else {
    slider.setValue(slider.value() + change);
  }
}

void WidgetPanel::takeWantedStep() {
  const auto wanted = std::exchange(wantedStep_, std::nullopt);
  if (wanted) wanted->slider->setValue(wanted->slider->value() + wanted->change);
}

void WidgetPanel::connectInput(StarRating& rating, const std::string& identifier) {
  controls_[identifier].isDown = [&rating] { return rating.isDown(); };
  connect(&rating, &StarRating::starsChosen, this,
          [this, identifier](int stars) { choose(identifier, stars); });
  connect(&rating, &StarRating::released, this, &WidgetPanel::showWaiting);
}

// NOLINTNEXTLINE(readability-make-member-function-const): the overloads are chosen by the widget.
void WidgetPanel::connectInput(LyricsView& lyrics, const std::string& /*identifier*/) {
  connect(&lyrics, &LyricsView::textReplaced, this, &WidgetPanel::lyricsReplaced);
  connect(&lyrics, &LyricsView::cursorMoved, this, [this, &lyrics](const QRect& cursor) {
    emit placeReached(cursor.translated(lyrics.mapTo(this, QPoint())));
  });
}

void WidgetPanel::choose(const std::string& identifier, double value) {
  auto& control = controls_[identifier];
  control.lastInput = ++inputs_;
  emit valueChosen(QString::fromStdString(identifier), value, inputs_);
}

bool WidgetPanel::actOnKey(const QKeyEvent& event) {
  constexpr auto kModifiers = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
  if ((event.modifiers() & kModifiers) != Qt::NoModifier) return false;
  for (const auto& [identifier, names, keys] : controlKeys()) {
    const auto* const key = std::ranges::find(keys, event.key());
    if (key == keys.end()) continue;
    const auto found = controls_.find(std::string(identifier));
    if (found == controls_.end()) return false;
    auto* const widget = found->second.widget.get();
    if (!widget->isEnabled()) return true;
    const auto index = static_cast<int>(key - keys.begin());
    if (auto* const button = dynamic_cast<PushButton*>(widget)) {
      if (!event.isAutoRepeat()) button->click();
    } else if (auto* const slider = dynamic_cast<ValueSlider*>(widget)) {
      slider->triggerAction(index == 0 ? QAbstractSlider::SliderSingleStepAdd
                                       : QAbstractSlider::SliderSingleStepSub);
    } else if (auto* const rating = dynamic_cast<StarRating*>(widget)) {
      rating->choose(index);
    }
    return true;
  }
  return false;
}

}  // namespace Corvella
