#include "sim/pty.h"

#include "tnv5/platform/errors.h"

#include <QFile>
#include <QPointer>
#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace tnv5::sim {

namespace {

constexpr int kPresenceMs = 20;
constexpr int kPaceMs = 5;
constexpr qint64 kByteCost = 10'000; // ten bits, in thousandths: baud times milliseconds
constexpr int kReadsAtOnce = 16;     // then the rest of the program gets its turn
constexpr std::size_t kReadSize = 4'096;
constexpr std::size_t kNameSize = 128;

[[noreturn]] void fail(const QString& what)
{
    throw platform::Exception(QStringLiteral("%1: %2").arg(what, qt_error_string(errno)));
}

/// A descriptor that is closed on the way out unless it is taken.
class TDescriptor
{
public:
    explicit TDescriptor(int fd) : FFd(fd) {}
    ~TDescriptor()
    {
        if (FFd >= 0) {
            ::close(FFd);
        }
    }
    TDescriptor(const TDescriptor&) = delete;
    TDescriptor& operator=(const TDescriptor&) = delete;

    bool valid() const { return FFd >= 0; }
    int get() const { return FFd; }
    int take() { return std::exchange(FFd, -1); }

private:
    int FFd;
};

int openSlave(int master)
{
    std::array<char, kNameSize> name{};
    if (::ptsname_r(master, name.data(), name.size()) != 0) {
        return -1;
    }
    return ::open(name.data(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
}

void makeRaw(int slave)
{
    termios settings{};
    if (::tcgetattr(slave, &settings) != 0) {
        fail(QStringLiteral("The pseudo-terminal has no settings"));
    }
    ::cfmakeraw(&settings);
    if (::tcsetattr(slave, TCSANOW, &settings) != 0) {
        fail(QStringLiteral("The pseudo-terminal cannot be made raw"));
    }
}

/// Makes the path lead to the other end of `master`, in one step for whoever is opening it.
void linkTo(const QString& path, int master)
{
    std::array<char, kNameSize> name{};
    const QByteArray link = QFile::encodeName(path);
    const QByteArray fresh = link + ".new";
    ::unlink(fresh.constData());
    if (::ptsname_r(master, name.data(), name.size()) != 0 ||
        ::symlink(name.data(), fresh.constData()) != 0 ||
        ::rename(fresh.constData(), link.constData()) != 0) {
        fail(QStringLiteral("The device cannot be put at %1").arg(path));
    }
}

short pollEvents(int fd, short wanted = POLLIN)
{
    pollfd entry{fd, wanted, 0};
    return ::poll(&entry, 1, 0) > 0 ? entry.revents : short{0};
}

} // namespace

TPty::TPty(const QString& name)
{
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..") ||
        name.contains(QLatin1Char('/')) || name.contains(QChar(u'\0'))) {
        throw platform::Exception(QStringLiteral("Not a file name: \"%1\"").arg(name));
    }
    if (!FDirectory.isValid()) {
        throw platform::Exception(FDirectory.errorString());
    }
    FPath = FDirectory.filePath(name);
    FPresence.setInterval(kPresenceMs);
    FPresence.setTimerType(Qt::PreciseTimer);
    connect(&FPresence, &QTimer::timeout, this, [this] { platform::guarded([this] { lookForProgram(); }); });
    FPace.SetInterval(kPaceMs);
    FPace.OnTimer = [this](platform::TTimer*) { sendPaced(); };
    plug();
}

TPty::~TPty()
{
    closeMaster();
}

void TPty::plug()
{
    if (plugged()) {
        return;
    }
    TDescriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!master.valid() || ::grantpt(master.get()) != 0 || ::unlockpt(master.get()) != 0) {
        fail(QStringLiteral("No pseudo-terminal"));
    }
    {
        // opened once and closed again, the other end is known to be closed until a program comes
        const TDescriptor slave(openSlave(master.get()));
        if (!slave.valid()) {
            fail(QStringLiteral("The pseudo-terminal cannot be opened"));
        }
        makeRaw(slave.get());
    }
    linkTo(FPath, master.get());
    FMaster = master.take();
    ++FPlugs;
    FPresence.start();
}

void TPty::unplug()
{
    const bool wasOpened = FOpened;
    closeMaster();
    if (wasOpened) {
        tellOpened(false);
    }
}

void TPty::closeMaster()
{
    if (!plugged()) {
        return;
    }
    stopWatching();
    FPresence.stop();
    ::unlink(QFile::encodeName(FPath).constData());
    ::close(std::exchange(FMaster, -1));
}

