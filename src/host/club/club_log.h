#pragma once

#include "tnv5/host/club/log_filter.h"
#include "tnv5/host/now_output.h"
#include "tnv5/platform/clock.h"
#include "tnv5/platform/timer.h"

#include <functional>

namespace tnv5::host {

/// The log of a host that runs for years.
///
///     TClubLog log("/var/log/tnv5/riverside.log"); // "" is standard output
///     log.warning("entrance", "the port went away");
///
/// Every line has its date, time and zone, its level and its source:
///
///     2026-11-22T09:12:33.123+01:00 warning entrance: the port went away
///
/// On standard output of a service of systemd (JOURNAL_STREAM names it) the level also stands in front,
/// "<4>". What is repeated is counted (`TLogFilter`). Nothing ever waits (`TNowOutput`): lines that nobody
/// takes are left out, and how many is told later; `trouble` tells while nothing can be written.
class TClubLog
{
public:
    static constexpr int kFlushMs = 1;
    static constexpr int kDueMs = 1'000;
    static constexpr qsizetype kMaxQueued = 10'000;

    explicit TClubLog(const QString& file = {});
    ~TClubLog();
    TClubLog(const TClubLog&) = delete;
    TClubLog& operator=(const TClubLog&) = delete;

    void info(const QString& source, const QString& text) { add(TLevel::Info, source, text); }
    void warning(const QString& source, const QString& text) { add(TLevel::Warning, source, text); }
    void error(const QString& source, const QString& text) { add(TLevel::Error, source, text); }

    /// An error that is written whatever there was before.
    void always(const QString& text);

    /// Opens the file anew, for programs that rename it (logrotate), or another one.
    void reopen(const QString& file);
    void reopen() { reopen(FFile); }
    const QString& file() const { return FFile; }
    /// Writes what is queued, and the counts of what was left out.
    void flush();
    /// The same at the end of the program: waits for whoever reads, so long altogether.
    void finish(int ms);

    /// Why nothing can be written; empty: it can.
    const QString& trouble() const { return FTrouble; }
    /// Lines that nobody took.
    qint64 lost() const { return FLost; }

    /// Each line, whether or not it can be written.
    std::function<void(const TLogLine& line)> OnLine;

private:
    void add(TLevel level, const QString& source, const QString& text);
    void pass(const QList<TLogLine>& lines);
    void writeQueue();
    bool write(const QByteArray& line);
    void open();

    QString FFile;
    TLogFilter FFilter;
    QList<TLogLine> FQueue;
    platform::TTimer FFlush;
    platform::TTimer FDue;
    TNowOutput FOutput;
    bool FService = false;
    QString FTrouble;
    qint64 FLost = 0;
    qint64 FUntold = 0; // of them
};

/// A line as it stands in a log, without its end. Example: "2026-11-22T09:12:33.123+01:00 error  the disk is
/// full".
QString logText(const TLogLine& line);
/// A time of the module's clock as a date-time.
platform::TDateTime momentOf(qint64 ms);

} // namespace tnv5::host
