#pragma once

#include "tnv5/controller/controller_device.h"
#include "tnv5/platform/com_data_packet.h"
#include "tnv5/platform/com_port.h"
#include "tnv5/turnstile/address_list.h"
#include "tnv5/turnstile/pass_table.h"
#include "tnv5/turnstile/turnstile_types.h"

#include <QPointer>
#include <QStringList>
#include <memory>
#include <optional>

namespace tnv5::turnstile {

/// A line of classic turnstile and door controllers on one serial port.
///
/// The component reads the controllers' lines, keeps a table of passes under way, asks the host through
/// `OnCheckSQL` whether each may proceed, and commands the relays. It does nothing until a port is assigned
/// and opened by the host; it never owns the port. Everything runs on the main thread.
///
///     TTurnStylerDevice gate;
///     gate.SetComport(&port);
///     gate.SetDeviceList({"01A"});
///     gate.SetOnCheckSQL([&](TComponent*, const QVariant&, const QVariant& card, const QVariant&, QImage&,
///                            const QVariant& mode, QVariant& result) {
///         result = mode.toInt() == cmOpen ? int(club.mayEnter(card.toString())) : 1;
///     });
///     port.Open();
///
/// Handlers may pump messages, feed lines, replace handlers or destroy the component. Exceptions of
/// `OnCheckStatus` and `OnCheckSQL` handlers are reported through `OnError` ("[07] ", "[05] "); those of the
/// other handlers end the operation under way and go to the host's exception handler, or to the caller of a
/// method that the host called itself.
class TTurnStylerDevice : public controller::TControllerDevice
{
    Q_OBJECT
    Q_PROPERTY(QStringList DeviceList READ DeviceList WRITE SetDeviceList)
    Q_PROPERTY(tnv5::platform::TComPort* ComPort READ ComPort WRITE SetComport)
    Q_PROPERTY(int RelayOpen READ RelayOpen WRITE SetRelayOpen)
    Q_PROPERTY(int RelayClose READ RelayClose WRITE SetRelayClose)
    Q_PROPERTY(int RelayOpenDoor READ RelayOpenDoor WRITE SetRelayOpenDoor)
    Q_PROPERTY(int RelayCloseDoor READ RelayCloseDoor WRITE SetRelayCloseDoor)
    Q_PROPERTY(int TimeDelayOpen READ TimeDelayOpen WRITE SetTimeDelayOpen)
    Q_PROPERTY(int TimeOut READ TimeOut WRITE SetTimeOut)
    Q_PROPERTY(QString DoorIndex READ DoorIndex WRITE SetDoorIndex)
    Q_PROPERTY(QString Server READ Server WRITE SetServer)
    Q_PROPERTY(int Port READ Port WRITE SetPort)
    Q_PROPERTY(tnv5::controller::TConState RemoutDevice READ RemoutDevice WRITE SetRemoutDevice)
    Q_PROPERTY(tnv5::platform::TLogEvent OnLog READ OnLog WRITE SetOnLog)
    Q_PROPERTY(tnv5::platform::TLogEvent OnError READ OnError WRITE SetOnError)
    Q_PROPERTY(tnv5::turnstile::TCheckStatusDevice OnCheckStatus READ OnCheckStatus WRITE SetOnCheckStatus)
    Q_PROPERTY(tnv5::turnstile::TCheckSQLDevice OnCheckSQL READ OnCheckSQL WRITE SetOnCheckSQL)
    Q_PROPERTY(tnv5::turnstile::TGetImg OnGetImg READ OnGetImg WRITE SetOnGetImg)

public:
    /// Addresses that noise may add to `DeviceList`; beyond that a line adds none.
    static constexpr qsizetype kMaxDevices = 65'536;

    explicit TTurnStylerDevice(QObject* AOwner = nullptr);
    ~TTurnStylerDevice() override;

    /// Addresses of the controllers known on the line. Controllers that report "HardReset", "Wait-Card" or a
    /// relay add themselves; nothing removes them. Compared exactly, case included.
    const QStringList& DeviceList() const { return FDeviceList.list(); }
    void SetDeviceList(const QStringList& Value) { FDeviceList.assign(Value); }

    /// The port; not owned. Its settings and its opening are the host's.
    platform::TComPort* ComPort() const { return FComport; }
    void SetComport(platform::TComPort* Value);

    /// Relay that opens a turnstile channel (address letter "A"); 1.
    int RelayOpen() const { return FRelayOpen; }
    void SetRelayOpen(int Value) { FRelayOpen = Value; }
    /// Relay of the refuse command; 0.
    int RelayClose() const { return FRelayClose; }
    void SetRelayClose(int Value) { FRelayClose = Value; }
    /// Relay that opens any other channel; 3.
    int RelayOpenDoor() const { return FRelayOpenDoor; }
    void SetRelayOpenDoor(int Value) { FRelayOpenDoor = Value; }
    /// Kept for the host; no command uses it; 0.
    int RelayCloseDoor() const { return FRelayCloseDoor; }
    void SetRelayCloseDoor(int Value) { FRelayCloseDoor = Value; }
    /// Opening time; the command carries this value plus 1; 2.
    int TimeDelayOpen() const { return FTimeDelayOpen; }
    void SetTimeDelayOpen(int Value) { FTimeDelayOpen = Value; }

    /// Time-out of a pass in whole seconds; 5. An open pass ends after more than this plus 2, one in progress
    /// after more than this plus 10.
    int TimeOut() const { return FTimeOut; }
    void SetTimeOut(int Value) { FTimeOut = Value; }

    /// Address letter of the door channels; "D".
    QString DoorIndex() const { return FDoorIndex; }
    void SetDoorIndex(const QString& Value) { FDoorIndex = Value; }

