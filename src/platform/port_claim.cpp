#include "tnv5/platform/port_claim.h"

#include <QFile>
#include <asm/termbits.h>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tnv5::platform {

namespace {

QByteArray pathOf(const QString& port)
{
    return QFile::encodeName(port.startsWith(u'/') ? port : QStringLiteral("/dev/") + port);
}

} // namespace

int TPortClaim::take(const QString& port)
{
    release();
    const int descriptor = ::open(pathOf(port).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return errno;
    }
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno == EWOULDBLOCK ? EBUSY : errno;
        ::close(descriptor);
        return error;
    }
    FDescriptor = descriptor;
    return 0;
}

void TPortClaim::release()
{
    if (FDescriptor >= 0) {
        ::close(FDescriptor);
        FDescriptor = -1;
    }
}

bool TPortClaim::takesRate(int baudRate) const
{
    constexpr long long kPercent = 100;
    constexpr long long kTolerance = 5; // a line still works so far off
    termios2 settings = {};
    if (ioctl(FDescriptor, TCGETS2, &settings) != 0 || settings.c_ospeed == 0) {
        return true; // nobody knows
    }
    const long long off = std::llabs(static_cast<long long>(settings.c_ospeed) - baudRate);
    return off * kPercent <= kTolerance * baudRate;
}

} // namespace tnv5::platform
