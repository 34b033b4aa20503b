// Making, copying and pruning a club's database.

#include "apps/tnv5/book_options.h"
#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/host/books/books.h"
#include "tnv5/host/books/books_care.h"
#include "tnv5/host/books/books_journal.h"

#include <CLI/CLI.hpp>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QThread>
#include <memory>
#include <unistd.h>

namespace tnv5::cli {

namespace {

constexpr int kPruneAtOnce = 2'000; // rows: a host that runs waits this long at most
constexpr int kPruneRestMs = 20;    // and writes what it has in between

struct TInitOptions
{
    std::string file;
};

struct TBackupOptions
{
    std::string database;
    std::string file;
    bool force = false;
};

struct TPruneOptions
{
    std::string database;
    std::string age;
    std::vector<std::string> what = {"passes", "outages"};
    bool yes = false;
    bool dryRun = false;
};

int init(const TInitOptions& options)
{
    const QString file = databaseFile(options.file);
    failInsteadOfEnding();
    QFile made(file);
    if (!made.open(QIODevice::NewOnly)) {
        throw platform::Exception(file + QStringLiteral(": ") +
                                  (QFileInfo::exists(file)
                                       ? QStringLiteral("the file is there already; nothing was changed")
                                       : made.errorString()));
    }
    made.close();
    try {
        const host::TDatabase club(file);
    } catch (const host::EDatabase&) { // half a database would be in the way of the next attempt
        for (const char* part : {"-wal", "-shm", "-hosts", ""}) {
            QFile::remove(file + QLatin1String(part));
        }
        throw;
    }
    print(QStringLiteral("%1 is an empty club. Next: tnv5 zone add, gate add, member import.").arg(file));
    return kDone;
}

int backup(const TBackupOptions& options)
{
    const QString file = QString::fromStdString(options.file);
    host::TDatabase club(databaseFile(options.database), host::TOpening::Existing);
    club.setBusyTimeout(host::TBooks::kPatienceMs);
    host::backUp(club, file, options.force);
    print(QStringLiteral("%1: %2 bytes, checked.").arg(file).arg(QFileInfo(file).size()));
    return kDone;
}

bool confirmed()
{
    if (isatty(STDIN_FILENO) != 1) {
        throw platform::Exception(QStringLiteral("Nobody is there to be asked; --yes answers"));
    }
    draw({QStringLiteral("Remove them? Type yes:")});
    return QTextStream(stdin).readLine().trimmed() == QStringLiteral("yes");
}

int prune(const TPruneOptions& options)
{
    const platform::TDateTime before = host::readAge(QString::fromStdString(options.age));
    QList<host::TPruned> tables;
    for (const std::string& name : options.what) {
        const auto table = host::toPruned(QString::fromStdString(name));
        if (!table) {
            throw platform::Exception(
                QStringLiteral("\"%1\" cannot be pruned; there are passes, outages, sales, lamp-times "
                               "and payments")
                    .arg(QString::fromStdString(name)));
        }
        tables.append(*table);
    }
    host::TDatabase club(databaseFile(options.database), host::TOpening::Existing);
    club.setBusyTimeout(host::TBooks::kPatienceMs);
    qint64 all = 0;
    for (const host::TPruned table : tables) {
        const qint64 count = host::countPrunable(club, table, before);
        print(QStringLiteral("%1 %2 from before %3")
                  .arg(count)
                  .arg(host::toText(table), host::timeForPeople(before)));
        all += count;
    }
    if (options.dryRun || all == 0) {
        return kDone;
    }
    if (!options.yes && !confirmed()) {
        print(QStringLiteral("Nothing was removed."));
        return kFailed;
    }
    for (const host::TPruned table : tables) {
        while (host::prune(club, table, before, kPruneAtOnce) > 0) {
            QThread::msleep(kPruneRestMs);
        }
    }
    print(QStringLiteral("Removed. The file keeps its size; the room in it is used again."));
    return kDone;
}

} // namespace

void addInitCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TInitOptions>();
    CLI::App* const command =
        app.add_subcommand("init", "Make an empty database for a club; the only command that does");
    command
        ->add_option("file", options->file, "A file that is not there yet; else the one that TNV5_DB names")
        ->envname("TNV5_DB")
        ->type_name("FILE");
    command->callback([&chosen, options] { chosen = [options] { return init(*options); }; });
}

void addBackupCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TBackupOptions>();
    CLI::App* const command =
        app.add_subcommand("backup", "Copy the database, also while a host runs on it, and check the copy");
    addDatabaseOption(*command, options->database);
    command->add_option("file", options->file, "The copy")->required()->type_name("FILE");
    command->add_flag("--force", options->force, "Take the place of a file that is there");
    command->callback([&chosen, options] { chosen = [options] { return backup(*options); }; });
}

void addPruneCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TPruneOptions>();
    CLI::App* const command = app.add_subcommand("prune", "Remove what is old from the books");
    addDatabaseOption(*command, options->database);
    command->add_option("--older-than", options->age, "90d, 8w, 18m (months) or 3y")
        ->required()
        ->type_name("AGE");
    command
        ->add_option("--what", options->what,
                     "passes, outages, sales, lamp-times, payments; without it passes and outages;\n"
                     "may be given again")
        ->allow_extra_args(false)
        ->type_name("WHAT");
    command->add_flag("--yes", options->yes, "Do not ask");
    command->add_flag("--dry-run", options->dryRun, "Only tell how much it is");
    command->footer("\nKept, however old: what is under way, the pass by which somebody who is inside came "
                    "in, and the last\n"
                    "row of each table. Members, cards and memberships are never pruned.");
    command->callback([&chosen, options] { chosen = [options] { return prune(*options); }; });
}

} // namespace tnv5::cli
