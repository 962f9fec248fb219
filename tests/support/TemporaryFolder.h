#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <string>
#include <string_view>
#include <system_error>

namespace Corvella {

/// An empty folder that is removed, with all that it holds by then, together with this object.
class TemporaryFolder {
 public:
  /// Throws std::system_error when there can be none.
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "corvella-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), "mkdtemp");
    }
    path_ = name;
  }

  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

  /// Writes a file of this folder, anew when there is one of that name, and tells where it lies.
  std::filesystem::path write(const std::string& name, std::string_view content) const {
    auto file = path_ / name;
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << content;
    if (!stream.flush()) throw std::system_error(errno, std::generic_category(), file.string());
    return file;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace Corvella
