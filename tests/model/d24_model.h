#pragma once

#include "d24_branches.h"
#include "d24_host.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/platform/errors.h"

#include <QPointer>
#include <array>
#include <memory>
#include <vector>

namespace tnv5::d24::model {

/// A second, plain reading of how networked gates behave, to be compared with the component: one pass table,
/// one table of controllers, two timers, and time in whole milliseconds instead of days.
class TModelGate
{
public:
    TModelGate(THost& host, qint64 nowMs, bool designing);
    ~TModelGate();
    TModelGate(const TModelGate&) = delete;
    TModelGate& operator=(const TModelGate&) = delete;

    struct TPass
    {
        QString ip, type, card, device, status;
        qint64 start = 0;
        QImage img;
        QString info, command, crc;
        bool finish = false;
        qint64 crcTime = 0;
    };
    struct TController
    {
        QString ip, device, type;
        qint64 heard = 0;
    };

    // what hosts set and look at
    std::vector<std::shared_ptr<TPass>> passes;
    std::vector<std::shared_ptr<TController>> controllers;
    int handlers[kEventCount] = {}; // by TEvent: which handler is assigned, 0 none
    bool checkCross = false;
    bool checkET = false;
    int pingDelay = 15;
    int timeOut = 5;
    TConState mode = podNone;
    QPointer<connector::TDeviceConnector> link;

    // the public methods, each the outermost frame of what it starts
    void line(const QString& text);
    QString checkStatus(const QString& ip, const QString& device, const QString& type, const QString& card,
                        const QString& status);
    int findDevice(const QString& device) const;
    int findIp(const QString& ip) const;
    int findByCard(const QString& ip, const QString& device, const QString& type, const QString& card);
    void ping(const QString& ip, const QString& device, const QString& type);
    int findController(const QString& ip, const QString& device) const;
    void updatePing(const QString& ip, const QString& device);
    void silenceCheck();
    void pass();
    int sqlCheck(int index, int question);
    void sendCommand(int index, int yesnot);
    void testPort();
    void manual(const QString& ip, const QString& device, const QString& status);
    void setInterval(int ms);
    void show(const QStringList& fields);
    void setConnector(connector::TDeviceConnector* value);
    bool connected();
    void destroy();
    bool alive() const { return FAlive; }
    static QString field(const QString& name, const QString& text);

    // time
    void advance(qint64 ms);
    void jump(qint64 to, qint64 by);

private:
    using PPass = std::shared_ptr<TPass>;
    struct TGone
    {
    };
    struct TTicker
    {
        int interval;
        bool enabled;
        qint64 due;
    };

    qint64 timeOfDay() const { return FNow % 86'400'000; }
    bool late(qint64 moment, qint64 limit) const;
    PPass passAt(std::size_t index) const { return index < passes.size() ? passes[index] : nullptr; }
    PPass passOf(const QString& device) const;
    PPass add(const QString& ip, const QString& device, const QString& type, const QString& card);

    template <class Body>
    void outside(Body&& body);
    template <class Body>
    static void operation(Body&& body);
    void log(const QString& text);
    void error(const QString& text);
    void monitor(const QString& text);
    void report(const QStringList& fields);
    void reportPass(const QString& name, const TPass& pass);
    void doShow(const QStringList& fields);
    QString command(const QString& text);
    bool portReady();

    void doLine(const QString& text);
    void eventLine(const QString& text);
    void stateLine(const QString& text);
    void cross(const QString& ip, const QString& device, const QString& type);
    void button(const QString& ip, const QString& device, const QString& type);
    void confirm(const QString& device);
    void moveOn(const QString& device, const QString& shortStatus);
    QString doCheckStatus(const QString& ip, const QString& device, const QString& type, const QString& card,
                          const QString& status);
    void doPing(const QString& ip, const QString& device, const QString& type);
    void doUpdatePing(const QString& ip, const QString& device);

    void doPass();
    bool resend(const PPass& pass, std::size_t index);
    bool visit(const PPass& pass);
    bool actOn(const PPass& pass);
    void decide(const PPass& pass);
    void checkOpen(TPass& pass);
    bool remove(const PPass& pass);
    int ask(const PPass& pass, int question);
    int askHandler(const PPass& pass, int question, bool takeMessage);
    void doSend(const PPass& pass, int yesnot);

    void tick(std::size_t timer);
    void enableStack(bool on);

    THost& FHost;
    qint64 FNow;
    bool FDesigning;
    bool FAlive = true;
    bool FBusy = false;
    std::array<TTicker, 2> FTimers{{{10, false, 0}, {2000, true, 0}}}; // passes, liveness
    std::shared_ptr<bool> FListening = std::make_shared<bool>(true);
};

/// Everything that may run somebody else's code; nothing is touched any more when that destroyed the gate.
template <class Body>
void TModelGate::outside(Body&& body)
{
    try {
        body();
    } catch (...) {
        if (!FAlive) {
            went("destroyed inside a handler");
            platform::reportException();
            throw TGone();
        }
        throw;
    }
    if (!FAlive) {
        went("destroyed inside a handler");
        throw TGone();
    }
}

template <class Body>
void TModelGate::operation(Body&& body)
{
    try {
        body();
    } catch (const TGone&) {
    }
}

} // namespace tnv5::d24::model
