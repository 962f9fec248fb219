// Writes the manual page and the completions of shells into a folder. Run by the build.
//
// usage: write_help VERSION FOLDER

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#include "host/program/HelpTexts.h"

namespace {

void write(const std::filesystem::path& file, const std::string& text) {
  std::ofstream output(file, std::ios::binary | std::ios::trunc);
  output << text << std::flush;
  if (!output) throw std::runtime_error("cannot write " + file.string());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: write_help VERSION FOLDER\n";
    return 2;
  }
  try {
    const std::filesystem::path folder = argv[2];
    std::filesystem::create_directories(folder);
    // Each under the name that it is installed by.
    write(folder / "corvella.1", Corvella::manualPage(argv[1]));
    write(folder / "corvella", Corvella::bashCompletion());
    write(folder / "_corvella", Corvella::zshCompletion());
    write(folder / "corvella.fish", Corvella::fishCompletion());
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "write_help: " << error.what() << "\n";
    return 1;
  }
}
