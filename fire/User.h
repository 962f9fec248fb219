#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "fire/Channel.h"
#include "fire/Dice.h"

namespace Corvella {

/// A user who does at random what users do to a panel, by a real display server and by starting
/// Corvella again. Each thing is done when a call returns. Main thread.
class User {
 public:
  /// `environment` is that of the desktop; `program` the Corvella that is started again.
  User(std::vector<std::string> environment, std::string program, std::uint64_t seed);

  /// Does one thing to the panel that was described like this.
  void act(const Fields& panel);
  /// Lets go of all that is held, closes menus, and opens the panel; on that player if it is given.
  /// Throws `std::runtime_error` when the Corvella that runs does not answer.
  void comeToRest(const std::string& player = {});

  /// How often each kind of thing was done, and the last ones in words.
  const std::map<std::string, int>& counts() const { return counts_; }
  const std::deque<std::string>& last() const { return last_; }

 private:
  struct Point {
    int x;
    int y;
  };

  /// A point of the panel that is on the screen, but not on the cross that ends the program.
  Point pointOf(const Fields& panel);
  void note(const std::string& kind, const std::string& what);
  void xdotool(const std::vector<std::string>& arguments);
  void startAgain(const std::vector<std::string>& arguments);

  const std::vector<std::string> environment_;
  const std::string program_;
  Dice dice_;
  std::map<std::string, int> counts_;
  std::deque<std::string> last_;
};

}  // namespace Corvella
