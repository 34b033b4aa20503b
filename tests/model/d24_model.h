#pragma once

#include "model/connector_model.h"
#include "model/kit/controller_model.h"
#include "model/kit/texts.h"

#include <QImage>
#include <QStringList>

namespace tnv5::d24::model {

using namespace modelkit;
using connector::model::TModelConnector;

inline const QString kButtonCard = "-2-2-2-2-2";

struct TPass
{
    QString IP, DeviceType, CardNumber, Device, Status, StatusHard;
    double Starttime = 0; // days, since midnight
    QImage Img;
    int sys = 0;
    QString InfoMess, Command, CommandAdd, CRC;
    bool Finish = false;
    double CRCtime = 0;
};
using PPass = std::shared_ptr<TPass>;

struct TController
{
    QString IP, Device, DeviceType;
    double Pingtime = 0;
};

/// A second, plain reading of how networked gates behave, on the model of a connector: one pass table, one
/// table of controllers, two timers. Its names are those of the component.
class TModelGate final : public TModelController
{
public:
    using TText = std::function<void(TModel*, const QString&)>;
    using TStatus =
        std::function<void(TModel*, QString, QString, QString, QString, QString, QString, QString)>;
    using TQuestion = std::function<void(TModel*, QString, QString, QString, QString, QString, QImage& img,
                                         int mode, QVariant& mess, QVariant& result)>;
    using TPicture = std::function<void(TModel*, const QString& device, QImage& img)>;

    TModelGate(TModelWorld& world, bool designing);
    void die() override;

    TModelConnector* Connector() const { return living(FLink); }
    void SetConnector(TModelConnector* value);
    void SetOnLog(TText event) { FOnLog = std::move(event); }
    void SetOnError(TText event) { FOnError = std::move(event); }
    void SetOnCheckStatus(TStatus event) { FOnStatus = std::move(event); }
    void SetOnCheckSQL(TQuestion event) { FOnQuestion = std::move(event); }
    void SetOnGetImg(TPicture event) { FOnPicture = std::move(event); }

    int StackItemsCount() const { return int(FPasses.size()); }
    PPass StackItem(int index) const;
    const std::vector<std::shared_ptr<TController>>& DeviceList() const { return FControllers; }
    static QString ParseMessage(const QString& name, const QString& text);
    void OnConnectorData(TModel*, const QString& text) { p_hw_ProtocolIn(text); }
    void p_hw_ProtocolIn(QString text) override
    {
        operation([&] { line(text); });
    }
    QString p_hw_CheckStatus(const QString& ip, const QString& device, const QString& type,
                             const QString& card, const QString& status)
    {
        return operation([&] { return checkStatus(ip, device, type, card, status); }, QString());
    }
    int p_hw_FindDevice(const QString& ip, const QString& device) const;
    int p_hw_FindIP(const QString& ip) const;
    int p_hw_FindDeviceByRelay(const QString& ip, const QString& device, const QString& type,
                               const QString& card);
    void DevicePing(const QString& ip, const QString& device, const QString& type)
    {
        operation([&] { ping(ip, device, type); });
    }
    int DevicePingFind(const QString& ip, const QString& device) const;
    void UpdatePing(const QString& ip, const QString& device);
    void DevicePingTime(TModel*)
    {
        operation([&] { silenceCheck(); });
    }
    void p_hw_CallStackArray()
    {
        operation([&] { sweep(); });
    }
    int p_hw_SQLCheck(int index, int mode)
    {
        const PPass pass = StackItem(index);
        return pass ? operation([&] { return ask(pass, mode); }, -1) : -1;
    }
    bool p_hw_SendComCommand(int index, int yesnot)
    {
        return operation([&] { return send(StackItem(index), yesnot), true; }, true);
    }
    bool p_hw_checktimeout(double first, double second, int limit) const;
    bool p_hw_CheckStatusAll()
    {
        return operation([&] { return portReady(), true; }, true);
    }
    bool p_hw_relay(const QString&, const QString&, const QString&, int) { return p_hw_CheckStatusAll(); }
    void p_hw_manual(const QString& ip, const QString& device, const QString& status);
    void SetTimerInterval(int ms);
    void ShowinternalStatus(TModel* sender, const QString& name, const QString& ip, const QString& device,
                            const QString& type, const QString& card, const QString& first,
                            const QString& second);

private:
    int number(const char* property) const { return FProperties.at(property).toInt(); }
    double today() const;
    bool late(double moment, qint64 limit) const;
    PPass passOf(const QString& device) const { return StackItem(p_hw_FindDevice({}, device)); }
    PPass add(const QString& ip, const QString& device, const QString& type, const QString& card);

    void log(const QString& text) { fire(FOnLog, this, text); }
    void error(const QString& text) override { fire(FOnError, this, text); }
    void tell(const QString& text) override { log(text); }
    bool hearsErrors() const override { return bool(FOnError); }
    void clientRead(QString buffer) override;
    bool lineOpen() override;
    void monitor(const QString& text) { toMonitor(bytesOf(text)); }
    void show(TModel* sender, const QStringList& fields);
    void report(const QStringList& fields);
    void reportPass(const QString& name, const TPass& pass);
    QString command(const QString& text);
    bool portReady();

    void line(const QString& text);
    void eventLine(const QString& text);
    void stateLine(const QString& text);
    void cross(const QString& ip, const QString& device, const QString& type);
    void button(const QString& ip, const QString& device, const QString& type);
    void confirm(const QString& device);
    void moveOn(const QString& device, const QString& shortStatus);
    QString checkStatus(const QString& ip, const QString& device, const QString& type, const QString& card,
                        const QString& status);
    void ping(const QString& ip, const QString& device, const QString& type);

    void sweep();
    bool resend(const PPass& pass, std::size_t index);
    bool visit(const PPass& pass);
    bool actOn(const PPass& pass);
    void decide(const PPass& pass);
    void checkOpen(TPass& pass);
    bool remove(const PPass& pass);
    int ask(const PPass& pass, int question);
    int askHandler(const PPass& pass, int question, bool takeMessage);
    void send(const PPass& pass, int yesnot);
    void silenceCheck();
    void enableStack(bool on);

    TModelConnector* FLink = nullptr;
    TModelTimer FStackTimer, FPingTimer;
    TText FOnLog, FOnError;
    TStatus FOnStatus;
    TQuestion FOnQuestion;
    TPicture FOnPicture;
    std::vector<PPass> FPasses;
    std::vector<std::shared_ptr<TController>> FControllers;
    bool FBusy = false;
};

} // namespace tnv5::d24::model
