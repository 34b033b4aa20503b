#pragma once

#include "model/kit/controller_model.h"

#include <QImage>
#include <QStringList>

namespace tnv5::turnstile::model {

using namespace modelkit;

/// One record of the table.
struct TRecord
{
    QString CardNumber, Device, Status, StatusHard;
    double Starttime = 0; // days, since midnight
    QImage Img;
    int sys = 0;
};
using PRecord = std::shared_ptr<TRecord>;

/// A line of gates: small, slow and obvious. Its names are those of the component.
class TModelGate final : public TModelController
{
public:
    using TText = std::function<void(TModel*, const QString&)>;
    using TStatus = std::function<void(TModel*, const QString& name, const QString& device,
                                       const QString& card, const QString& first, const QString& second)>;
    using TQuestion = std::function<void(TModel*, const QString& device, const QString& card,
                                         const QString& status, QImage& img, int mode, QVariant& result)>;
    using TPicture = std::function<void(TModel*, const QString& device, QImage& img)>;

    TModelGate(TModelWorld& world, bool designing);
    void die() override;

    TModelPort* ComPort() const { return living(FPort); }
    void SetComport(TModelPort* port);
    void SetOnLog(TText event) { FOnLog = std::move(event); }
    void SetOnError(TText event) { FOnError = std::move(event); }
    void SetOnCheckStatus(TStatus event) { FOnStatus = std::move(event); }
    void SetOnCheckSQL(TQuestion event) { FOnQuestion = std::move(event); }
    void SetOnGetImg(TPicture event) { FOnPicture = std::move(event); }

    int StackItemsCount() const { return int(FStack.size()); }
    PRecord StackItem(int index) const;
    void p_hw_ProtocolIn(QString text) override
    {
        operation([&] { line(text); });
    }
    int p_hw_FindDevice(const QString& device) const;
    int p_hw_FindDeviceByRelay(const QString& device, const QString& relay);
    QString p_hw_CheckStatus(const QString& device, const QString& card, const QString& status)
    {
        return operation([&] { return checkStatus(device, card, status); }, QString());
    }
    void p_hw_CallStackArray()
    {
        operation([&] { sweep(); });
    }
    int p_hw_SQLCheck(int index, int mode)
    {
        return operation([&] { return ask(StackItem(index), mode); }, -1);
    }
    void p_hw_SendComCommand(int index, int yesnot)
    {
        operation([&] { sendCom(StackItem(index), yesnot); });
    }
    void p_hw_relay(const QString& device, const QString& relay, int yesnot);
    void p_hw_CheckStatusAll()
    {
        operation([&] { poll(); });
    }
    bool p_hw_checktimeout(double first, double second, int limit) const;
    bool CheckCRC(const QString& message) const;
    void SetTimerInterval(int ms) { FTimer.setInterval(ms); }
    void ShowinternalStatus(TModel* sender, const QString& name, const QString& device, const QString& card,
                            const QString& first, const QString& second);
    void ServerEcho(const QString& text)
    {
        operation([&] { echo(text); });
    }

private:
    bool lineOpen() override;

    // lines
    void line(const QString& text);
    bool forwarded(const QString& text);
    void event(const QString& text);
    void message(const QString& text);
    void press(const QString& address);
    void learn(const QString& address);

    // table
    int find(const QString& device) const;
    PRecord add(const QString& device, const QString& card);
    QString checkStatus(const QString& device, const QString& card, const QString& status);
    void sweep();
    bool visit(std::size_t index);
    void decide(const PRecord& record);
    void watchOpen(const PRecord& record);
    bool offer(const PRecord& record, int how, std::size_t index);
    void remove(std::size_t index);
    bool late(const TRecord& record, qint64 limit) const;
    int ask(const PRecord& record, int how);

    // commands and reports
    void sendCom(const PRecord& record, int yesnot);
    void send(const QString& command, const QString& code);
    void poll() { send("$000900", "[03] "); }
    void log(const QString& text);
    void error(const QString& text) override { fire(FOnError, this, text); }
    void tell(const QString& text) override { fire(FOnLog, this, text); }
    bool hearsErrors() const override { return bool(FOnError); }
    void clientRead(QString buffer) override;
    void echo(const QString& text);
    void show(TModel* sender, const QStringList& values);
    void report(const QStringList& values);
    void reportStack(const TRecord& record);

    int number(const char* property) const { return FProperties.at(property).toInt(); }
    QString door() const { return FProperties.at("DoorIndex").toString(); }
    void enableTimer(bool on);

    TModelPort* FPort = nullptr;
    TModelSplitter FDollar, FHash;
    TModelTimer FTimer;
    TText FOnLog, FOnError;
    TStatus FOnStatus;
    TQuestion FOnQuestion;
    TPicture FOnPicture;
    std::vector<PRecord> FStack;
    bool FBusy = false;
};

} // namespace tnv5::turnstile::model
