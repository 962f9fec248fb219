#include "host/Application.h"

#include <QAccessible>
#include <QFont>
#include <QToolTip>

#include "host/Theme.h"

namespace Corvella {

namespace {

/// What Qt calls its font where no desktop names one. There is none of that name: Qt would look for
/// another as often as it needs a font.
constexpr auto kAnySansSerif = "Sans Serif";

void nameFont(const QString& sansSerif) {
  auto font = QApplication::font();
  if (font.family() != kAnySansSerif || sansSerif.isEmpty()) return;
  font.setFamily(sansSerif);
  QApplication::setFont(font);
}

}  // namespace

Application::Application(FontPreload& fonts)
    : fonts_(fonts), application_(count_, arguments_.data()) {
  QApplication::setApplicationName("corvella");
  QApplication::setDesktopFileName("corvella");
  QApplication::setQuitOnLastWindowClosed(false);
  QToolTip::setPalette(theme::toolTipPalette());
  nameFont(fonts.sansSerif());
  // Asks the session bus, which takes longer while fonts are listed.
  static_cast<void>(QAccessible::isActive());
  fonts.listFonts();
}

Application::~Application() {
  fonts_.finish();
}

}  // namespace Corvella
