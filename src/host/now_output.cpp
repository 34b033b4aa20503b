#include "tnv5/host/now_output.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tnv5::host {

namespace {

constexpr qsizetype kPiece = 4'000; // a pipe that takes more takes 4,096 bytes at once
constexpr mode_t kFileMode = 0640;

QString errorText(int number)
{
    if (number == EPIPE) {
        return QStringLiteral("nobody reads it any more");
    }
    return QString::fromLocal8Bit(std::strerror(number)); // NOLINT(concurrency-mt-unsafe): one thread
}

/// Whether a line of a file has no end; not where that cannot be read.
bool endsWithinLine(const QString& file)
{
    const QFileInfo info(file);
    QFile text(file);
    return info.isFile() && info.size() > 0 && text.open(QIODevice::ReadOnly | QIODevice::Unbuffered) &&
           text.seek(text.size() - 1) && text.read(1) != "\n";
}

} // namespace

// A regular file is not opened again: others that write to it share the place where the next line goes.
void TNowOutput::attach(int descriptor)
{
    const bool within = !FRest.isEmpty();
    close();
    FRest = within ? "\n" : "";
    FDescriptor = descriptor;
    struct stat info = {};
    if (fstat(descriptor, &info) != 0 || S_ISREG(info.st_mode)) {
        return;
    }
    FSocket = S_ISSOCK(info.st_mode);
    FWaits = !FSocket;
    if (FSocket) {
        return;
    }
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(descriptor);
    const int second = ::open(path.constData(), O_WRONLY | O_NONBLOCK | O_APPEND | O_NOCTTY | O_CLOEXEC);
    if (second >= 0) {
        FDescriptor = second;
        FOwn = true;
        FWaits = false;
    }
}

bool TNowOutput::open(const QString& file)
{
    close();
    FDescriptor = ::open(QFile::encodeName(file).constData(),
                         O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, kFileMode);
    FOwn = FDescriptor >= 0;
    if (!FOwn) {
        FWhy = errorText(errno);
    } else if (endsWithinLine(file)) { // the disk was full then, or the power failed
        FRest = "\n";
    }
    return FOwn;
}

void TNowOutput::close()
{
    if (FOwn) {
        ::close(FDescriptor);
    }
    FDescriptor = -1;
    FOwn = false;
    FWaits = false;
    FSocket = false;
    FFull = false;
    FRest.clear();
}

TNowOutput::TWritten TNowOutput::write(const QByteArray& line)
{
    const QByteArray bytes = FRest + line;
    qint64 done = 0;
    FWhy.clear();
    if (FFull && !takesAgain()) {
        return TWritten::No;
    }
    FFull = false;
    while (done < bytes.size()) {
        const qint64 some = writeSome(bytes.mid(done));
        if (some > 0) {
            done += some;
        } else if (some < 0 && errno == EINTR) {
            continue;
        } else if (some < 0 && errno != EAGAIN) {
            FWhy = errorText(errno);
            break;
        } else if (!waitsLonger()) {
            FFull = true;
            break;
        }
    }
    const bool began = done > FRest.size();
    FRest = began ? bytes.mid(done) : FRest.mid(done);
    return began ? TWritten::Yes : FWhy.isEmpty() ? TWritten::No : TWritten::Failed;
}

/// @return as the system's write; EAGAIN: nothing is taken now
qint64 TNowOutput::writeSome(const QByteArray& bytes) const
{
    if (FSocket) {
        return ::send(FDescriptor, bytes.constData(), std::size_t(bytes.size()), MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    qsizetype size = bytes.size();
    if (FWaits) {
        pollfd state = {FDescriptor, POLLOUT, 0};
        if (poll(&state, 1, 0) != 1 || (state.revents & (POLLOUT | POLLERR | POLLNVAL)) == 0) {
            errno = EAGAIN;
            return -1;
        }
        size = std::min(size, kPiece);
    }
    return ::write(FDescriptor, bytes.constData(), std::size_t(size));
}

/// Whether there is room again, not only for a short line behind one that was too long.
bool TNowOutput::takesAgain() const
{
    pollfd state = {FDescriptor, POLLOUT, 0};
    return poll(&state, 1, int(FPatience.remainingTime())) != 0;
}

/// Waits as long as patience lasts. @return whether it is worth another try
bool TNowOutput::waitsLonger() const
{
    const qint64 ms = FPatience.remainingTime();
    if (ms <= 0) {
        return false;
    }
    pollfd state = {FDescriptor, POLLOUT, 0};
    return poll(&state, 1, int(ms)) > 0;
}

} // namespace tnv5::host
