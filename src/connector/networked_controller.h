#pragma once

#include "tnv5/connector/device_connector.h"
#include "tnv5/connector/liveness_table.h"
#include "tnv5/controller/controller_device.h"

#include <QPointer>
#include <QVariantList>

namespace tnv5::connector {

/// What the controller components on a connector share: attaching to it, sending through it and leaving it,
/// the way in of a routed line, and the table of the boards that ping.
class TNetworkedController : public controller::TControllerDevice
{
    Q_OBJECT

public:
    ~TNetworkedController() override;

    /// The connector; not owned. The component attached last receives every line of it.
    TDeviceConnector* Connector() const { return FConnector; }
    void SetConnector(TDeviceConnector* Value);

    /// Whole seconds without a ping after which a board is reported silent; 15.
    int pingdelay() const { return fpingdelay; }
    void Setpingdelay(int Value) { fpingdelay = Value; }

    /// Boards that have pinged.
    const TLivenessTable& DeviceList() const { return FDeviceList; }
    /// The same for reflection: one map (IP, Device, DeviceType, Pingtime) a board.
    QVariantList DeviceListValues() const;

    /// The connector's callback: one routed line.
    void OnConnectorData(TComponent* Sender, const QString& AMess);

    /// A ping: notes the board as alive and reports "PING".
    virtual void DevicePing(const QString& IP, const QString& Device, const QString& DeviceType) = 0;
    /// Index of a board in `DeviceList`, -1 when it is not there.
    int DevicePingFind(const QString& IP, const QString& Device) const
    {
        return FDeviceList.find(IP, Device);
    }
    /// Reports every silent board as "NOPING", at every tick anew.
    void DevicePingTime(TComponent* Sender);

    /// Sends single-byte text to the monitor clients, or in client mode to the server.
    void SendToMonitor(const QByteArray& AMess);

protected:
    TNetworkedController(QObject* AOwner, const controller::TRemoteFamily& family, int sweepIntervalMs);

    bool lineReady() override;
    /// Logs and echoes a line. @return false when it goes to the server instead of being handled here
    bool takeLine(const QString& line);
    /// Reports a board of the liveness table with a word.
    virtual void reportPing(const TDevicelist& board, const QString& word) = 0;
    /// Notes a board that pings as alive, and as known. @return its entry
    RDeviceList notePing(const QString& ip, const QString& device, const QString& deviceType);
    /// Notes a known board as alive.
    void refreshPing(QStringView ip, QStringView device);

    bool hasConnector() const { return FConnector != nullptr; }
    /// Sends a short command. @return what the connector returned
    /// @throws platform::Exception when there is no connector any more
    QString send(const QString& command);

private:
    std::unique_ptr<platform::TTimer> PingTimer;
    TLivenessTable FDeviceList;
    QPointer<TDeviceConnector> FConnector;
    int fpingdelay = 15;
};

} // namespace tnv5::connector
