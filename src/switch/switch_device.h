#pragma once

#include "tnv5/connector/networked_controller.h"
#include "tnv5/switch/switch_types.h"

namespace tnv5::switching {

/// Pairs of relay boards, reached through a line connector: lamps, lockers and the like that are paid for by
/// time.
///
/// The component keeps a job for each relay that it has heard of or was told about: the state that is wanted,
/// the state that the board is in, and until when. Every three seconds it sweeps over the jobs, asks the host
/// through `OnCheckSQL` about each change, and commands the boards. Everything runs on the main thread.
///
///     TSwitchDevice lamps;
///     lamps.SetConnector(&connector);
///     lamps.SetOnCheckSQL([&](auto*, auto& board, auto& relay, auto&, auto&, auto& mode, QVariant& result) {
///         result = int(mode != cmRunning && club.agrees(board, relay, mode)); // 1 means yes
///     });
///     lamps.p_hw_CheckStatus("0.0.0.0", "000A", "1", "ON", platform::Now() + 30.0 / 1440);
///     lamps.p_hw_CallStackArray();
///
/// Handlers may pump messages, feed lines, add jobs, replace handlers or destroy the component. Exceptions of
/// `OnCheckStatus` handlers go to `OnError` as their bare message; those of the other handlers end the
/// operation under way and go to the host's exception handler, or to the caller of a method that the host
/// called itself.
class TSwitchDevice : public connector::TNetworkedController
{
    Q_OBJECT
    Q_PROPERTY(int pingdelay READ pingdelay WRITE Setpingdelay)
    Q_PROPERTY(tnv5::connector::TDeviceConnector* Connector READ Connector WRITE SetConnector)
    Q_PROPERTY(QVariantList DeviceList READ DeviceListValues)
    Q_PROPERTY(int TimeDelayOpen READ TimeDelayOpen WRITE SetTimeDelayOpen)
    Q_PROPERTY(int TimeOut READ TimeOut WRITE SetTimeOut)
    Q_PROPERTY(tnv5::platform::TLogEvent OnLog READ OnLog WRITE SetOnLog)
    Q_PROPERTY(tnv5::platform::TLogEvent OnError READ OnError WRITE SetOnError)
    Q_PROPERTY(tnv5::switching::TCheckStatusSwitch OnCheckStatus READ OnCheckStatus WRITE SetOnCheckStatus)
    Q_PROPERTY(tnv5::switching::TCheckSQL OnCheckSQL READ OnCheckSQL WRITE SetOnCheckSQL)
    Q_PROPERTY(tnv5::switching::TCheckEvent OnNewItem READ OnNewItem WRITE SetOnNewItem)
    Q_PROPERTY(QString Server READ Server WRITE SetServer)
    Q_PROPERTY(int Port READ Port WRITE SetPort)
    Q_PROPERTY(tnv5::controller::TConState RemoutDevice READ RemoutDevice WRITE SetRemoutDevice)

public:
    explicit TSwitchDevice(QObject* AOwner = nullptr);

    // Published for hosts that share code with the other controllers; not read here. 2 and 5.
    int TimeDelayOpen() const { return FTimeDelayOpen; }
    void SetTimeDelayOpen(int Value) { FTimeDelayOpen = Value; }
    int TimeOut() const { return FTimeOut; }
    void SetTimeOut(int Value) { FTimeOut = Value; }

    const TCheckStatusSwitch& OnCheckStatus() const { return FCheckStatus; }
    void SetOnCheckStatus(TCheckStatusSwitch Value) { FCheckStatus = std::move(Value); }
    const TCheckSQL& OnCheckSQL() const { return FCheckSQL; }
    void SetOnCheckSQL(TCheckSQL Value) { FCheckSQL = std::move(Value); }
    const TCheckEvent& OnNewItem() const { return FOnNewItem; }
    void SetOnNewItem(TCheckEvent Value) { FOnNewItem = std::move(Value); }

    /// Handles one routed line, marker included.
    void p_hw_ProtocolIn(const QString& AMess) override;

    /// One field of a line: "IP", "DEVICE", "DEVICETYPE", "RELA", "RELAONOFF", "RELATIME", "RELAY",
    /// "RELAYONOFF", "STATUS", "STATUSSHORT" or "CARDNUMBER"; empty for any other key.
    static QString ParseMessage(const QString& AMess, const QString& AKey);

