#include "host/panel/PlayerMenu.h"

#include <QAction>
#include <utility>

#include "players/AsciiText.h"

namespace Corvella {

namespace {

QString stateOf(const PlayerDescription& player) {
  if (player.silent) return "does not answer";
  return player.playing ? "playing" : QString();
}

}  // namespace

PlayerMenu::PlayerMenu(std::function<PlayerList()> list, QWidget* parent)
    : QMenu(parent), list_(std::move(list)) {
  setTitle("Player");
  connect(this, &QMenu::aboutToShow, this, &PlayerMenu::fill);
  fill();  // Some desktops show no menu that is empty before it opens.
}

void PlayerMenu::fill() {
  clear();
  const auto list = list_();
  addPlayer("Automatic", "auto", sameText(list.choice, "auto"));
  addSeparator();
  for (const auto& player : list.players) {
    auto text = QString::fromStdString(player.identity);
    if (const auto state = stateOf(player); !state.isEmpty()) text += " \u2013 " + state;
    addPlayer(text, player.name, sameText(list.choice, player.name));
  }
  if (!list.current.canRaise) return;
  addSeparator();
  const auto* const raise = addAction(
      "Show the window of " + QString::fromStdString(list.current.identity).replace(u'&', "&&"));
  connect(raise, &QAction::triggered, this, &PlayerMenu::raiseWanted);
}

void PlayerMenu::addPlayer(const QString& text, const std::string& name, bool isChosen) {
  // An ampersand would underline the letter after it.
  auto* const action = addAction(QString(text).replace(u'&', "&&"));
  action->setCheckable(true);
  action->setChecked(isChosen);
  connect(action, &QAction::triggered, this, [this, name] { emit chosen(name); });
}

}  // namespace Corvella
