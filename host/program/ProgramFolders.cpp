#include "host/program/ProgramFolders.h"

namespace Corvella::ProgramFolders {

std::filesystem::path program() {
  // An update may replace the file while the program runs; the link then names a deleted file. So
  // it is read once, at the start.
  static const auto folder = std::filesystem::canonical("/proc/self/exe").parent_path();
  return folder;
}

std::filesystem::path resources() {
  return program().parent_path() / "share" / "corvella";
}

}  // namespace Corvella::ProgramFolders
