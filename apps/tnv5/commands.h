#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace tnv5::cli {

/// What the person asked for; gives the exit code. Runs when the application object is there.
using TCommand = std::function<int()>;

// Exit codes of all commands.
constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kMisused = 2;   ///< the command line itself is wrong
constexpr int kUnwritten = 6; ///< a host has ended, and not everything is in the journal
constexpr int kInterrupted = 130;

// Each adds one command to the command line; when it is the one asked for, it puts itself into `chosen`.
void addPortsCommand(CLI::App& app, TCommand& chosen);
void addRunCommand(CLI::App& app, TCommand& chosen);
void addCheckCommand(CLI::App& app, TCommand& chosen);
void addHostCommands(CLI::App& app, TCommand& chosen); // status, open, reload, sell
void addDemoCommand(CLI::App& app, TCommand& chosen);
void addWatchCommand(CLI::App& app, TCommand& chosen);
void addReplayCommand(CLI::App& app, TCommand& chosen);
void addRelayCommand(CLI::App& app, TCommand& chosen);
void addScalesCommand(CLI::App& app, TCommand& chosen);
void addWeighCommand(CLI::App& app, TCommand& chosen);
void addQrCommand(CLI::App& app, TCommand& chosen);
void addPayCommand(CLI::App& app, TCommand& chosen);
void addTerminalCommand(CLI::App& app, TCommand& chosen);
void addMonitorCommand(CLI::App& app, TCommand& chosen);
void addCertCommand(CLI::App& app, TCommand& chosen);
void addScriptReferenceCommand(CLI::App& app, TCommand& chosen);

void addInitCommand(CLI::App& app, TCommand& chosen);
void addMemberCommand(CLI::App& app, TCommand& chosen);
void addCardCommand(CLI::App& app, TCommand& chosen);
void addMembershipCommand(CLI::App& app, TCommand& chosen);
void addZoneCommand(CLI::App& app, TCommand& chosen);
void addGateCommand(CLI::App& app, TCommand& chosen);
void addProductCommand(CLI::App& app, TCommand& chosen);
void addInsideCommand(CLI::App& app, TCommand& chosen);
void addJournalCommand(CLI::App& app, TCommand& chosen);
void addBackupCommand(CLI::App& app, TCommand& chosen);
void addPruneCommand(CLI::App& app, TCommand& chosen);
void addCompletionCommand(CLI::App& app, TCommand& chosen);

} // namespace tnv5::cli
