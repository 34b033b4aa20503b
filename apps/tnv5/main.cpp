#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/platform/errors.h"
#include "tnv5/version.h"

#include <CLI/CLI.hpp>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <algorithm>
#include <cstdio>

namespace {

/// One line that says which command is meant, such as "tnv5 gate add: zone is required; see tnv5 gate add
/// --help".
std::string misused(const CLI::App* app, const CLI::Error& error)
{
    std::string command = "tnv5";
    for (const CLI::App* each = app; !each->get_subcommands().empty();) {
        each = each->get_subcommands().front();
        command += ' ' + each->get_name();
    }
    std::string what = error.what();
    std::replace(what.begin(), what.end(), '\n', ' ');
    return command + ": " + what + "; see " + command + " --help\n";
}

int run(int argc, char** argv)
{
    CLI::App app("Drives the turnstiles and doors of a club.\n", "tnv5");
    app.set_version_flag("--version", "tnv5 " TNV5_VERSION_STRING);
    app.require_subcommand(0, 1); // a word that is no command is then named
    app.add_flag_callback("--plain", tnv5::cli::setPlain, "No colours");
    app.footer("\nA first look, without any hardware:  tnv5 demo\n"
               "More about a command:                tnv5 COMMAND --help");
    tnv5::cli::TCommand chosen;
    tnv5::cli::addDemoCommand(app, chosen);
    tnv5::cli::addPortsCommand(app, chosen);
    tnv5::cli::addRunCommand(app, chosen);
    tnv5::cli::addCheckCommand(app, chosen);
    tnv5::cli::addHostCommands(app, chosen);
    tnv5::cli::addWatchCommand(app, chosen);
    tnv5::cli::addReplayCommand(app, chosen);
    tnv5::cli::addRelayCommand(app, chosen);
    tnv5::cli::addScalesCommand(app, chosen);
    tnv5::cli::addWeighCommand(app, chosen);
    tnv5::cli::addQrCommand(app, chosen);
    tnv5::cli::addPayCommand(app, chosen);
    tnv5::cli::addTerminalCommand(app, chosen);
    tnv5::cli::addMonitorCommand(app, chosen);
    tnv5::cli::addCertCommand(app, chosen);
    tnv5::cli::addInitCommand(app, chosen);
    tnv5::cli::addMemberCommand(app, chosen);
    tnv5::cli::addCardCommand(app, chosen);
    tnv5::cli::addMembershipCommand(app, chosen);
    tnv5::cli::addZoneCommand(app, chosen);
    tnv5::cli::addGateCommand(app, chosen);
    tnv5::cli::addProductCommand(app, chosen);
    tnv5::cli::addInsideCommand(app, chosen);
    tnv5::cli::addJournalCommand(app, chosen);
    tnv5::cli::addBackupCommand(app, chosen);
    tnv5::cli::addPruneCommand(app, chosen);
    tnv5::cli::addScriptReferenceCommand(app, chosen);
    tnv5::cli::addCompletionCommand(app, chosen);
    app.failure_message(misused);
    try {
        app.parse(argc, argv);
        if (app.get_subcommands().empty()) {
            throw CLI::RequiredError("A subcommand");
        }
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? tnv5::cli::kDone : tnv5::cli::kMisused; // 0: --help
    }

    qputenv("QT_NO_GLIB", "1"); // Qt's own event loop answers a card sooner
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen"); // pictures are drawn, no window is ever shown
    }
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false")); // Qt's remarks to developers
    const QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationVersion(QStringLiteral(TNV5_VERSION_STRING));
    tnv5::platform::setExceptionHandler(
        [](const QString& message, const std::exception_ptr&) { tnv5::cli::complain(message); });
    return chosen();
}

} // namespace

int main(int argc, char** argv)
{
    tnv5::cli::fillStandardStreams();
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tnv5: %s\n", error.what());
    } catch (...) {
        std::fputs("tnv5: unknown exception\n", stderr);
    }
    return tnv5::cli::kFailed;
}
