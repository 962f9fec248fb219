#include "host/program/PrintCommand.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QObject>
#include <QSocketNotifier>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "extension/WidgetDisplay.h"
#include "host/panel/PageTurner.h"
#include "host/panel/WidgetBridge.h"
#include "host/program/Composition.h"
#include "host/program/DisplayText.h"
#include "host/program/PlayerChoice.h"
#include "host/program/SongJson.h"
#include "host/program/StandardStreams.h"
#include "host/program/TerminationSignals.h"

namespace Corvella {

namespace {

/// Prints what the player plays: once, or again whenever it has news. Lives on the thread of the
/// event loop, which it ends.
class Printer final : public QObject {
 public:
  Printer(const Composition& composition, const CommandLine& commandLine,
          const CommandOutput& output)
      : composition_(composition), commandLine_(commandLine), output_(output) {
    connect(&pages_, &PageTurner::pageIsDue, this, [this] { look(); });
    // A reader that has gone is noticed at once. The next change may be far away, and each restart
    // of a status bar would leave a program behind.
    connect(&broken_, &QSocketNotifier::activated, this, [this] { end(nullptr); });
    start();
  }

  /// Why nothing more could be printed; rethrown by the command, as none may cross the event loop.
  std::exception_ptr failure() const { return failure_; }
  std::string whyPlayerIsNotShown() const { return run_->session->whyPlayerIsNotShown(); }

 private:
  /// One run of the widget, as in the Today view: a player that leaves ends it.
  struct Run {
    WidgetBridge bridge;
    std::unique_ptr<WidgetSession> session;
  };

  void start() {
    run_ = nullptr;  // Waits for a script that is running, which nothing here minds.
    run_ = std::make_unique<Run>();
    run_->bridge.setListening(commandLine_.follow);
    run_->session = composition_.startWidget(commandLine_.player, run_->bridge, run_->bridge);
    display_ = {};
    auto& bridge = run_->bridge;
    connect(&bridge, &WidgetBridge::displayShown, this,
            [this](const WidgetSnapshot& snapshot) { display_.apply(snapshot); });
    connect(&bridge, &WidgetBridge::hasSettled, this, [this] { settled(); });
    connect(&bridge, &WidgetBridge::failed, this, [this](const QString& reason) {
      end(std::make_exception_ptr(std::runtime_error(reason.toStdString())));
    });
    if (commandLine_.follow) {
      connect(&bridge, &WidgetBridge::playerHasNews, this, [this](PlayerNews news) { hear(news); });
    }
    look();
  }

  void hear(PlayerNews news) {
    playerHasLeft_ |= news == PlayerNews::Left;
    news == PlayerNews::Halted ? pages_.turnSoon() : pages_.turnNow();
  }

  void look() try {
    if (std::exchange(playerHasLeft_, false)) return start();
    auto& extension = run_->session->extension();
    if (commandLine_.json) {
      const auto json = songJson(composition_.songOf(*run_->session), commandLine_.lyrics,
                                 [this] { return run_->session->player(); });
      return print(json.line, json.withoutPosition);
    }
    extension.appear();
    extension.settle(0);
  } catch (const std::exception&) {
    end(std::current_exception());
  }

  void settled() try {
    auto& extension = run_->session->extension();
    const auto* const toggle = display_.content<ButtonContent>("toggleLyricsButton");
    if (commandLine_.lyrics && toggle != nullptr && toggle->title == "Show Lyrics") {
      extension.click("toggleLyricsButton");
      return extension.settle(0);
    }
    // Until there is news the widget need not look at the player each second.
    extension.disappear();
    const auto lyrics = commandLine_.lyrics ? lyricsText(display_) : std::string();
    print(displayText(display_) + lyrics, displayText(withoutPosition(display_)) + lyrics);
  } catch (const std::exception&) {
    end(std::current_exception());
  }

  static WidgetDisplay withoutPosition(WidgetDisplay display) {
    const auto* const bar = display.view("progressBar");
    if (bar == nullptr) return display;
    auto still = *bar;
    std::get<ProgressContent>(still.content).value = 0;
    display.apply({.views = {std::move(still)},
                   .size = display.size(),
                   .preferredContentSize = display.preferredContentSize()});
    return display;
  }

  void print(const std::string& text, const std::string& what) {
    if (std::exchange(printed_, what) != what) output_.print(text);
    if (!commandLine_.follow) end(nullptr);
  }

  void end(std::exception_ptr failure) {
    broken_.setEnabled(false);
    failure_ = std::move(failure);
    // The loop may not have begun yet.
    QMetaObject::invokeMethod(qApp, "quit", Qt::QueuedConnection);
  }

  const Composition& composition_;
  const CommandLine& commandLine_;
  const CommandOutput& output_;
  QSocketNotifier broken_{output_.descriptor(), QSocketNotifier::Exception};
  PageTurner pages_{this};
  std::unique_ptr<Run> run_;
  WidgetDisplay display_;
  std::optional<std::string> printed_;  // But for the position.
  bool playerHasLeft_ = false;
  std::exception_ptr failure_;
};

}  // namespace

void runPrintCommand(const CommandLine& commandLine) {
  TerminationSignals termination;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  int argumentCount = 0;
  const QGuiApplication application(argumentCount, nullptr);
  const CommandOutput output;
  giveBusTime();
  const Composition composition;
  QObject::connect(&termination, &TerminationSignals::received, &application,
                   &QGuiApplication::quit);
  termination.listen();
  const Printer printer(composition, commandLine, output);
  QGuiApplication::exec();
  if (printer.failure()) std::rethrow_exception(printer.failure());
  const auto reason = printer.whyPlayerIsNotShown();
  if (!reason.empty() && !commandLine.follow) throw std::runtime_error(reason);
}

}  // namespace Corvella
