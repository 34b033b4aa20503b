#pragma once

#include "tnv5/connector/device_connector.h"
#include "tnv5/d24/d24_types.h"
#include "tnv5/testing/memory_port.h"

#include <QImage>
#include <QStringList>
#include <QVariant>
#include <array>
#include <memory>
#include <random>
#include <vector>

namespace tnv5::d24::model {

/// How the message about a result that is no integer is written down, whatever its wording.
inline const QString kNoInteger = QStringLiteral("no integer");

enum TEvent { evLog, evError, evStatus, evSql, evImg, kEventCount };

enum class TOp {
    Line,          // text[0]
    ConnectorData, // text[0]
    LinkLine,      // text[0] on link a
    Feed,          // bytes text[0] on the port, in pieces of a
    Parse,         // field text[0] of line text[1]
    CheckStatus,   // text[0..4]
    FindDevice,    // text[0..1]
    FindIp,        // text[0]
    FindByCard,    // text[0..3]
    Ping,          // text[0..2]
    PingFind,      // text[0..1]
    UpdatePing,    // text[0..1]
    SilenceCheck,
    Pass,
    SqlCheck,     // index a, mode b
    Send,         // index a, yesnot b
    CheckTimeout, // moments a and b in ms, limit c
    StatusAll,
    Relay,    // text[0..2], yesnot a
    Manual,   // text[0..2]
    Interval, // a ms
    Show,     // text[0..6]
    Connected,
    SetConnector, // link a; -1 none
    Assign,       // event a, handler b (0 none)
    SetCheckCross,
    SetCheckET,
    SetPingDelay,
    SetTimeOut,
    SetMode,
    SetRecord, // pass a, field b, text[0] or moment c
    Advance,   // a ms
    Jump,      // to a ms since 1899-12-30, or by b ms when a is 0
    LinkUp,    // link a, up b
    PortFails, // what a, on b
    PortOpen,  // a
    LinkType,  // of the real link: a
    Steal,     // another consumer takes link a
    NewLink,   // link a is destroyed, another one takes its place
    Destroy,
};

/// One thing that somebody does to a gate.
struct TCall
{
    TOp op = TOp::Pass;
    QStringList text;
    qint64 a = 0;
    qint64 b = 0;
    qint64 c = 0;
};

QString describe(const TCall& call);

using TRandom = std::mt19937_64;

/// How a scenario's host behaves, and where its time begins.
struct TTemper
{
    int nested = 0;    // in a thousand events, handlers that call back
    int raising = 0;   // ... and that raise
    int linkFails = 0; // ... sends that raise
    bool odd = false;  // answers that are no plain numbers
    bool mayDestroy = false;
    bool designing = false;
    qint64 startMs = 0;
};

/// Makes up a call; `inside`: one that a handler may make.
TCall randomCall(TRandom& random, const TTemper& temper, bool inside);
/// A call that hurts most while a command is being sent.
TCall disturbingCall(TRandom& random, const TTemper& temper);

class THost;

/// A gate that a scenario is played on, with the links and the port around it. One kind is the component, the
/// other the model; both are given the same host.
class TSide
{
public:
    TSide();
    virtual ~TSide();
    TSide(const TSide&) = delete;
    TSide& operator=(const TSide&) = delete;

    /// Does it and returns what came back, as text. What it raises leaves this function.
    QString call(const TCall& call);
    virtual bool alive() const = 0;
    virtual QString state() const = 0;

    THost& host() { return *FHost; }
    connector::TDeviceConnector* link(qint64 index) const;

    static constexpr int kScripted = 2; // links that answer by the script; the one behind them is real

protected:
    virtual QString callGate(const TCall& call) = 0;
    void dropLinks();

private:
    class TScriptedLink;
    bool callSurroundings(const TCall& call);
    void portFails(const TCall& call);
    void openPort(bool open);
    void makeReal();

    std::unique_ptr<THost> FHost;
    std::unique_ptr<testkit::TMemoryPort> FPort;
    std::array<std::unique_ptr<TScriptedLink>, kScripted> FScripted;
    std::unique_ptr<connector::TDeviceConnector> FReal;
};

/// The host of a gate: writes down everything that it is told, and answers, calls back or raises as its
/// random numbers say. Two hosts with the same seed act alike as long as they are told the same.
class THost
{
public:
    explicit THost(TSide& side) : FSide(side) {}

    void begin(quint64 seed, const TTemper& temper);
    QStringList takeTrace() { return std::exchange(FTrace, {}); }
    void note(const QString& line);

    void text(const char* name, int handler, const QString& text);
    void status(int handler, const QStringList& fields);
    void picture(int handler, const QString& device, QImage& img);
    void question(int handler, const QStringList& fields, QImage& img, int mode, QVariant& mess,
                  QVariant& result);
    void monitor(const QByteArray& bytes);
    bool linkUp(int link);
    QString linkSend(int link, const QString& command);

    std::array<bool, TSide::kScripted> up{true, true};

private:
    int roll(int sides) { return int(FRandom() % quint64(sides)); }
    void act();
    void callBack(const TCall& call);
    [[noreturn]] void raise();

    TSide& FSide;
    QStringList FTrace;
    TRandom FRandom;
    TTemper FTemper;
    int FDepth = 0;
    int FBudget = 0;
    int FRaised = 0;
};

} // namespace tnv5::d24::model
