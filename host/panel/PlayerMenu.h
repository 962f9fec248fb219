#pragma once

#include <QMenu>
#include <QString>
#include <functional>
#include <string>
#include <vector>

#include "players/PlayerDescription.h"

namespace Corvella {

/// What can be chosen from, at one moment.
struct PlayerList {
  std::string choice;         ///< "auto", or the name of the player that the user has chosen.
  PlayerDescription current;  ///< Whom the widget shows.
  std::vector<PlayerDescription> players;
};

/// The players to choose from, "automatic" first, and the window of the one that is shown. The list
/// is made anew each time the menu opens.
class PlayerMenu final : public QMenu {
  Q_OBJECT

 public:
  /// `list` is called for as long as the menu exists.
  PlayerMenu(std::function<PlayerList()> list, QWidget* parent);

 signals:
  /// "auto", or the name of a player.
  void chosen(const std::string& player);
  /// The window of the current player is wanted.
  void raiseWanted();

 private:
  void fill();
  void addPlayer(const QString& text, const std::string& name, bool isChosen);

  const std::function<PlayerList()> list_;
};

}  // namespace Corvella
