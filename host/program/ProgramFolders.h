#pragma once

#include <filesystem>

/// Where the program finds what belongs to it: beside its own folder, in the build tree and where
/// it is installed. Throw `std::filesystem::filesystem_error` where the program's own place cannot
/// be told.
namespace Corvella::ProgramFolders {

std::filesystem::path program();
std::filesystem::path resources();

}  // namespace Corvella::ProgramFolders
