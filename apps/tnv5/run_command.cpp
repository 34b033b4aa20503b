#include "apps/tnv5/book_options.h"
#include "apps/tnv5/club_run.h"
#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/script_club.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/host/books/database.h"
#include "tnv5/platform/errors.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>

namespace tnv5::cli {

namespace {

struct TRunOptions
{
    std::string script;
    std::vector<std::string> arguments; // of the script
    std::string port;
    std::string database;
    std::vector<std::string> gates;
    int baudRate = 9600;
    bool wait = false;
    std::string socket;
};

void setGates(const QString& database, const std::vector<std::string>& gates)
{
    host::TDatabase club(database, host::TOpening::Existing);
    club.setBusyTimeout(host::TDatabase::kStartMs); // no gate waits yet
    for (const std::string& each : gates) {
        const QString text = QString::fromStdString(each);
        const auto gate = host::toGate(text);
        if (!gate) {
            throw platform::Exception(
                QStringLiteral("\"%1\" is no gate; write it as address:zone:direction, such as 01A:hall:in")
                    .arg(text));
        }
        if (!club.gates().contains(*gate)) {
            club.setGate(*gate);
        }
    }
    if (club.gates().isEmpty()) {
        complain(QStringLiteral("The club has no gate yet, so every card will be refused: see --gates."));
    }
}

int run(const TRunOptions& options)
{
    const QString database = QString::fromStdString(options.database);
    setGates(database, options.gates);
    return runPort({QString::fromStdString(options.port), options.baudRate, database, options.wait,
                    QString::fromStdString(options.socket)});
}

int runScript(const TRunOptions& options)
{
    QStringList arguments;
    for (const std::string& each : options.arguments) {
        arguments << QString::fromStdString(each);
    }
    failInsteadOfEnding();
    const THangUp hangUp([] {}); // a closed terminal ends nothing
    platform::setExceptionHandler(
        [](const QString& message, const std::exception_ptr&) { complainNow(message); });
    TScriptClub club(QString::fromStdString(options.database), arguments);
    const TStopSignal stop(&QCoreApplication::quit);
    if (!club.start(QString::fromStdString(options.script))) {
        return kFailed;
    }
    if (!stop.received() && !club.quitting()) { // while the script waited for something
        QCoreApplication::exec();
    }
    if (!club.stop()) {
        return kUnwritten;
    }
    printNow(QStringLiteral("Stopped."));
    return kDone;
}

} // namespace

void addRunCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TRunOptions>();
    CLI::App* command =
        app.add_subcommand("run", "Run a whole club, or the gates on a serial port, until Ctrl-C");
    CLI::Option* const script =
        command
            ->add_option("file", options->script,
                         "What runs: a file that describes a club, CLUB.toml (see docs/club-file.md), or\n"
                         "a script that runs one (see docs/scripts.md)")
            ->type_name("FILE");
    command->add_option("arguments", options->arguments, "What the script finds in Arguments")->needs(script);
    command->add_option("--port", options->port, "Serial port, best a stable name from \"tnv5 ports\"")
        ->excludes(script)
        ->type_name("NAME");
    addDatabaseOption(*command, options->database);
    command
        ->add_option("--gates", options->gates,
                     "Gates to add or change, as address:zone:direction, such as 01A:hall:in 02A:hall:out;\n"
                     "directions are in, out and inner (a door inside the club)")
        ->excludes(script)
        ->type_name("GATE");
    CLI::Option* const baud =
        command->add_option("--baud", options->baudRate, "Speed of the line")->capture_default_str();
    command->add_flag("--wait", options->wait,
                      "Wait for a port that is not there yet; a club always waits for all of its ports");
    command->add_option("--socket", options->socket, "Where \"tnv5 status\" and others reach the club")
        ->type_name("FILE");
    command->footer(
        "\nEnds with 0; with 1 when it cannot begin; with 6 when something could not be written into the\n"
        "journal, which is then told. SIGHUP makes a club read its file again and open its log anew.");
    command->callback([&chosen, options, baud] {
        holdSignals(); // before there is anything that a signal could leave half done
        if (QString::fromStdString(options->script).endsWith(QStringLiteral(".toml"))) {
            if (!options->arguments.empty()) {
                throw CLI::ValidationError("arguments", "are for scripts, a club's file takes none");
            }
            if (!options->database.empty() && options->database != qgetenv("TNV5_DB").toStdString()) {
                throw CLI::ValidationError("--db", "stands in the club's file");
            }
            if (baud->count() > 0) {
                throw CLI::ValidationError("--baud", "stands in the club's file");
            }
            chosen = [options] {
                return runClub(QString::fromStdString(options->script),
                               QString::fromStdString(options->socket));
            };
            return;
        }
        if (!options->script.empty()) {
            if (!options->socket.empty()) {
                throw CLI::ValidationError("--socket", "is for a club, a script has none");
            }
            chosen = [options] { return runScript(*options); };
            return;
        }
        for (const auto& [name, value] : {std::pair("--port", options->port), {"--db", options->database}}) {
            if (value.empty()) {
                throw CLI::RequiredError(name);
            }
        }
        chosen = [options] { return run(*options); };
    });
}

} // namespace tnv5::cli
