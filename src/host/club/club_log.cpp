#include "tnv5/host/club/club_log.h"

#include "tnv5/host/local/local_events.h"
#include "tnv5/platform/errors.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace tnv5::host {

namespace {

constexpr qsizetype kMaxText = 2'000;    // a packet may have 64 KiB, and a pipe takes 4 KiB at once
constexpr int kPriorities[] = {6, 4, 3}; // info, warning, error of syslog

qint64 nowMs()
{
    return platform::TClock::current().nowMs();
}

QString errorText(int number)
{
    return QString::fromLocal8Bit(std::strerror(number)); // NOLINT(concurrency-mt-unsafe): one thread
}

/// What came from a wire or a file must not command a terminal or begin a line of its own.
QString harmless(const QString& line)
{
    QString text;
    for (const QChar character : line) {
        if (character.category() == QChar::Other_Control) {
            text += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QChar(u'0'));
        } else {
            text += character;
        }
    }
    return text;
}

} // namespace

platform::TDateTime momentOf(qint64 ms)
{
    return double(ms) / double(platform::kMsPerDay);
}

QString logText(const TLogLine& line)
{
    const QString source = line.source.isEmpty() ? QString() : line.source + QStringLiteral(": ");
    QString text = source + line.text;
    if (text.size() > kMaxText) {
        text = text.left(kMaxText) + u'…';
    }
    return isoTime(momentOf(line.timeMs)) + u' ' + toText(line.level) + u' ' + harmless(text).left(kMaxText);
}

TClubLog::TClubLog(const QString& file)
    : FFile(file), FService(file.isEmpty() && qEnvironmentVariableIsSet("JOURNAL_STREAM"))
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
    close();
}

void TClubLog::open()
{
    if (FFile.isEmpty()) {
        FDescriptor = STDOUT_FILENO;
        return;
    }
    FDescriptor = ::open(QFile::encodeName(FFile).constData(),
                         O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0640);
    if (FDescriptor < 0) {
        failed(errorText(errno));
    }
}

void TClubLog::close()
{
    if (FDescriptor > STDERR_FILENO) {
        ::close(FDescriptor);
    }
    FDescriptor = -1;
}

void TClubLog::reopen(const QString& file)
{
    writeQueue();
    close();
    FRest.clear();
    FFile = file;
    FService = file.isEmpty() && qEnvironmentVariableIsSet("JOURNAL_STREAM");
    open();
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

// Never waits: what a pipe does not take at once is left out, but never half a line.
bool TClubLog::write(const QByteArray& line)
{
    if (FDescriptor < 0) {
        open(); // it may work again
        if (FDescriptor < 0) {
            return false;
        }
    }
    pollfd state = {FDescriptor, POLLOUT, 0};
    if (poll(&state, 1, 0) != 1 || (state.revents & POLLOUT) == 0) {
        if ((state.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) {
            failed(QStringLiteral("nobody reads it any more"));
        }
        return false;
    }
    const QByteArray bytes = FRest + line;
    const ssize_t written = ::write(FDescriptor, bytes.constData(), std::size_t(bytes.size()));
    if (written < 0) {
        failed(errorText(errno));
        return false;
    }
    const bool began = written > FRest.size();
    FRest = written == bytes.size() ? QByteArray() : bytes.mid(written);
    if (!began) {
        FRest.chop(line.size()); // the end of the line before comes first
        return false;
    }
    FTrouble.clear();
    return true;
}

void TClubLog::failed(const QString& why)
{
    FTrouble = why;
    if (!FFile.isEmpty() && FDescriptor >= 0) {
        close();
    }
}

} // namespace tnv5::host
