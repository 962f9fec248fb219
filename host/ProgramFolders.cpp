#include "host/ProgramFolders.h"

namespace Corvella::ProgramFolders {

std::filesystem::path program() {
  return std::filesystem::canonical("/proc/self/exe").parent_path();
}

std::filesystem::path resources() {
  return program().parent_path() / "share" / "corvella";
}

std::filesystem::path modules() {
  return program().parent_path() / CORVELLA_LIBRARIES / "corvella";
}

}  // namespace Corvella::ProgramFolders
