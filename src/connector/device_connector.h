#pragma once

#include "tnv5/connector/board_command.h"
#include "tnv5/connector/board_table.h"
#include "tnv5/platform/com_data_packet.h"
#include "tnv5/platform/com_port.h"

#include <QPointer>
#include <memory>

namespace tnv5::connector {

using platform::TComponent;
using platform::TLogEvent;

Q_NAMESPACE

/// Kind of link. Only the serial port has a transport; with the others every write is silently dropped. Hosts
/// and scripts may write any number into the property: an unknown one is kept and acts as `podEmpty`.
enum TConnectorType : int { podEmpty, podComPort, podNet };
Q_ENUM_NS(TConnectorType)

/// One serial line that carries many controller boards.
///
/// The connector frames what the boards send into lines, keeps the table of the boards that have spoken,
/// answers their pings, and hands every line, with the address of the link in front, to one consumer
/// (`OnGetData`). In the other direction it turns short commands of device components into board lines with a
/// checksum.
///
///     TDeviceConnector connector;
///     connector.SetConnectorType(podComPort);
///     connector.SetComport(&port);
///     connector.SetOnGetData([](TComponent*, const QString& line) { ... });
///     connector.SendCommand("GO0.0.0.0:001A");
///
/// The port is opened by the first write or the first read of `IsConnected`; it is never owned. Exceptions of
/// handlers and of writes are not caught here: they leave the method that was called, or go from the event
/// loop to the host's exception handler. `SendCommand`, `SendDirectCommand` and `GetConnected` are virtual,
/// so that a host or a test can put its own link under the device components; an override must not destroy
/// the connector.
class TDeviceConnector : public TComponent
{
    Q_OBJECT
    Q_PROPERTY(tnv5::platform::TComPort* ComPort READ ComPort WRITE SetComport)
    Q_PROPERTY(tnv5::connector::TConnectorType ConnectorType READ ConnectorType WRITE SetConnectorType)
    Q_PROPERTY(tnv5::platform::TLogEvent OnError READ OnError WRITE SetOnError)
    Q_PROPERTY(tnv5::platform::TLogEvent OnLog READ OnLog WRITE SetOnLog)
    Q_PROPERTY(tnv5::platform::TLogEvent OnGetData READ OnGetData WRITE SetOnGetData)
    Q_PROPERTY(bool IsConnected READ GetConnected WRITE SetConnected)

public:
    explicit TDeviceConnector(QObject* AOwner = nullptr);
    ~TDeviceConnector() override;

    /// The link; not owned. The connector takes the port's error event; of two on one port the last one has
    /// it. Another port clears the old port's, whoever has it by then.
    platform::TComPort* ComPort() const { return FComport; }
    void SetComport(platform::TComPort* Value);

    /// `podEmpty` at first.
    TConnectorType ConnectorType() const { return FConnectorType; }
    void SetConnectorType(TConnectorType Value) { FConnectorType = Value; }

    /// "[03] " a port that cannot be opened or closed, "[08] " an error of the operating system.
    const TLogEvent& OnError() const { return FErrorEvent; }
    void SetOnError(TLogEvent Value) { FErrorEvent = std::move(Value); }
    /// Every line written, with its checksum.
    const TLogEvent& OnLog() const { return FLogEvent; }
    void SetOnLog(TLogEvent Value) { FLogEvent = std::move(Value); }
    /// The one consumer of the boards' lines; whoever sets it last has it.
    const TLogEvent& OnGetData() const { return FOnGetData; }
    void SetOnGetData(TLogEvent Value) { FOnGetData = std::move(Value); }

    /// Whether the link is open. Asking opens a closed serial port; intended, every write goes through it.
    virtual bool GetConnected();
    /// Opens (as above) or closes the port.
    void SetConnected(bool Value);

    /// Hands a line to the consumer.
    void GetCommand(const QString& AMess);

    /// Sends a short command: code, IP, ":", board address, argument (see board_command.h).
    /// @return for a command of one line the two digits of the checksum over the written line including its
    /// own checksum, whether or not it could be written; else empty
    virtual QString SendCommand(const QString& AMess);

    /// Writes a board line with its checksum behind it, and logs it. Without an open serial port nothing
    /// happens.
    virtual void SendDirectCommand(const QString& IP, const QString& AMess);

    /// Does nothing; kept on purpose. The port stays open.
    void CloseAll() {}

    /// Value of a key in a board's diagnostic reply, "...GX=value/GR=value/...".
    static QString GetDiagnosticValue(const QString& AMess, const QString& Key);

    /// Record of a board; made when there is none. Its address in memory stays good for the connector's life.
    /// Once `TBoardTable::kMaxBoards` are known, all further boards share one record, which tells of the one
    /// asked for last: look at its `Device` before relying on one that was kept.
    DeviceInfo GetDeviceFromList(const QString& IP, const QString& Address)
    {
        return DeviceArray.findOrAdd(IP, Address);
    }

    /// Boards heard, in order of first appearance.
    int DeviceCount() const { return DeviceArray.size(); }
    DeviceInfo DeviceItem(int AIndex) const { return DeviceArray.at(AIndex); }

    /// Handles a line of a board, start character included, as if it had been heard on link `IP`.
    void ProcessDataToDevice(const QString& IP, const QString& AMess);

private:
    struct TPortErrors;

    void OnComData(QStringView start, const QByteArray& Str);
    void ComPortException(const QString& message, qint64 winError);
    void installErrorHandler();
    bool hasErrorEvent() const;
    void reportError(QStringView code, const QString& text);
    bool usesPort() const { return FConnectorType == podComPort && FComport; }

    void handleReply(const QString& ip, const QString& line, TDeviceInfo& board);
    void handleEvent(const QString& ip, const QString& line, TDeviceInfo& board);
    void handleHardware(const QString& ip, const QString& line, TDeviceInfo& board);
    void passOn(QStringView start, const QString& ip, QStringView rest);
    void passOnChecked(const QString& ip, const QString& rest);
    void sendDisplay(const TBoardCommand& command);

    TConnectorType FConnectorType = podEmpty;
    TLogEvent FErrorEvent;
    TLogEvent FLogEvent;
    TLogEvent FOnGetData;
    TBoardTable DeviceArray;
    std::unique_ptr<platform::TComDataPacket> ComDataPacket1;
    std::unique_ptr<platform::TComDataPacket> ComDataPacket2;
    QPointer<platform::TComPort> FComport;
};

} // namespace tnv5::connector
