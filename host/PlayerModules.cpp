#include "host/PlayerModules.h"

#include <stdexcept>

#include <dlfcn.h>

namespace Corvella {

const PlayerModule& loadPlayerModule(const std::filesystem::path& path) {
  // Never unloaded: its threads may still run while the program ends.
  auto* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  auto* const entry = library != nullptr ? ::dlsym(library, PlayerModule::kEntryName) : nullptr;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the C library keeps one message for each thread.
  if (entry == nullptr) throw std::runtime_error(::dlerror());
  // What POSIX defines for dlsym.
  return *reinterpret_cast<PlayerModule::Entry*>(entry)();
}

}  // namespace Corvella
