#pragma once

#include <filesystem>
#include <string>

#include "fire/Dice.h"
#include "fire/MadePlayer.h"

namespace Corvella {

/// Properties as no player should send them.
struct HostileValues {
  std::string what;  ///< In a few words.
  MadePlayer::Values values;
};

/// Where the addresses of artwork and tracks lead to that chance chooses.
struct HostilePlaces {
  std::string server;            ///< "http://host:port"
  std::filesystem::path folder;  ///< With what `makeHostileFiles` has made.
};

/// Makes a FIFO that nobody writes to, pictures that are bombs, and the like.
void makeHostileFiles(const std::filesystem::path& folder);

/// Values of wrong types and beyond all ranges, of up to some megabytes.
HostileValues hostileValues(Dice& dice);
/// Metadata whose artwork or track lies somewhere where nobody should look.
HostileValues hostilePlaces(Dice& dice, const HostilePlaces& places);
/// Almost as much metadata as a message may bring.
HostileValues hugeMetadata();

}  // namespace Corvella
