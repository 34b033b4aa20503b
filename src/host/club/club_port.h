#pragma once

#include "tnv5/controller/controller_device.h"
#include "tnv5/host/club/club_file.h"
#include "tnv5/host/club/club_log.h"
#include "tnv5/host/club_desk.h"
#include "tnv5/host/port_keeper.h"
#include "tnv5/platform/serial_port.h"

#include <QJsonObject>

namespace tnv5::host {

/// What all equipment of one running club shares.
struct TClubSite
{
    TDatabase& database;
    TClubDesk& desk;
    TClubLog& log;
    std::function<void(const QJsonObject& event)> tell; ///< those who watch
};

/// A serial port of a running club: kept open, its comings and goings in the log and, as outages, in the
/// journal.
class TClubPort
{
public:
    TClubPort(TClubSite& site, const QString& name, const QString& port, int baud);
    /// An outage under way ends: nobody waits for the port any more.
    ~TClubPort();
    TClubPort(const TClubPort&) = delete;
    TClubPort& operator=(const TClubPort&) = delete;

    /// Opens it now or when it is there.
    void start();

    platform::TSerialPort& port() { return FPort; }
    const QString& name() const { return FName; }
    bool open() const { return FPort.Connected(); }
    /// "" or one sentence for those who want something of what is at the port.
    QString whyNot() const;
    /// As an entry of "lines" of the club's state.
    QJsonObject state() const;

    std::function<void()> OnOpened;
    std::function<void(const QString& why)> OnLost;

private:
    void opened();
    void lost(const QString& why);
    void cannotOpen(const QString& why);

    TClubSite& FSite;
    QString FName;
    platform::TSerialPort FPort;
    TPortKeeper FKeeper;
    QString FWhy; // it is not open
    qint64 FSinceMs;
};

/// Lets others watch a component, or nobody; asked for again and again, it opens what could not be opened
/// before.
/// @return whether it is as it should be
bool serveMonitor(controller::TControllerDevice& device, const std::optional<TMonitorPlan>& plan);
/// Ends watching, and begins it as a plan says.
void changeMonitor(controller::TControllerDevice& device, const std::optional<TMonitorPlan>& plan);

} // namespace tnv5::host
