#include "apps/tnv5/club_run.h"

#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/open_port.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/host/club/club_check.h"
#include "tnv5/host/club/club_plant.h"
#include "tnv5/host/local/local_events.h"
#include "tnv5/host/local/local_path.h"
#include "tnv5/host/local/local_server.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <optional>

namespace tnv5::cli {

namespace {

constexpr int kEndMs = 3'000;

/// Tells what is wrong in a file. @return whether nothing is
bool complainAbout(const QString& file, const QList<host::TFileError>& errors)
{
    for (const host::TFileError& error : errors) {
        complain(host::errorText(file, error));
    }
    return errors.isEmpty();
}

/// What nobody else catches goes into the log while this lives.
class TIntoLog
{
public:
    explicit TIntoLog(host::TClubLog& log)
        : FBefore(platform::setExceptionHandler(
              [&log](const QString& message, const std::exception_ptr&) { log.error({}, message); }))
    {
    }
    ~TIntoLog() { platform::setExceptionHandler(FBefore); }
    TIntoLog(const TIntoLog&) = delete;
    TIntoLog& operator=(const TIntoLog&) = delete;

private:
    platform::TExceptionHandler FBefore;
};

/// A club of one line: the gates that the books have for it.
host::TClubPlan planOf(const TPortRun& options)
{
    constexpr qsizetype kAddressLength = 3; // of a channel on the line; other gates have other controllers
    const QString line = QFileInfo(options.port).fileName();
    host::TClubPlan plan;
    plan.name = QFileInfo(options.database).completeBaseName() + u'-' + line;
    plan.database = options.database;
    plan.lines.append({line, options.port, options.baudRate, {}, {}, {}});
    host::TDatabase books(options.database, host::TOpening::Existing);
    for (const host::TGate& gate : books.gates()) {
        if (gate.address.size() == kAddressLength) {
            plan.gates.append({line, gate, {}, {}});
        }
    }
    return plan;
}

/// A club that runs, with its log, its books and its socket.
class TClubRun
{
public:
    TClubRun(const QString& file, const host::TClubPlan& plan)
        : FLog(plan.log),
          FIntoLog(FLog),
          FBooks(plan.database, host::TOpening::Existing),
          FClub(file, plan, FBooks, FLog)
    {
    }
    ~TClubRun()
    {
        FLog.OnLine = nullptr; // the server goes first
        FClub.OnEvent = nullptr;
        FClub.OnChanged = nullptr;
    }
    TClubRun(const TClubRun&) = delete;
    TClubRun& operator=(const TClubRun&) = delete;

    host::TClubPlant& club() { return FClub; }

    /// @throws platform::Exception when nobody can listen there
    void listen(const QString& socket)
    {
        FServer.emplace(FClub, socket.isEmpty() ? host::usualSocket(FClub.plan().name) : socket);
        FLog.OnLine = [this](const host::TLogLine& line) {
            const QString source = line.source.isEmpty() ? QString() : line.source + QStringLiteral(": ");
            FServer->tell(host::lineEvent(line.level, host::momentOf(line.timeMs), source + line.text));
        };
        FClub.OnEvent = [this](const QJsonObject& event) { FServer->tell(event); };
        FClub.OnChanged = [this] { FServer->stateChanged(); };
    }

    /// The same, but a club that nobody can ask runs as well.
    void tryToListen(const QString& socket)
    {
        try {
            listen(socket);
        } catch (const platform::Exception& error) {
            FLog.warning({}, QStringLiteral("nobody can ask this club: ") + error.message());
        }
    }

