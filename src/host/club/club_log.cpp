#include "tnv5/host/club/club_log.h"

#include "tnv5/host/local/local_events.h"
#include "tnv5/host/shown_text.h"
#include "tnv5/platform/errors.h"

#include <sys/stat.h>
#include <unistd.h>

namespace tnv5::host {

namespace {

constexpr qsizetype kMaxText = 2'000;    // a packet may have 64 KiB, and a pipe takes 4 KiB at once
constexpr int kPriorities[] = {6, 4, 3}; // info, warning, error of syslog

qint64 nowMs()
{
    return platform::TClock::current().nowMs();
}

/// Whether standard output goes to the journal of systemd: it names the file that it has given for it.
bool outputIsJournal()
{
    struct stat info = {};
    const QByteArray named = qgetenv("JOURNAL_STREAM");
    return !named.isEmpty() && fstat(STDOUT_FILENO, &info) == 0 &&
           named == QByteArray::number(quint64(info.st_dev)) + ':' + QByteArray::number(quint64(info.st_ino));
}

} // namespace

platform::TDateTime momentOf(qint64 ms)
{
    return double(ms) / double(platform::kMsPerDay);
}

QString logText(const TLogLine& line)
{
    const QString source = line.source.isEmpty() ? QString() : line.source + QStringLiteral(": ");
    QString text = harmless((source + line.text).left(kMaxText + 1));
    if (text.size() > kMaxText) {
        text = text.left(kMaxText) + u'…';
    }
    return isoTime(momentOf(line.timeMs)) + u' ' + toText(line.level) + u' ' + text;
}

TClubLog::TClubLog(const QString& file) : FFile(file)
{
    open();
    FFlush.SetInterval(kFlushMs);
    FFlush.OnTimer = [this](platform::TTimer*) { writeQueue(); };
    FDue.SetInterval(kDueMs);
    FDue.OnTimer = [this](platform::TTimer*) { pass(FFilter.due(nowMs())); };
    FDue.SetEnabled(true);
}

TClubLog::~TClubLog()
{
    flush();
}

void TClubLog::open()
{
    FService = FFile.isEmpty() && outputIsJournal();
    if (FFile.isEmpty()) {
        FOutput.attach(STDOUT_FILENO);
    } else if (!FOutput.open(FFile)) {
        FTrouble = FOutput.why();
    }
}

void TClubLog::reopen(const QString& file)
{
    writeQueue();
    FFile = file;
    open();
}

void TClubLog::finish(int ms)
{
    FOutput.bePatient(ms);
    flush();
}

void TClubLog::flush()
{
    pass(FFilter.rest(nowMs()));
    writeQueue();
}

void TClubLog::add(TLevel level, const QString& source, const QString& text)
{
    pass(FFilter.take({nowMs(), level, source, text}));
}

void TClubLog::always(const QString& text)
{
    if (FQueue.size() >= kMaxQueued) {
        writeQueue();
    }
    pass({{nowMs(), TLevel::Error, {}, text}});
}

void TClubLog::pass(const QList<TLogLine>& lines)
{
    for (const TLogLine& line : lines) {
        if (FQueue.size() < kMaxQueued) {
            FQueue.append(line);
        } else {
            ++FLost;
            ++FUntold;
        }
    }
    if (!FQueue.isEmpty()) {
        FFlush.SetEnabled(true);
    }
}

void TClubLog::writeQueue()
{
    FFlush.SetEnabled(false);
    for (const TLogLine& line : std::exchange(FQueue, {})) {
        if (OnLine) {
            platform::guarded([&] { OnLine(line); });
        }
        const QByteArray priority =
            FService ? '<' + QByteArray::number(kPriorities[int(line.level)]) + '>' : QByteArray();
        if (FUntold > 0) {
            const TLogLine note = {line.timeMs,
                                   TLevel::Warning,
                                   {},
                                   countText(FUntold) + QStringLiteral(" lines are missing here")};
            if (write((FService ? "<4>" : "") + logText(note).toUtf8() + '\n')) {
                FUntold = 0;
            }
        }
        if (FUntold > 0 || !write(priority + logText(line).toUtf8() + '\n')) {
            ++FLost;
            ++FUntold;
        }
    }
}

// Never waits: what nobody takes at once is left out, but never half a line.
bool TClubLog::write(const QByteArray& line)
{
    if (!FOutput.isOpen()) {
        open(); // it may work again
        if (!FOutput.isOpen()) {
            return false;
        }
    }
    const TNowOutput::TWritten written = FOutput.write(line);
    if (written == TNowOutput::TWritten::Failed) {
        FTrouble = FOutput.why();
        if (!FFile.isEmpty()) {
            FOutput.close();
        }
    } else {
        FTrouble = written == TNowOutput::TWritten::Yes
                       ? QString()
                       : QStringLiteral("nobody takes what is written, lines are left out");
    }
    return written == TNowOutput::TWritten::Yes;
}

} // namespace tnv5::host
