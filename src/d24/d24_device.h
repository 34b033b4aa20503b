#pragma once

#include "tnv5/connector/networked_controller.h"
#include "tnv5/d24/d24_tables.h"
#include "tnv5/d24/d24_types.h"

#include <optional>

namespace tnv5::d24 {

/// Networked turnstile, gate and door controllers (D24), reached through a line connector.
///
/// The component keeps a table of pending passes and a table of the controllers that ping, asks the host
/// through `OnCheckSQL` about each card, and opens or refuses through the connector, which it does not own.
/// Everything runs on the main thread.
///
///     TTurnStylerDeviceD24 gates;
///     gates.SetConnector(&connector);
///     gates.SetOnCheckSQL([&](auto*, auto&, auto&, auto&, auto& card, auto&, auto&, auto& mode, QVariant&
///     mess,
///                             QVariant& result) {
///         if (mode == cmOpen) {
///             result = int(club.mayEnter(card.toString()));
///             mess = "|Welcome||||";
///         } else {
///             result = 1;
///         }
///     });
///
/// Handlers may pump messages, feed lines, replace handlers or destroy the component. Exceptions of
/// `OnCheckStatus` handlers are reported through `OnError` ("[07] "); those of the other handlers,
/// `OnCheckSQL` included, end the operation under way and go to the host's exception handler.
class TTurnStylerDeviceD24 : public connector::TNetworkedController
{
    Q_OBJECT
    Q_PROPERTY(bool CheckCross READ CheckCross WRITE SetCheckCross)
    Q_PROPERTY(int pingdelay READ pingdelay WRITE Setpingdelay)
    Q_PROPERTY(bool CheckET READ CheckET WRITE SetCheckET)
    Q_PROPERTY(QVariantList DeviceList READ DeviceListValues)
    Q_PROPERTY(tnv5::connector::TDeviceConnector* Connector READ Connector WRITE SetConnector)
    Q_PROPERTY(int RelayOpen READ RelayOpen WRITE SetRelayOpen)
    Q_PROPERTY(int RelayClose READ RelayClose WRITE SetRelayClose)
    Q_PROPERTY(int RelayOpenDoor READ RelayOpenDoor WRITE SetRelayOpenDoor)
    Q_PROPERTY(int RelayCloseDoor READ RelayCloseDoor WRITE SetRelayCloseDoor)
    Q_PROPERTY(int TimeDelayOpen READ TimeDelayOpen WRITE SetTimeDelayOpen)
    Q_PROPERTY(int TimeOut READ TimeOut WRITE SetTimeOut)
    Q_PROPERTY(tnv5::platform::TLogEvent OnLog READ OnLog WRITE SetOnLog)
    Q_PROPERTY(tnv5::platform::TLogEvent OnError READ OnError WRITE SetOnError)
    Q_PROPERTY(tnv5::d24::TCheckStatusDevice OnCheckStatus READ OnCheckStatus WRITE SetOnCheckStatus)
    Q_PROPERTY(tnv5::d24::TCheckSQLDevice OnCheckSQL READ OnCheckSQL WRITE SetOnCheckSQL)
    Q_PROPERTY(tnv5::d24::TGetImg OnGetImg READ OnGetImg WRITE SetOnGetImg)
    Q_PROPERTY(QString Server READ Server WRITE SetServer)
    Q_PROPERTY(int Port READ Port WRITE SetPort)
    Q_PROPERTY(tnv5::controller::TConState RemoutDevice READ RemoutDevice WRITE SetRemoutDevice)

public:
    explicit TTurnStylerDeviceD24(QObject* AOwner = nullptr);

    /// Answer an unauthorised crossing with the alarm; false.
    bool CheckCross() const { return FCheckCross; }
    void SetCheckCross(bool Value) { FCheckCross = Value; }
    /// Confirmation mode: a command is repeated until the controller confirms it; false.
    bool CheckET() const { return FCheckET; }
    void SetCheckET(bool Value) { FCheckET = Value; }

    // Published for hosts that share code with the classic controller; not read here. 1, 0, 3, 0 and 2.
    int RelayOpen() const { return FRelayOpen; }
    void SetRelayOpen(int Value) { FRelayOpen = Value; }
    int RelayClose() const { return FRelayClose; }
    void SetRelayClose(int Value) { FRelayClose = Value; }
    int RelayOpenDoor() const { return FRelayOpenDoor; }
    void SetRelayOpenDoor(int Value) { FRelayOpenDoor = Value; }
    int RelayCloseDoor() const { return FRelayCloseDoor; }
    void SetRelayCloseDoor(int Value) { FRelayCloseDoor = Value; }
    int TimeDelayOpen() const { return FTimeDelayOpen; }
    void SetTimeDelayOpen(int Value) { FTimeDelayOpen = Value; }

    /// Time-out of a turnstile pass in whole seconds; 5. An open pass ends after more than this plus 2, one
    /// in progress after more than this plus 10.
    int TimeOut() const { return FTimeOut; }
    void SetTimeOut(int Value) { FTimeOut = Value; }

    const TCheckStatusDevice& OnCheckStatus() const { return FCheckStatus; }
    void SetOnCheckStatus(TCheckStatusDevice Value) { FCheckStatus = std::move(Value); }
    const TCheckSQLDevice& OnCheckSQL() const { return FCheckSQL; }
    void SetOnCheckSQL(TCheckSQLDevice Value) { FCheckSQL = std::move(Value); }
    const TGetImg& OnGetImg() const { return FGetImg; }
    void SetOnGetImg(TGetImg Value) { FGetImg = std::move(Value); }