    void DevicePing(const QString& IP, const QString& Device, const QString& DeviceType) override;
    /// Does nothing; kept for hosts that share code with the other controllers.
    void UpdatePing(const QString& IP, const QString& Device, const QString& DeviceType);

    /// Index of the job of a board and relay; a new job is made when there is none. The IP is not compared;
    /// intended. -1 when the table is full ("[13] ").
    int p_hw_FindDevice(const QString& IP, const QString& Device, const QString& Relay);
    /// Sets the wanted state of a relay, and until when. Reports "CHECK OLD" and logs all jobs.
    /// @return the wanted state; empty when the table is full ("[13] ")
    QString p_hw_CheckStatus(const QString& IP, const QString& Device, const QString& Relay,
                             const QString& Status, platform::TDateTime FinishTime);

    /// One sweep over the jobs, last one first.
    void p_hw_CallStackArray() override;
    /// Asks the host about the job at an index (`TCheckMode`); only 1 means yes. Without a handler 1; -1 for
    /// any other mode and for an index without a job.
    int p_hw_SQLCheck(int AIndex, int yesnot);

    /// Sends the command of a relay of a pair, "1" to "5", and logs it; for any other relay an empty command,
    /// which no board gets. The same command switches on and off. Always true.
    bool p_hw_relay(const QString& IP, const QString& Device, const QString& Relay);
    /// Does nothing. Always true.
    bool p_hw_SendComCommand(int yesnot);
    /// Asks every board that has pinged for the state of its relays. Always true.
    bool p_hw_CheckStatusAll();
    /// The same, every two seconds.
    void OnCheckTimer(TComponent* Sender);
    /// Sends a short command through the connector, if there is one.
    void SendCommandToConnector(const QString& Cmd);

    /// Compares two times of day, in whole milliseconds: -1, 0 or 1. Logs both and the minutes between them.
    int p_hw_checktimeout(platform::TDateTime ATime1, platform::TDateTime ATime2);
    /// True when more than `ASeconds` whole seconds lie between two date-times.
    bool p_hw_checktimebetween(platform::TDateTime ATime1, platform::TDateTime ATime2, qint64 ASeconds) const;

    /// Calls `OnCheckStatus`; an exception in it goes to `OnError` as its bare message.
    void ShowinternalStatus(TComponent* Sender, const QString& FName, const QString& fDevice,
                            const QString& fRelay, const QString& fStatus1, const QString& fStatus2);

    /// Jobs, for hosts that show them; a record is shared and may be changed.
    int StackItemsCount() const { return StackArray.size(); }
    PRFidInfo StackItem(int AIndex) const { return StackArray.at(AIndex); }

protected:
    void reportPing(const connector::TDevicelist& board, const QString& word) override;

private:
    // the way in
    void handleReport(const QString& line);
    void handleState(const QString& line);
    PRFidInfo findOrAdd(const QString& ip, const QString& device, const QString& relay);

    // the sweep, step by step
    void sweepOne(const PRFidInfo& job);
    void giveUp(const PRFidInfo& job);
    void awaitFirstReport(const PRFidInfo& job);
    void askWantedState(const PRFidInfo& job);
    void switchOn(const PRFidInfo& job);
    void switchOff(const PRFidInfo& job);
    void watchTime(const PRFidInfo& job);
    bool allowed(const PRFidInfo& job, int mode) { return sqlCheck(job, mode) == 1; }
    int sqlCheck(const PRFidInfo& job, int mode);
    void commandRelay(const PRFidInfo& job);

    // reports
    void showStatus(const QString& name, const QString& device, const QString& relay, const QString& status1,
                    const QString& status2);
    void report(const TRFidInfo& job);
    void echoJob(const QString& name, const TRFidInfo& job);
    void logJobs();

    std::unique_ptr<platform::TTimer> CheckTime;
    TJobTable StackArray;
    int FTimeDelayOpen = 2;
    TCheckStatusSwitch FCheckStatus;
    int FTimeOut = 5;
    TCheckSQL FCheckSQL;
    TCheckEvent FOnNewItem;
};

} // namespace tnv5::switching