    /// @param wait whether ports that are not there are waited for
    int run(bool wait = true)
    {
        const TStopSignal stop(&QCoreApplication::quit);
        const THangUp hangUp([this] {
            FLog.reopen(); // also when the file has a mistake
            FClub.reload();
        });
        FLog.info({}, QStringLiteral("%1 begins, process %2, %3. Ctrl-C ends.")
                          .arg(FClub.plan().name)
                          .arg(QCoreApplication::applicationPid())
                          .arg(FServer ? FServer->path() : QStringLiteral("without a socket")));
        if (!FLog.trouble().isEmpty()) {
            complain(QStringLiteral("%1 cannot be written: %2").arg(FLog.file(), FLog.trouble()));
        }
        FClub.start();
        if (!wait && !allOpen()) {
            end();
            complain(QStringLiteral("To wait for the port instead, add --wait."));
            return kFailed;
        }
        QCoreApplication::exec();
        return end();
    }

private:
    /// Tells what may be wrong with ports that are not open. @return whether there are none
    bool allOpen()
    {
        bool all = true;
        for (const auto& value : FClub.state().value(u"lines").toArray()) {
            const QJsonObject line = value.toObject();
            if (!line.value(u"open").toBool()) {
                all = false;
                complain(line.value(u"why").toString());
                explain(line.value(u"port").toString());
            }
        }
        return all;
    }

    int end()
    {
        const qint64 unwritten = FClub.close();
        bePatient(kEndMs); // with whoever reads, but not for ever
        if (unwritten > 0) {
            const QString text = QStringLiteral("%1 entries are NOT in the journal").arg(unwritten);
            FLog.always(text);
            complainNow(text);
        }
        const QString misplaced = rescueBooks(FBooks);
        if (!misplaced.isEmpty()) {
            FLog.always(misplaced);
            complainNow(misplaced);
        }
        FLog.info({}, QStringLiteral("%1 has ended").arg(FClub.plan().name));
        FLog.finish(kEndMs);
        return unwritten > 0 || !misplaced.isEmpty() ? kUnwritten : kDone;
    }

    host::TClubLog FLog;
    TIntoLog FIntoLog;
    host::TDatabase FBooks;
    host::TClubPlant FClub;
    std::optional<host::TLocalServer> FServer;
};

} // namespace

QString rescueBooks(host::TDatabase& books)
{
    const QString what = books.misplaced();
    if (what.isEmpty()) {
        return {};
    }
    QString text = what + QStringLiteral("; NOT IN ITS PLACE: what was written since then; ");
    try {
        text += QStringLiteral("a copy of the books as this program had them is %1").arg(books.rescue());
    } catch (const host::EDatabase& error) {
        text += QStringLiteral("no copy of it can be made: ") + error.message();
    }
    return text;
}

int runClub(const QString& file, const QString& socket)
{
    failInsteadOfEnding();
    const host::TClubFile club = host::checkClub(file);
    if (!complainAbout(file, club.errors)) {
        return kFailed;
    }
    TClubRun run(file, club.plan);
    run.listen(socket.isEmpty() ? club.plan.socket : socket);
    return run.run();
}

int runPort(const TPortRun& options)
{
    failInsteadOfEnding();
    TClubRun run(options.database, planOf(options));
    run.club().Read = [&] { return host::TClubFile{planOf(options), {}}; };
    run.tryToListen(options.socket);
    return run.run(options.wait);
}

int checkClubFile(const QString& file)
{
    const host::TClubFile club = host::checkClub(file);
    if (!complainAbout(file, club.errors)) {
        complain(QStringLiteral("%1: %2").arg(
            file, club.errors.size() == 1 ? QStringLiteral("1 mistake")
                                          : QStringLiteral("%1 mistakes").arg(club.errors.size())));
        return kFailed;
    }
    const host::TClubPlan& plan = club.plan;
    print(QStringLiteral("%1 is good: %2 lines, %3 buses, %4 gates, %5 lamps, %6 scales, %7 terminals")
              .arg(file)
              .arg(plan.lines.size())
              .arg(plan.buses.size())
              .arg(plan.gates.size())
              .arg(plan.lamps.size())
              .arg(plan.scales.size())
              .arg(plan.terminals.size()));
    return kDone;
}

} // namespace tnv5::cli