    const TCheckStatusDevice& OnCheckStatus() const { return FCheckStatus; }
    void SetOnCheckStatus(TCheckStatusDevice Value) { FCheckStatus = std::move(Value); }
    const TCheckSQLDevice& OnCheckSQL() const { return FCheckSQL; }
    void SetOnCheckSQL(TCheckSQLDevice Value) { FCheckSQL = std::move(Value); }
    const TGetImg& OnGetImg() const { return FGetImg; }
    void SetOnGetImg(TGetImg Value) { FGetImg = std::move(Value); }

    /// Handles one line, start character included, carriage return excluded, as if a controller had sent it.
    void p_hw_ProtocolIn(const QString& AMess) override;

    /// Index of the first pass of an address; -1 when there is none.
    int p_hw_FindDevice(const QString& Device) const { return StackArray.find(Device); }
    /// Index of the pass of an address and card (`Relay`); a new pass is made when there is none. -1 when the
    /// table is full ("[13] ").
    int p_hw_FindDeviceByRelay(const QString& Device, const QString& Relay);
    /// State of the pass of an address; a new pass with the card is made when there is none. Reports "CHECK".
    /// The card of a second read is not stored: the pass keeps the first one until it is removed. Empty,
    /// without a report, when the table is full ("[13] ").
    QString p_hw_CheckStatus(const QString& Device, const QString& Cardnumber, const QString& Status);

    /// One sweep over the pass table: decides, commands, times out and retires; removes at most one record.
    void p_hw_CallStackArray() override;
    /// Asks the host about the pass at an index; 1 means yes, -1 no answer. An index without a pass gives -1.
    int p_hw_SQLCheck(int AIndex, int AMode);
    /// Sends the open (1) or refuse (0) command for the pass at an index; nothing for any other value or
    /// index.
    void p_hw_SendComCommand(int AIndex, int yesnot);
    /// Sends a relay command to any address: off (0) or on (1); nothing for any other value.
    void p_hw_relay(const QString& Device, const QString& Relay, int yesnot);
    /// Sends the status poll.
    void p_hw_CheckStatusAll();
    /// True when more than `ASec` whole seconds lie between two times.
    bool p_hw_checktimeout(platform::TDateTime ATime1, platform::TDateTime ATime2, int ASec) const;

    /// Kept in its form, in which the conversion always throws: it takes the checksum of the last two
    /// characters of a message and compares it with these. Nothing uses it; incoming lines are never checked.
    /// @throws platform::EConvertError
    bool CheckCRC(const QString& AMess) const;

    /// Interval of the sweeps in milliseconds (100 at first); keeps the timer running or stopped. 0: no
    /// ticks.
    void SetTimerInterval(int AValue) { setSweepInterval(AValue); }

    /// Calls `OnCheckStatus`; an exception in it is reported as "[07] ".
    void ShowinternalStatus(TComponent* Sender, const QString& AName, const QString& Device,
                            const QString& Cardnumber, const QString& Status1, const QString& Status2);

    /// Repeats a message to the monitor clients; nothing in the other modes.
    void ServerEcho(const QString& AMess);

    /// Passes under way, for hosts that show them; a record is shared and may be changed.
    int StackItemsCount() const { return StackArray.size(); }
    PRFidInfo StackItem(int AIndex) const { return StackArray.at(AIndex); }

protected:
    bool lineReady() override;
    void showServerStatus(const QStringList& fields) override;

private:
    // the way in
    void OnComData1(const QByteArray& Str);
    void OnComData2(const QByteArray& Str);
    bool forwarded(const QString& AMess);
    void handleEvent(const QString& AMess);
    void handleMessage(const QString& AMess);
    void handleButton(const QString& address);
    void addDevice(const QString& address);
    PRFidInfo findPass(const QString& address) const { return StackArray.at(StackArray.find(address)); }
    std::optional<QString> checkStatus(const QString& device, const QString& card, const QString& status);
    PRFidInfo addPass(const QString& device, const QString& card);

    // the sweep over the table
    enum class TVerdict { Keep, Remove };
    TVerdict sweepOne(const PRFidInfo& pass);
    void decide(const PRFidInfo& pass);
    void checkOpen(TRFidInfo& pass) const;
    TVerdict offer(const PRFidInfo& pass, TCheckMode mode);
    void reportStack(const TRFidInfo& pass);
    bool isDoor(const QString& address) const;
    bool elapsed(const TRFidInfo& pass, qint64 limit) const;
    void stopSweepsWhenEmpty();
    int sqlCheck(const PRFidInfo& pass, int mode);
    int askHost(const PRFidInfo& pass, int mode, int withoutAnswer);

    // commands and reports
    void sendComCommand(const PRFidInfo& pass, int yesnot);
    void sendCommand(const QString& command, QStringView writeErrorCode);
    void report(const QString& name, const QString& device, const QString& card, const QString& status1,
                const QString& status2);
    void reportEchoedError(QStringView code, const QString& text);

    std::unique_ptr<platform::TComDataPacket> ComDataPacket1;
    std::unique_ptr<platform::TComDataPacket> ComDataPacket2;
    TPassTable StackArray;

    TAddressList FDeviceList;
    QPointer<platform::TComPort> FComport;
    int FRelayOpen = 1;
    int FRelayClose = 0;
    int FRelayOpenDoor = 3;
    int FRelayCloseDoor = 0;
    int FTimeDelayOpen = 2;
    int FTimeOut = 5;
    QString FDoorIndex = QStringLiteral("D");
    TCheckStatusDevice FCheckStatus;
    TCheckSQLDevice FCheckSQL;
    TGetImg FGetImg;
};

} // namespace tnv5::turnstile