    /// Handles one routed line, marker included.
    void p_hw_ProtocolIn(const QString& AMess) override;

    /// One field of a line: "IP", "DEVICE", "DEVICETYPE", "STATUS", "STATUSSHORT" or "CARDNUMBER"; empty for
    /// any other name.
    static QString ParseMessage(const QString& AType, const QString& AMess);

    /// State of the pass of a controller; a new pass with the card is made when there is none. Reports
    /// "CHECK". Empty, without a report, when the table is full ("[13] ").
    QString p_hw_CheckStatus(const QString& IP, const QString& Device, const QString& DeviceType,
                             const QString& Cardnumber, const QString& Status);
    /// Index of the first pass of a controller, -1 when there is none. The IP is not compared; intended.
    int p_hw_FindDevice(const QString& IP, const QString& Device) const;
    /// Index of the first pass of a link, -1 when there is none.
    int p_hw_FindIP(const QString& IP) const { return StackArray.findIP(IP); }
    /// Index of the pass of a controller and card (`Relay`); a new pass is made when there is none. -1 when
    /// the table is full ("[13] ").
    int p_hw_FindDeviceByRelay(const QString& IP, const QString& Device, const QString& DeviceType,
                               const QString& Relay);

    void DevicePing(const QString& IP, const QString& Device, const QString& DeviceType) override;
    /// Notes a known controller as alive.
    void UpdatePing(const QString& IP, const QString& Device) { refreshPing(IP, Device); }

    /// One sweep over the pass table: decides, commands, times out and retires; removes at most one record.
    void p_hw_CallStackArray() override;
    /// Asks the host about the pass at an index. An index without a pass gives -1.
    int p_hw_SQLCheck(int AIndex, int AMode);
    /// Sends the refuse (0) or allow (1) commands for the pass at an index. Always true.
    bool p_hw_SendComCommand(int AIndex, int yesnot);
    /// True when more than `ASec` whole seconds lie between two date-times.
    bool p_hw_checktimeout(platform::TDateTime ATime1, platform::TDateTime ATime2, int ASec) const;
    /// These two only test the connector and report when it is not connected. Always true.
    bool p_hw_CheckStatusAll();
    bool p_hw_relay(const QString& IP, const QString& Device, const QString& Relay, int yesnot);

    /// Opens or closes by hand: sets the state of the pending pass whose controller is named by the FIRST
    /// argument (intended), or requests a new pass of controller `Device` with the card "-1-1-1-1-1".
    void p_hw_manual(const QString& IP, const QString& Device, const QString& Status);

    /// Interval of the sweeps in milliseconds (10 at first); a running timer starts anew. 0: no ticks.
    void SetTimerInterval(int AValue) { setSweepInterval(AValue); }

    /// Calls `OnCheckStatus`; an exception in it is reported as "[07] ".
    void ShowinternalStatus(TComponent* Sender, const QString& FName, const QString& IP,
                            const QString& Device, const QString& DeviceType, const QString& Cardnumber,
                            const QString& Status1, const QString& Status2);

    /// Pending passes, for hosts that show them; a record is shared and may be changed.
    int StackItemsCount() const { return StackArray.size(); }
    PRFidInfo StackItem(int AIndex) const { return StackArray.at(AIndex); }

protected:
    void showServerStatus(const QStringList& fields) override;
    void reportPing(const connector::TDevicelist& board, const QString& word) override;

private:
    // the way in
    struct TFields;
    void handleEvent(const QString& AMess);
    void handleState(const QString& AMess);
    void handleCross(const TFields& fields);
    void handleButton(const TFields& fields);
    void confirm(const QString& device);
    void setStatus(const QString& device, const QString& status);
    std::optional<QString> checkStatus(const TFields& from, const QString& card, const QString& status);
    PRFidInfo addPass(const TFields& from, const QString& card);

    // the sweep over the table
    enum class TVerdict { Keep, Remove };
    void resend(const PRFidInfo& pass);
    TVerdict sweepOne(const PRFidInfo& pass);
    void decide(const PRFidInfo& pass);
    void checkOpen(TRFidInfo& pass) const;
    void beginProgress(const PRFidInfo& pass);
    void checkProgress(TRFidInfo& pass) const;
    TVerdict finish(const PRFidInfo& pass);
    bool elapsed(const TRFidInfo& pass, qint64 limit) const;
    void stopSweepsWhenEmpty();
    int sqlCheck(const PRFidInfo& pass, int mode);
    int askHost(const PRFidInfo& pass, int mode, int withoutHandler);

    // commands and reports
    bool connectorReady();
    void sendComCommand(const PRFidInfo& pass, int yesnot);
    void report(const QString& name, const TFields& from, const QString& card, const QString& status1,
                const QString& status2);
    void reportPass(const QString& name, const TRFidInfo& pass);

    TPassTable StackArray;
    int FTimeDelayOpen = 2;
    TCheckStatusDevice FCheckStatus;
    int FTimeOut = 5;
    TCheckSQLDevice FCheckSQL;
    TGetImg FGetImg;
    int FRelayOpen = 1;
    int FRelayClose = 0;
    int FRelayCloseDoor = 0;
    int FRelayOpenDoor = 3;
    bool FCheckET = false;
    bool FCheckCross = false;
};

} // namespace tnv5::d24
