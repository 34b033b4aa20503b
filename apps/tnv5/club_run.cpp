#include "apps/tnv5/club_run.h"

#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/host/club/club_check.h"
#include "tnv5/host/club/club_plant.h"
#include "tnv5/host/local/local_events.h"
#include "tnv5/host/local/local_path.h"
#include "tnv5/host/local/local_server.h"

#include <QCoreApplication>
#include <optional>

namespace tnv5::cli {

namespace {

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

/// A club that runs, with its log, its books and its socket.
class TClubRun
{
public:
    TClubRun(const QString& file, const host::TClubPlan& plan, const QString& socket)
        : FLog(plan.log),
          FIntoLog(FLog),
          FBooks(plan.database, host::TOpening::Existing),
          FClub(file, plan, FBooks, FLog),
          FServer(FClub, socket.isEmpty() ? host::usualSocket(plan.name) : socket)
    {
        FLog.OnLine = [this](const host::TLogLine& line) {
            const QString source = line.source.isEmpty() ? QString() : line.source + QStringLiteral(": ");
            FServer.tell(host::lineEvent(line.level, host::momentOf(line.timeMs), source + line.text));
        };
        FClub.OnEvent = [this](const QJsonObject& event) { FServer.tell(event); };
        FClub.OnChanged = [this] { FServer.stateChanged(); };
    }
    ~TClubRun()
    {
        FLog.OnLine = nullptr; // the server goes first
        FClub.OnEvent = nullptr;
        FClub.OnChanged = nullptr;
    }
    TClubRun(const TClubRun&) = delete;
    TClubRun& operator=(const TClubRun&) = delete;

    int run()
    {
        const TStopSignal stop(&QCoreApplication::quit);
        const THangUp hangUp([this] {
            FLog.reopen(); // also when the file has a mistake
            FClub.reload();
        });
        FLog.info({}, QStringLiteral("%1 begins, process %2, %3. Ctrl-C ends.")
                          .arg(FClub.plan().name)
                          .arg(QCoreApplication::applicationPid())
                          .arg(FServer.path()));
        if (!FLog.trouble().isEmpty()) {
            complain(QStringLiteral("%1 cannot be written: %2").arg(FLog.file(), FLog.trouble()));
        }
        FClub.start();
        QCoreApplication::exec();
        return end();
    }

private:
    int end()
    {
        const qint64 unwritten = FClub.close();
        if (unwritten > 0) {
            const QString text = QStringLiteral("%1 entries are NOT in the journal").arg(unwritten);
            FLog.always(text);
            complain(text);
        }
        FLog.info({}, QStringLiteral("%1 has ended").arg(FClub.plan().name));
        FLog.flush();
        return unwritten > 0 ? kUnwritten : kDone;
    }

    host::TClubLog FLog;
    TIntoLog FIntoLog;
    host::TDatabase FBooks;
    host::TClubPlant FClub;
    host::TLocalServer FServer;
};

} // namespace

int runClub(const QString& file, const QString& socket)
{
    holdSignals(); // also in the threads that begin from now on
    failInsteadOfEnding();
    const host::TClubFile club = host::checkClub(file);
    if (!complainAbout(file, club.errors)) {
        return kFailed;
    }
    return TClubRun(file, club.plan, socket.isEmpty() ? club.plan.socket : socket).run();
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
