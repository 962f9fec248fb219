#include "host/ProgramFolders.h"

namespace Corvella::ProgramFolders {

std::filesystem::path program() {
  // Asked once: the file may be replaced while the program runs.
  static const auto folder = std::filesystem::canonical("/proc/self/exe").parent_path();
  return folder;
}

std::filesystem::path resources() {
  return program().parent_path() / "share" / "corvella";
}

std::filesystem::path modules() {
  return program().parent_path() / CORVELLA_LIBRARIES / "corvella";
}

}  // namespace Corvella::ProgramFolders
