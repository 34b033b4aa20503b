#include "tnv5/host/club/club_port.h"

#include "tnv5/host/local/local_events.h"
#include "tnv5/host/port_diagnosis.h"
#include "tnv5/platform/clock.h"

namespace tnv5::host {

TClubPort::TClubPort(TClubSite& site, const QString& name, const QString& port, int baud)
    : FSite(site), FName(name), FKeeper(FPort), FSinceMs(platform::TClock::current().nowMs())
{
    FPort.SetPort(port);
    FPort.SetBaudRate(baud);
    FKeeper.OnOpened = [this] { opened(); };
    FKeeper.OnLost = [this](const QString& why) { lost(why); };
    FKeeper.OnCannotOpen = [this](const QString& why) { cannotOpen(why); };
}

TClubPort::~TClubPort()
{
    FKeeper.stop();
    FSite.desk.lineBack(FName);
}

void TClubPort::start()
{
    FKeeper.start();
}

QString TClubPort::whyNot() const
{
    return open() ? QString() : QStringLiteral("%1 is not open: %2").arg(FName, FWhy);
}

QJsonObject TClubPort::state() const
{
    return {{"name", FName},
            {"port", FPort.Port()},
            {"open", open()},
            {"why", open() ? QString() : FWhy},
            {"since", isoTime(momentOf(FSinceMs))}};
}

void TClubPort::opened()
{
    FWhy.clear();
    FSinceMs = platform::TClock::current().nowMs();
    FSite.log.info(FName, FPort.Port() + QStringLiteral(" is open"));
    FSite.desk.lineBack(FName);
    if (OnOpened) {
        OnOpened();
    }
}

void TClubPort::lost(const QString& why)
{
    FWhy = why;
    FSinceMs = platform::TClock::current().nowMs();
    FSite.log.error(
        FName,
        QStringLiteral("%1 went away (%2); it will be opened again when it is back").arg(FPort.Port(), why));
    FSite.desk.lineLost(FName, why);
    if (OnLost) {
        OnLost(why);
    }
}

void TClubPort::cannotOpen(const QString& why)
{
    FWhy = why;
    FSite.log.error(FName, why + QStringLiteral("; it will be opened when that is over"));
    if (FKeeper.openings() == 0) {
        for (const QString& line : explainPort(portFacts(FPort.Port(), FKeeper.osError()))) {
            FSite.log.info(FName, line);
        }
    }
    FSite.desk.lineLost(FName, why);
}

bool serveMonitor(controller::TControllerDevice& device, const std::optional<TMonitorPlan>& plan)
{
    if (!plan || device.ListeningPort() != 0) {
        return true;
    }
    device.Connected(); // opens the server's socket
    return device.ListeningPort() != 0;
}

void changeMonitor(controller::TControllerDevice& device, const std::optional<TMonitorPlan>& plan)
{
    device.SetServerAccess(plan ? plan->access : platform::TServerAccess()); // closes the socket
    device.SetPort(plan ? plan->port : 0);
    device.SetRemoutDevice(plan ? controller::podServer : controller::podNone);
    serveMonitor(device, plan);
}

} // namespace tnv5::host