void TPty::write(const QByteArray& bytes)
{
    if (bytes.isEmpty()) {
        return;
    }
    const QPointer<TPty> self(this);
    const bool opened = plugged() && (FOpened || noticeOpening());
    if (!self) {
        return;
    }
    if (!opened || FQueue.size() + bytes.size() > kMaxQueued) {
        FLost += bytes.size();
        return;
    }
    FQueue += bytes;
    if (BaudRate > 0) {
        FPace.SetEnabled(true);
    } else {
        sendQueue();
    }
}

void TPty::lookForProgram()
{
    const QPointer<TPty> self(this);
    if (noticeOpening() && self) {
        onReadable();
    }
}

/// Looks whether a program has opened the device, or did and left something to read.
/// @return false also when a hook unplugged or destroyed the device.
bool TPty::noticeOpening()
{
    const short events = pollEvents(FMaster);
    if ((events & POLLHUP) != 0 && (events & POLLIN) == 0) {
        return false;
    }
    FOpened = true;
    FPresence.stop();
    FReadable = new QSocketNotifier(FMaster, QSocketNotifier::Read, this);
    connect(FReadable, &QSocketNotifier::activated, this,
            [this] { platform::guarded([this] { onReadable(); }); });
    FWritable = new QSocketNotifier(FMaster, QSocketNotifier::Write, this);
    FWritable->setEnabled(false);
    connect(FWritable, &QSocketNotifier::activated, this, [this] { sendQueue(); });
    const QPointer<TPty> self(this);
    tellOpened(true);
    return self && FOpened;
}

/// The program has closed the device: what it did not read must not meet the next one.
void TPty::noticeClosing()
{
    stopWatching();
    FPresence.start();
    if (const TDescriptor slave(openSlave(FMaster)); slave.valid()) {
        ::tcflush(slave.get(), TCIFLUSH);
    } else { // a program that died without giving back its exclusive use
        closeMaster();
        plug();
    }
    tellOpened(false);
}

void TPty::stopWatching()
{
    for (QSocketNotifier*& notifier : {std::ref(FReadable), std::ref(FWritable)}) {
        if (notifier != nullptr) {
            notifier->setEnabled(false);
            std::exchange(notifier, nullptr)->deleteLater();
        }
    }
    FPace.SetEnabled(false);
    FLost += FQueue.size();
    FQueue.clear();
    FCredit = 0;
    FOpened = false;
}

void TPty::onReadable()
{
    const QPointer<TPty> self(this);
    const quint64 plug = FPlugs;
    std::array<char, kReadSize> buffer{};
    for (int reads = 0; reads < kReadsAtOnce; ++reads) {
        const ssize_t count = ::read(FMaster, buffer.data(), buffer.size());
        if (count > 0) {
            deliver(QByteArray(buffer.data(), count));
            if (!self || !FOpened || FPlugs != plug) {
                return;
            }
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else {
            if (count == 0 || errno != EAGAIN) {
                noticeClosing();
            }
            return;
        }
    }
}

bool TPty::settled() const
{
    if (!plugged()) {
        return true;
    }
    const short events = pollEvents(FMaster, POLLIN | POLLOUT);
    const bool somebody = (events & POLLHUP) == 0;
    const bool sending = BaudRate <= 0 && !FQueue.isEmpty() && (events & POLLOUT) != 0;
    return somebody == FOpened && (events & POLLIN) == 0 && !sending;
}

void TPty::sendQueue()
{
    send(FQueue.size());
    FWritable->setEnabled(!FQueue.isEmpty());
}

void TPty::sendPaced()
{
    if (BaudRate <= 0) {
        FPace.SetEnabled(false);
        sendQueue();
        return;
    }
    FCredit += qint64{BaudRate} * kPaceMs;
    const qsizetype limit = qsizetype(std::min<qint64>(FCredit / kByteCost, FQueue.size()));
    send(limit);
    FCredit -= qint64{limit} * kByteCost;
    if (FQueue.isEmpty()) {
        FCredit = 0;
        FPace.SetEnabled(false);
    }
}

/// Sends up to `limit` bytes of the queue; less when the program does not read.
void TPty::send(qsizetype limit)
{
    while (limit > 0) {
        const ssize_t count = ::write(FMaster, FQueue.constData(), std::size_t(limit));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return; // full, or closed, which the reading side notices
        }
        FQueue.remove(0, count);
        limit -= count;
    }
}

void TPty::tellOpened(bool opened)
{
    if (const auto handler = OnOpened) {
        handler(opened);
    }
}

} // namespace tnv5::sim
