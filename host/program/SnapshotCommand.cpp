#include "host/program/SnapshotCommand.h"

#include <QByteArray>
#include <stdexcept>

#include "host/panel/TodayView.h"
#include "host/program/Application.h"
#include "host/program/Composition.h"
#include "host/program/PlayerChoice.h"
#include "host/program/ViewPicture.h"
#include "players/mpris/artwork/HttpFetcher.h"

namespace Corvella {

void runSnapshotCommand(const CommandLine& commandLine) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const Application application;
  giveBusTime();
  // A picture that came later would not be in the file.
  const Composition composition({.webPicture = HttpLimits().time});
  TodayView view(composition.starter(), commandLine.player);
  openUnseen(view, commandLine.lyrics);
  writePicture(view, commandLine.file, commandLine.scale);
  const auto reason = view.whyPlayerIsNotShown();
  if (!reason.empty()) throw std::runtime_error(reason);
}

}  // namespace Corvella
