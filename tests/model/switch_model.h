#pragma once

#include "model/connector_model.h"
#include "model/kit/controller_model.h"
#include "model/kit/texts.h"

#include <QStringList>

namespace tnv5::switching::model {

using namespace modelkit;
using connector::model::TModelConnector;

struct TJob
{
    QString IP, Device, Relay, Status, StatusDevice;
    double Starttime = 0, Finishtime = 0; // days
};
using PJob = std::shared_ptr<TJob>;

struct TBoard
{
    QString IP, Device, DeviceType;
    double Pingtime = 0; // days
};

/// The host's format of date-times.
struct TFormat
{
    bool own = false; ///< the host's: milliseconds behind an "@"

    QString print(qint64 ms) const;
    std::optional<qint64> read(const QString& text) const;
};

/// Relay boards told a second time, plainly, on the model of a connector. Its names are those of the
/// component.
class TModelSwitch final : public TModelController
{
public:
    using TText = std::function<void(TModel*, const QString&)>;
    using TStatus = std::function<void(TModel*, QString, QString, QString, QString, QString, QString)>;
    using TQuestion = std::function<void(TModel*, QString, QString, QString, QString, int, QVariant&)>;
    using TWish = std::function<void(TModel*, QString, QString, QString, QString, QVariant&)>;

    TModelSwitch(TModelWorld& world, bool designing, const TFormat& format);
    void die() override;

    TModelConnector* Connector() const { return living(FLink); }
    void SetConnector(TModelConnector* value);
    void SetOnLog(TText event) { FOnLog = std::move(event); }
    void SetOnError(TText event) { FOnError = std::move(event); }
    void SetOnCheckStatus(TStatus event) { FOnStatus = std::move(event); }
    void SetOnCheckSQL(TQuestion event) { FOnQuestion = std::move(event); }
    void SetOnNewItem(TWish event) { FOnNewItem = std::move(event); }

    // texts by value: the host may change its own meanwhile
    void OnConnectorData(TModel*, QString text) { p_hw_ProtocolIn(text); }
    void p_hw_ProtocolIn(QString text) override
    {
        operation([&] { line(text); });
    }
    static QString ParseMessage(const QString& text, const QString& key);
    void UpdatePing(const QString&, const QString&, const QString&) {}
    void DevicePing(QString ip, QString device, QString type)
    {
        operation([&] { ping(ip, device, type); });
    }
    int DevicePingFind(const QString& ip, const QString& device) const;
    void DevicePingTime(TModel*)
    {
        operation([&] { silenceCheck(); });
    }
    int p_hw_FindDevice(QString ip, QString device, QString relay)
    {
        return operation([&] { return findOrCreate(ip, device, relay); }, -1);
    }
    QString p_hw_CheckStatus(QString ip, QString device, QString relay, QString status, double finish)
    {
        return operation([&] { return want(ip, device, relay, status, finish); }, QString());
    }
    void p_hw_CallStackArray()
    {
        operation([&] { sweep(); });
    }
    int p_hw_SQLCheck(int index, int yesnot)
    {
        return operation([&] { return ask(StackItem(index), yesnot); }, -1);
    }
    bool p_hw_relay(QString ip, QString device, QString relay)
    {
        return operation([&] { return changeOver(ip, device, relay), true; }, true);
    }
    bool p_hw_SendComCommand(int) { return true; }
    bool p_hw_CheckStatusAll()
    {
        return operation([&] { return poll(), true; }, true);
    }
    void SendCommandToConnector(QString command)
    {
        operation([&] { send(command); });
    }
    int p_hw_checktimeout(double first, double second)
    {
        return operation([&] { return compared(first, second); }, 0);
    }
    bool p_hw_checktimebetween(double first, double second, qint64 seconds) const
    {
        return either<"apart", "not apart">(daysApart(first, second, seconds));
    }
    void ShowinternalStatus(TModel* sender, QString name, QString device, QString relay, QString first,
                            QString second)
    {
        operation([&] { show(sender, name, device, relay, first, second); });
    }
    void SendToMonitor(QByteArray text)
    {
        operation([&] { toMonitor(text); });
    }

    int StackItemsCount() const { return int(FJobs.size()); }
    PJob StackItem(int index) const;
    const std::vector<std::shared_ptr<TBoard>>& DeviceList() const { return FBoards; }

    /// Fills the tables up to a number of records.
    void fill(std::size_t size);

private:
    // the outside
    bool lineOpen() override;
    void error(const QString& text) override { fire(FOnError, this, text); }
    void tell(const QString& text) override { fire(FOnLog, this, text); }
    bool hearsErrors() const override { return bool(FOnError); }
    void clientRead(QString buffer) override;
    void monitor(const QString& text) { toMonitor(bytesOf(text)); }
    void send(const QString& command);
    void changeOver(const QString& ip, const QString& device, const QString& relay);
    void poll();
    void show(TModel* sender, const QString& name, const QString& device, const QString& relay,
              const QString& first, const QString& second);
    void report(const PJob& job);

    // lines
    void line(const QString& text);
    void ownReport(const QString& text);
    void connectorLine(const QString& text);
    int find(const QString& device, const QString& relay) const;
    int findOrCreate(const QString& ip, const QString& device, const QString& relay);
    QString want(const QString& ip, const QString& device, const QString& relay, const QString& status,
                 double finish);
    void ping(const QString& ip, const QString& device, const QString& type);
    void silenceCheck();

    // the sweep
    void sweep();
    void visit(const PJob& job);
    void notInLine(const PJob& job);
    void neverReported(const PJob& job);
    void newJob(const PJob& job);
    void wantedOn(const PJob& job);
    void wantedOff(const PJob& job);
    void running(const PJob& job);
    int ask(const PJob& job, int yesnot);
    int compared(double first, double second);

    double now() const { return double(FWorld.clock.nowMs()) / kMsPerDay; }
    double today() const { return double(FWorld.clock.timeOfDay()) / kMsPerDay; }

    const TFormat& FFormat;
    TModelConnector* FLink = nullptr;
    TModelTimer FStackTimer, FPingTimer, FCheckTimer;
    TText FOnLog, FOnError;
    TStatus FOnStatus;
    TQuestion FOnQuestion;
    TWish FOnNewItem;
    std::vector<PJob> FJobs;
    std::vector<std::shared_ptr<TBoard>> FBoards;
    bool FBusy = false;
};

} // namespace tnv5::switching::model
