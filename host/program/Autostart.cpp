#include "host/program/Autostart.h"

#include <QByteArray>
#include <QDir>
#include <QSaveFile>
#include <QStandardPaths>
#include <QString>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "host/program/ProgramFolders.h"

namespace Corvella {

namespace {

/// A value of a desktop entry, in which some characters stand for themselves only when escaped.
std::string escapedValue(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '\\') {
      result += "\\\\";
    } else if (c == '\n') {
      result += "\\n";
    } else if (c == '\r') {
      result += "\\r";
    } else if (c == '\t') {
      result += "\\t";
    } else {
      result += c;
    }
  }
  return result;
}

/// One argument of a command, as the key Exec quotes it before the value as a whole is escaped.
std::string quotedArgument(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (std::string_view("\"`$\\").find(c) != std::string_view::npos) result += '\\';
    if (c == '%') result += '%';  // A single one would begin a field code.
    result += c;
  }
  return result += '"';
}

}  // namespace

std::string autostartEntry(const std::filesystem::path& program, const std::string& player) {
  auto command = quotedArgument(program.string()) + " --hidden";
  if (!player.empty()) command += " --player " + quotedArgument(player);
  return "[Desktop Entry]\nType=Application\nName=Corvella\n"
         "Comment=Shows what a music player is playing, and drives it\nIcon=corvella\n"
         "TryExec=" +
         escapedValue(program.string()) + "\nExec=" + escapedValue(command) +
         "\nTerminal=false\nX-GNOME-Autostart-enabled=true\n";
}

void runAutostartCommand(const CommandLine& commandLine) {
  const QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                    "/autostart");
  if (!folder.isAbsolute()) throw std::runtime_error("XDG_CONFIG_HOME is no absolute path");
  const auto path = folder.filePath("corvella.desktop");
  const auto fail = [&path](const char* what, const QString& reason) {
    throw std::runtime_error(std::string("cannot ") + what + " " + path.toStdString() + ": " +
                             reason.toStdString());
  };
  if (commandLine.autostart) {
    const auto entry =
        autostartEntry(ProgramFolders::program() / "corvella",
                       commandLine.playerIsGiven ? commandLine.player : std::string());
    if (!folder.mkpath(".")) fail("write", "its folder cannot be made");
    QSaveFile file(path);
    const bool isWritten = file.open(QIODevice::WriteOnly) &&
                           file.write(QByteArray::fromStdString(entry)) != -1 && file.commit();
    if (!isWritten) fail("write", file.errorString());
    std::cout << "corvella will start with the desktop: wrote " << path.toStdString() << "\n";
  } else {
    // An entry in a folder that may not be searched does not seem to exist.
    std::error_code error;
    std::filesystem::remove(path.toStdString(), error);
    if (error) fail("remove", QString::fromStdString(error.message()));
    std::cout << "corvella will not start with the desktop\n";
  }
}

}  // namespace Corvella
