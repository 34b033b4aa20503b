#include "model/scales_model.h"

#include <cstdlib>

namespace tnv5::scales::model {

namespace {

/// First request of each family that is asked.
QString firstRequest(int type)
{
    switch (type) {
    case 1:
        return QStringLiteral("D");
    case 2:
        return QString(QChar(5));
    case 3:
        return QString::fromLatin1("\0\0\3", 3);
    case 4:
        return QString::fromLatin1("\0\0\3\0\0\0\0\0", 8);
    case 5:
        return QString::fromLatin1("<\0!>", 4);
    default:
        return QString::fromLatin1("\5\r", 2);
    }
}

} // namespace

TScalesModel::TScalesModel(THostCall host, TClockModel& clock, bool design)
    : FHost(std::move(host)), FClock(clock), FDesign(design), FLastAsk(clock.timeOfDay()), FSplitter(FHost)
{
    if (design) {
        return;
    }
    FSplitter.askStart = [this](const QByteArray& buffer, qsizetype& at) { findStart(buffer, at); };
    FSplitter.askStop = [this](const QByteArray& buffer, qsizetype& at) { findStop(buffer, at); };
    FSplitter.deliver = [this](const QByteArray& bytes) { packet(bytes); };
    FTimer.tick = [this] {
        guardedCall(FHost, [this] {
            if (!isConnected()) {
                reach(TBranch::PollUnconnected);
                return;
            }
            reach(TBranch::PollTick);
            operation([this] { ask(true); });
        });
    };
    FClock.timer = &FTimer;
}

void TScalesModel::destroy()
{
    FAlive = false;
    if (!FDesign) {
        FSplitter.attach(nullptr);
        FClock.timer = nullptr;
    }
}

template <class Body>
void TScalesModel::operation(Body&& body)
{
    try {
        body();
    } catch (const TGone&) {
        reach(TBranch::Gone);
    }
}

/// Runs what may run host code.
template <class Body>
void TScalesModel::call(Body&& body)
{
    try {
        body();
    } catch (const TFailure& failure) {
        if (FAlive) {
            throw;
        }
        if (!failure.silent) {
            FHost(TEvent::Unhandled, failure.text);
        }
    }
    if (!FAlive) {
        throw TGone();
    }
}

void TScalesModel::fire(int handler, TEvent event, const QString& text)
{
    if (handler != 0) {
        call([&] { FHost(event, numbered(handler, text)); });
    }
}

// properties

void TScalesModel::setLastWeight(int weight)
{
    operation([&] { notify(weight); });
}

void TScalesModel::notify(int weight)
{
    if (weight == FLastWeight) {
        reach(TBranch::WeightSame);
    } else if (weight < 1) {
        reach(TBranch::WeightBelow1);
    } else if (onWeight == 0) {
        reach(TBranch::WeightUnheard);
    } else if (FBusy) {
        reach(TBranch::WeightBusy);
    } else {
        reach(TBranch::WeightNotified);
        FLastWeight = weight;
        FBusy = true;
        try {
            fire(onWeight, TEvent::Weight, QString::number(weight));
        } catch (const TFailure&) {
            reach(TBranch::WeightRaised);
            FBusy = false;
            throw;
        }
        FBusy = false;
    }
    FLastWeight = weight;
}

void TScalesModel::setScalesType(int type)
{
    FScalesType = type;
    const bool strings = type == 5 || type == 7 || type == 8;
    reach(strings ? TBranch::TypeStrings : TBranch::TypeWithout);
    if (strings) {
        FSplitter.startString = type == 5 ? "<" : type == 7 ? "\x02" : "W";
        FSplitter.stopString = type == 5 ? ">" : type == 7 ? "\r\n" : "kg";
    }
}

void TScalesModel::bind(TPortModel* port)
{
    if (!FDesign) {
        FSplitter.attach(port);
    }
}

void TScalesModel::setComport(TPortModel* port)
{
    FPort = port;
    bind(port);
}

void TScalesModel::setSendInterval(int ms)
{
    if (ms == FSendInterval) {
        reach(TBranch::IntervalSame);
    } else if (FDesign) {
        reach(TBranch::IntervalDesign);
    } else {
        reach(ms == -1 ? TBranch::IntervalOff : TBranch::IntervalOn);
        FClock.enable(FTimer, false);
        FTimer.interval = ms;
        FClock.enable(FTimer, ms != -1);
    }
    FSendInterval = ms;
}

// port

bool TScalesModel::setConnection(bool open)
{
    bool result = false;
    operation([&] { result = connectPort(open); });
    return result;
}

bool TScalesModel::connectPort(bool open)
{
    if (FPort == nullptr) {
        reach(TBranch::ConnectNoPort);
        error(message(0));
        return false;
    }
    if (open && FPort->connected) {
        reach(TBranch::ConnectOpenAlready);
    }
    TPortModel& port = *FPort;
    std::optional<QString> failed;
    try {
        call([&] { open ? port.open() : port.close(); });
    } catch (const TFailure& failure) {
        failed = failure.text;
    }
    if (failed) {
        reach(open ? TBranch::ConnectFailed : TBranch::ConnectCloseFailed);
        error(*failed);
        return false;
    }
    reach(open ? TBranch::ConnectOpened : TBranch::ConnectClosed);
    return true;
}

void TScalesModel::setUpComport()
{
    if (FPort == nullptr) {
        reach(TBranch::SetUpNoPort);
    } else {
        const int type = FScalesType;
        const bool family = type >= 1 && type <= 8;
        reach(!family    ? TBranch::SetUp0
              : type > 4 ? TBranch::SetUp5to8
                         : TBranch(int(TBranch::SetUp0) + type));
        if (family && type != 4) {
            const bool even = type == 1 || type == 3;
            FPort->baudRate = even ? 4800 : 9600;
            FPort->parity = even ? 2 : 0;
            FPort->dataBits = 8;
            FPort->stopBits = 0;
        }
        if (family) {
            FPort->readGap = type <= 4 ? 10 : 0;
        }
    }
    bind(FPort);
}

void TScalesModel::writeToPort(const QString& text)
{
    operation([&] { send(text); });
}

void TScalesModel::send(const QString& text)
{
    if (!isConnected()) {
        reach(TBranch::SendUnconnected);
        return;
    }
    QByteArray bytes;
    for (const QChar character : text) {
        bytes += character > QChar(255) ? '?' : char(character.unicode());
    }
    TPortModel& port = *FPort;
    try {
        call([&] { port.write(bytes); });
    } catch (const TFailure&) {
        reach(TBranch::SendFailed);
        throw;
    }
    reach(TBranch::Sent);
    log(QStringLiteral("[05] Send to port ") + text);
}

void TScalesModel::reset()
{
    operation([&] { restart(); });
}

void TScalesModel::restart()
{
    const bool ticked = FTimer.enabled;
    FClock.enable(FTimer, false);
    bind(nullptr);
    FLastAsk = FClock.timeOfDay();
    FAsk = false;
    bind(FPort);
    const bool open = connectPort(true);
    reach(open ? TBranch::ResetOpened : FPort == nullptr ? TBranch::ResetNoPort : TBranch::ResetRefused);
    if (open) {
        FClock.enable(FTimer, ticked);
    }
    if (ticked) {
        reach(open ? TBranch::ResetTimerOn : TBranch::ResetTimerLeftOff);
    }
    if (FDesign) {
        reach(TBranch::ResetDesign);
    }
    log(QStringLiteral("[07] Reset port ") + (FPort == nullptr || FDesign ? QString() : FPort->name));
}

// weighing

int TScalesModel::getWeight(bool safe)
{
    int result = -1;
    operation([&] { result = ask(safe); });
    return result;
}

bool TScalesModel::silent() const
{
    return std::llabs(FClock.timeOfDay() - FLastAsk) / 1000 > 3;
}

int TScalesModel::ask(bool safe)
{
    FLastWeight = 0;
    const int type = FScalesType;
    if (!isConnected()) {
        reach(TBranch::WeighUnconnected);
        return -1;
    }
    if (type < 1 || type > 8) {
        reach(TBranch::WeighNoFamily);
        return -1;
    }
    if (type <= 6) {
        request(type);
    } else {
        reach(TBranch::WeighContinuous);
    }
    FLastAsk = FClock.timeOfDay();
    if (safe) {
        reach(TBranch::WeighSafe);
        return FLastWeight;
    }
    return wait(type > 6);
}

void TScalesModel::request(int type)
{
    if (!silent()) {
        reach(TBranch::WeighInTime);
        FCount = 0;
        FAsk = false;
        send(firstRequest(type));
        return;
    }
    if (FCount >= 3 && onError != 0) {
        reach(TBranch::WeighNoAnswer);
        error(message(3));
        FCount = 0;
    } else if (FCount >= 3) {
        reach(TBranch::WeighNoAnswerUnheard);
    }
    ++FCount;
    if (type == 1) {
        reach(TBranch::WeighLate1);
        restart();
        FLastAsk = FClock.timeOfDay();
        send(firstRequest(type));
    } else {
        reach(TBranch::WeighLate2to6);
        FAsk = false;
        send(firstRequest(type));
        restart();
    }
}

int TScalesModel::wait(bool continuous)
{
    const qint64 since = FClock.now;
    while (!silent()) {
        if (std::llabs(FClock.now - since) >= 4000) {
            reach(TBranch::WaitExtended);
        }
        call([&] { FHost(TEvent::Wait, {}); });
        if (FLastWeight > 0) {
            reach(TBranch::WaitAnswered);
            return FLastWeight;
        }
    }
    reach(continuous ? TBranch::WaitTimedOutContinuous : TBranch::WaitTimedOut);
    return continuous ? -1 : FLastWeight;
}

} // namespace tnv5::scales::model
