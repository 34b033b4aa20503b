#include "model/scales_model.h"

#include <cstdlib>

namespace tnv5::scales::model {

namespace {

/// First request of each family that is asked.
const QByteArray kFirst[] = {
    "",      "D", "\x05", QByteArray("\0\0\3", 3), QByteArray("\0\0\3\0\0\0\0\0", 8), QByteArray("<\0!>", 4),
    "\x05\r"};

} // namespace

TModelScales::TModelScales(TModelWorld& world, bool designing)
    : TModel(world, designing),
      FLastAsk(world.clock.timeOfDay()),
      FTimer(world, 1000, [this] { poll(); }),
      FSplitter(world, [this](const QByteArray& bytes) { packet(bytes); })
{
    FSplitter.Stop.clear();
    FSplitter.OnStart = [this](const QByteArray& buffer, qsizetype& at) { findStart(buffer, at); };
    FSplitter.OnStop = [this](const QByteArray& buffer, qsizetype& at) { findStop(buffer, at); };
}

void TModelScales::poll()
{
    if (either<"PollTick", "PollUnconnected">(IsConnected())) {
        GetWeight(true);
    }
}

void TModelScales::die()
{
    FSplitter.attach(nullptr);
    FTimer.setEnabled(false);
    TModel::die();
}

// properties

void TModelScales::notify(int weight)
{
    if (weight == FLastWeight) {
        hit<"WeightSame">();
    } else if (weight < 1) {
        hit<"WeightBelow1">();
    } else if (!FOnWeight) {
        hit<"WeightUnheard">();
    } else if (FBusy) {
        hit<"WeightBusy">();
    } else {
        hit<"WeightNotified">();
        FLastWeight = weight;
        FBusy = true;
        try {
            fire(FOnWeight, this, weight);
        } catch (const TFailure&) {
            hit<"WeightRaised">();
            FBusy = false;
            throw;
        }
        FBusy = false;
    }
    FLastWeight = weight;
}

void TModelScales::SetScalesType(int type)
{
    FType = type;
    const bool strings = type == 5 || type == 7 || type == 8;
    either<"TypeStrings", "TypeWithout">(strings);
    if (strings) {
        FSplitter.Start = type == 5 ? "<" : type == 7 ? "\x02" : "W";
        FSplitter.Stop = type == 5 ? ">" : type == 7 ? "\r\n" : "kg";
    }
}

void TModelScales::bind(TModelPort* port)
{
    if (!FDesigning) {
        FSplitter.attach(port);
    }
}

void TModelScales::SetComport(TModelPort* port)
{
    FPort = port;
    bind(port);
}

void TModelScales::SetSendInterval(int ms)
{
    if (ms == FSendInterval) {
        hit<"IntervalSame">();
    } else if (FDesigning) {
        hit<"IntervalDesign">();
    } else {
        either<"IntervalOff", "IntervalOn">(ms == -1);
        FTimer.setEnabled(false);
        FTimer.setInterval(ms);
        FTimer.setEnabled(ms != -1);
    }
    FSendInterval = ms;
}

// port

bool TModelScales::connectPort(bool open)
{
    if (ComPort() == nullptr) {
        hit<"ConnectNoPort">();
        error(GetMessage(0));
        return false;
    }
    if (open && ComPort()->Connected()) {
        hit<"ConnectOpenAlready">();
    }
    bool done = false;
    attempt(
        [&] {
            open ? ComPort()->Open() : ComPort()->Close();
            done = true;
        },
        [&](const QString& failure) {
            either<"ConnectFailed", "ConnectCloseFailed">(open);
            error(failure);
        });
    if (done) {
        either<"ConnectOpened", "ConnectClosed">(open);
    }
    return done;
}

void TModelScales::SetUpComport()
{
    TModelPort* const port = ComPort();
    const int type = FType >= 1 && FType <= 8 ? FType : 0;
    if (port == nullptr) {
        hit<"SetUpNoPort">();
    } else {
        way<"SetUp0", "SetUp1", "SetUp2", "SetUp3", "SetUp4", "SetUp5to8">(qMin(type, 5));
        if (type != 0 && type != 4) {
            const bool even = type == 1 || type == 3;
            port->SetBaudRate(even ? 4800 : 9600);
            port->SetParity(even ? 2 : 0);
            port->SetDataBits(8);
            port->SetStopBits(0);
        }
        if (type != 0) {
            port->SetReadGap(type <= 4 ? 10 : 0);
        }
    }
    bind(port);
}

void TModelScales::send(const QString& text)
{
    if (!IsConnected()) {
        hit<"SendUnconnected">();
        return;
    }
    try {
        callOut([&] { ComPort()->Write(bytesOf(text, false)); });
    } catch (const TFailure&) {
        hit<"SendFailed">();
        throw;
    }
    hit<"Sent">();
    log("[05] Send to port " + text);
}

void TModelScales::restart()
{
    const bool ticked = FTimer.enabled();
    FTimer.setEnabled(false);
    bind(nullptr);
    FLastAsk = FWorld.clock.timeOfDay();
    FAsk = false;
    bind(ComPort());
    const bool open = connectPort(true);
    way<"ResetRefused", "ResetNoPort", "ResetOpened">(open ? 2 : int(ComPort() == nullptr));
    if (open) {
        FTimer.setEnabled(ticked);
    }
    if (ticked) {
        either<"ResetTimerOn", "ResetTimerLeftOff">(open);
    }
    if (FDesigning) {
        hit<"ResetDesign">();
    }
    log("[07] Reset port " + (ComPort() == nullptr || FDesigning ? QString() : ComPort()->Port()));
}

// weighing

int TModelScales::ask(bool safe)
{
    FLastWeight = 0;
    const int type = FType;
    if (!IsConnected()) {
        hit<"WeighUnconnected">();
        return -1;
    }
    if (type < 1 || type > 8) {
        hit<"WeighNoFamily">();
        return -1;
    }
    if (type <= 6) {
        request();
    } else {
        hit<"WeighContinuous">();
    }
    FLastAsk = FWorld.clock.timeOfDay();
    if (safe) {
        hit<"WeighSafe">();
        return FLastWeight;
    }
    return wait(type > 6);
}

void TModelScales::request()
{
    const int type = FType;
    if (!silent()) {
        hit<"WeighInTime">();
        FCount = 0;
        FAsk = false;
        send(textOf(kFirst[type], false));
        return;
    }
    if (FCount >= 3 && FOnError) {
        hit<"WeighNoAnswer">();
        error(GetMessage(3));
        FCount = 0;
    } else if (FCount >= 3) {
        hit<"WeighNoAnswerUnheard">();
    }
    ++FCount;
    if (type == 1) {
        hit<"WeighLate1">();
        restart();
        FLastAsk = FWorld.clock.timeOfDay();
        send(textOf(kFirst[type], false));
    } else {
        hit<"WeighLate2to6">();
        FAsk = false;
        send(textOf(kFirst[type], false));
        restart();
    }
}

int TModelScales::wait(bool continuous)
{
    const qint64 since = FWorld.clock.nowMs();
    while (!silent()) {
        if (std::llabs(FWorld.clock.nowMs() - since) >= 4000) {
            hit<"WaitExtended">();
        }
        callOut(FWorld.clock.OnWait);
        if (FLastWeight > 0) {
            hit<"WaitAnswered">();
            return FLastWeight;
        }
    }
    either<"WaitTimedOutContinuous", "WaitTimedOut">(continuous);
    return continuous ? -1 : FLastWeight;
}

} // namespace tnv5::scales::model
