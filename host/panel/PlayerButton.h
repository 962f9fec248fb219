#pragma once

#include <QAbstractButton>
#include <QSize>
#include <QString>

namespace Corvella {

/// The line of the heading that says who is playing. It is a button: pressing it lists the players
/// to choose from.
class PlayerButton final : public QAbstractButton {
  Q_OBJECT

 public:
  static constexpr int kHeight = 16;

  explicit PlayerButton(QWidget* parent);

  /// A player that is as it should be, said quietly.
  void showPlayer(const QString& identity) { show(identity, false); }
  /// Something the user should know, said so that it is seen.
  void showNotice(const QString& notice) { show(notice, true); }

  /// As wide as the whole text needs. Where the window has less room, the text is cut.
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool event(QEvent* event) override;

 private:
  void show(const QString& text, bool isNotice);

  bool isNotice_ = false;
};

}  // namespace Corvella
