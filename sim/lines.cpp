#include "sim/lines.h"

#include "sim/pty.h"
#include "tnv5/platform/errors.h"
#include "tnv5/platform/serial_port.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>
#include <algorithm>

namespace tnv5::sim {

namespace {

constexpr int kLimitMs = 60'000;
constexpr int kLookMs = 5; // for what no event announces

template <class Ends>
bool allSettled(const Ends& ends)
{
    return std::all_of(ends.begin(), ends.end(), [](const auto& end) { return !end || end->settled(); });
}

} // namespace

void TLines::add(const TPty& pty)
{
    FPtys.append(&pty);
}

void TLines::add(const platform::TSerialPort& port)
{
    FPorts.append(&port);
}

bool TLines::settled() const
{
    return allSettled(FPtys) && allSettled(FPorts);
}

void TLines::settle() const
{
    QCoreApplication::processEvents();
    if (settled()) {
        return;
    }
    const QDeadlineTimer limit(kLimitMs);
    QTimer look;
    look.start(kLookMs);
    while (!settled()) {
        if (limit.hasExpired()) {
            throw platform::Exception(QStringLiteral("The lines do not come to rest"));
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
}

} // namespace tnv5::sim
