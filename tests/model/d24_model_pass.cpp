// The second half of the model: commands, the host's answers, the pass over the table, time and the public
// methods.

#include "d24_model.h"

#include <cmath>

namespace tnv5::d24::model {

namespace {

const QString kManualCard = QStringLiteral("-1-1-1-1-1");
const QString kButtonCard = QStringLiteral("-2-2-2-2-2");

bool isPseudo(const QString& card)
{
    return card == kManualCard || card == kButtonCard;
}

int integerOf(const QVariant& answer)
{
    bool isNumber = false;
    int number = 0;
    if (answer.typeId() == QMetaType::QString) {
        number = answer.toString().toInt(&isNumber);
    } else if (answer.typeId() == QMetaType::Double) {
        isNumber = true;
        number = int(std::lround(answer.toDouble()));
    } else {
        number = answer.toInt(&isNumber);
    }
    if (!isNumber) {
        went("check: not a number");
        throw platform::EConvertError(kNoInteger);
    }
    return number;
}

} // namespace

TModelGate::TModelGate(THost& host, qint64 nowMs, bool designing)
    : FHost(host), FNow(nowMs), FDesigning(designing)
{
    FTimers[1].due = nowMs + FTimers[1].interval;
    FTimers[1].enabled = !designing;
}

TModelGate::~TModelGate()
{
    *FListening = false;
}

// ---- commands and questions

void TModelGate::doSend(const PPass& pass, int yesnot)
{
    if (!portReady()) {
        return;
    }
    if (!pass || yesnot < 0 || yesnot > 1) {
        went("send: neither allow nor refuse");
        return;
    }
    const bool allow = yesnot == 1;
    const QString rest = pass->ip + u':' + pass->device + pass->info;
    const QString open = (allow ? QStringLiteral("GO") : QStringLiteral("PH")) + rest;
    const QString text = QStringLiteral("SH") + rest;
    QString main;
    QString extra;
    if (pass->type == QLatin1String("G")) {
        either(allow, "send: allow G", "send: refuse G");
        main = open;
        extra = text;
    } else if (pass->type == QLatin1String("I")) {
        either(allow, "send: allow I", "send: refuse I");
        extra = text;
    } else if (pass->type == QLatin1String("T") && !pass->info.isEmpty()) {
        either(allow, "send: allow T with text", "send: refuse T with text");
        main = open;
        extra = text;
    } else if (pass->type == QLatin1String("T")) {
        either(allow, "send: allow T without text", "send: refuse T without text");
        main = open;
    } else {
        either(allow, "send: allow other", "send: refuse other");
    }
    QString failure;
    bool failed = false;
    try {
        if (!extra.isEmpty()) {
            command(extra);
        }
        pass->command = main;
        pass->finish = false;
        pass->crc = command(main);
        pass->crcTime = timeOfDay();
    } catch (const TGone&) {
        throw;
    } catch (...) {
        failed = true;
        failure = platform::exceptionMessage();
    }
    if (failed && either(allow, "send: allow failed", "send: refuse failed")) {
        error(QStringLiteral("[04] ") + failure);
        monitor(QStringLiteral("ERROR![045] ") + failure + u'&');
    } else if (failed) {
        error(QStringLiteral("[044] ") + failure);
        monitor(QStringLiteral("ERROR![044] ") + failure + u'&');
    }
    log(QStringLiteral("%Отправлено на порт% ") + main);
    monitor(QStringLiteral("LOG!%Отправлено на порт% ") + main + u'&');
}

int TModelGate::askHandler(const PPass& pass, int question, bool takeMessage)
{
    QVariant mess = QString();
    QVariant result = -1;
    outside([&] {
        FHost.question(handlers[evSql], {pass->ip, pass->device, pass->type, pass->card, pass->status},
                       pass->img, question, mess, result);
    });
    if (takeMessage) {
        pass->info = mess.isNull() ? QString() : mess.toString();
    }
    return integerOf(result);
}

int TModelGate::ask(const PPass& pass, int question)
{
    const bool handled = handlers[evSql] != 0;
    if (question == 0) {
        either(handled, "check: mode 0 with handler", "check: mode 0 without handler");
        const int result = handled ? askHandler(pass, 0, true) : -1;
        if (isPseudo(pass->card)) {
            went("check: pseudo card");
            pass->status = QStringLiteral("OPEN");
        }
        if (pass->type == QLatin1String("I")) {
            went("check: type I");
            pass->status = QStringLiteral("FINISH");
        }
        return result;
    }
    if (question == 1 || question == 2 || question == 3 || question == 5) {
        either(handled, "check: other modes with handler", "check: other modes without handler");
        return handled ? askHandler(pass, question, false) : 1;
    }
    went("check: unknown mode");
    return -1;
}

// ---- the pass over the table

void TModelGate::doPass()
{
    if (FBusy) {
        went("pass: busy");
    } else {
        const std::size_t count = passes.size();
        try {
            for (std::size_t i = 0; i < count; ++i) {
                const PPass pass = passAt(i);
                if (!pass || !resend(pass, i)) {
                    went("pass: record gone"); // what is left waits for the next round
                    break;
                }
                if (!visit(pass)) {
                    return;
                }
            }
        } catch (...) {
            went("pass: left by exception");
            FBusy = false;
            throw;
        }
        FBusy = false;
    }
    if (passes.empty()) {
        went("pass: table empty");
        enableStack(false);
    }
}

/// False when the pass went away meanwhile: until the first one is sent, another round may run inside.
bool TModelGate::resend(const PPass& pass, std::size_t index)
{
    if (checkET && !pass->finish && !pass->command.isEmpty() && late(pass->start, 1) && link) {
        went("pass: resend");
        command(pass->command);
    }
    return passAt(index) == pass;
}

/// False when the pass was removed, which ends the round.
bool TModelGate::visit(const PPass& pass)
{
    FBusy = true;
    static const QStringList known{"NEW",   "OPEN",          "NOANSWER", "CRC-ERROR", "TIMEOUT",
                                   "CLOSE", "PROGRESSSTART", "PROGRESS", "FINISH"};
    if (!known.contains(pass->status)) {
        went("pass: unknown status");
        return true;
    }
    reportPass(QStringLiteral("STACK"), *pass);
    return actOn(pass);
}

bool TModelGate::remove(const PPass& pass)
{
    std::erase(passes, pass);
    FBusy = false;
    return false;
}

bool TModelGate::actOn(const PPass& pass)
{
    const QString status = pass->status;
    const auto tooLong = [&] {
        return pass->type == QLatin1String("T") && late(pass->start, timeOut + 10LL);
    };
    if (status == QLatin1String("NEW")) {
        decide(pass);
    } else if (status == QLatin1String("OPEN")) {
        checkOpen(*pass);
    } else if (status == QLatin1String("NOANSWER")) {
        if (either(ask(pass, 3) != 0, "NOANSWER: removed", "NOANSWER: kept")) {
            return remove(pass);
        }
    } else if (status == QLatin1String("CRC-ERROR")) {
        if (either(ask(pass, 3) == 1, "CRC-ERROR: removed", "CRC-ERROR: kept")) {
            return remove(pass);
        }
    } else if (status == QLatin1String("TIMEOUT")) {
        if (either(ask(pass, 1) == 1, "TIMEOUT: removed", "TIMEOUT: kept")) {
            return remove(pass);
        }
    } else if (status == QLatin1String("CLOSE")) {
        went("CLOSE");
        return remove(pass);
    } else if (status == QLatin1String("PROGRESSSTART")) {
        if (either(tooLong(), "PROGRESSSTART: late", "PROGRESSSTART: in time")) {
            pass->status = QStringLiteral("TIMEOUT");
        }
        ask(pass, 5);
        pass->status = QStringLiteral("PROGRESS");
    } else if (status == QLatin1String("PROGRESS")) {
        if (either(tooLong(), "PROGRESS: late", "PROGRESS: in time")) {
            pass->status = QStringLiteral("TIMEOUT");
        }
    } else if (status == QLatin1String("FINISH")) {
        if (either(ask(pass, 2) == 1, "FINISH: removed", "FINISH: not answered")) {
            return remove(pass);
        }
        pass->status = QStringLiteral("NOANSWER");
    }
    return true;
}

void TModelGate::decide(const PPass& pass)
{
    const int answer = ask(pass, 0);
    if (answer == -1) {
        went("NEW: no answer");
        pass->status = QStringLiteral("NOANSWER");
    } else if (answer == 0) {
        went("NEW: refused");
        doSend(pass, 0);
        pass->status = QStringLiteral("CLOSE");
    } else if (answer == 1) {
        if (!either(pass->card == kButtonCard, "NEW: button", "NEW: allowed")) {
            doSend(pass, 1);
        }
        if (pass->card == kManualCard) {
            went("NEW: manual");
        }
        if (pass->type == QLatin1String("I")) {
            went("NEW: type I");
            pass->status = QStringLiteral("FINISH");
        } else if (!isPseudo(pass->card)) {
            pass->status = QStringLiteral("OPEN");
        }
    } else {
        went("NEW: asked again");
    }
}

void TModelGate::checkOpen(TPass& pass)
{
    const bool quick = pass.type == QLatin1String("I") || pass.type == QLatin1String("G");
    if (quick && !checkET) {
        went("OPEN: no confirmation wanted");
        pass.status = QStringLiteral("NOANSWER");
    } else if (quick && pass.finish) {
        went("OPEN: confirmed");
        pass.status = QStringLiteral("NOANSWER");
    } else if (quick && either(late(pass.start, 2), "OPEN: not confirmed in time", "OPEN: not confirmed")) {
        pass.status = QStringLiteral("NOANSWER");
    }
    if (pass.type == QLatin1String("T") &&
        either(late(pass.start, timeOut + 2LL), "OPEN: T times out", "OPEN: T waits")) {
        pass.status = QStringLiteral("TIMEOUT");
    }
    if (pass.type == QLatin1String("D") &&
        either(late(pass.start, 3), "OPEN: D times out", "OPEN: D waits")) {
        pass.status = QStringLiteral("TIMEOUT");
    }
    if (isPseudo(pass.card)) {
        went("OPEN: pseudo card");
        pass.status = QStringLiteral("FINISH");
    }
}

// ---- time

void TModelGate::enableStack(bool on)
{
    TTicker& stack = FTimers[0];
    if (!FDesigning && stack.enabled != on) {
        stack.enabled = on;
        stack.due = FNow + stack.interval;
    }
}

void TModelGate::tick(std::size_t timer)
{
    try {
        if (timer == 0) {
            pass();
        } else {
            silenceCheck();
        }
    } catch (...) {
        platform::reportException();
    }
}

void TModelGate::advance(qint64 ms)
{
    const qint64 target = FNow + ms;
    while (true) {
        TTicker* next = nullptr;
        for (TTicker& ticker : FTimers) {
            if (ticker.enabled && ticker.interval > 0 && ticker.due <= target &&
                (next == nullptr || ticker.due < next->due)) {
                next = &ticker;
            }
        }
        if (next == nullptr) {
            break;
        }
        FNow = std::max(FNow, next->due);
        next->due += next->interval;
        tick(std::size_t(next - FTimers.data()));
    }
    FNow = std::max(FNow, target);
}

void TModelGate::jump(qint64 to, qint64 by)
{
    const qint64 ms = to != 0 ? to : FNow + by;
    for (TTicker& ticker : FTimers) {
        ticker.due += ms - FNow;
    }
    FNow = ms;
}

void TModelGate::silenceCheck()
{
    operation([&] {
        const std::size_t count = controllers.size();
        for (std::size_t i = 0; i < count; ++i) {
            const TController entry = *controllers[i];
            if (either(late(entry.heard, pingDelay), "silent: reported", "silent: heard lately")) {
                report({"STACK", entry.ip, entry.device, entry.type, "", "NOPING", "NOPING"});
            }
        }
    });
}

// ---- the public methods

void TModelGate::line(const QString& text)
{
    operation([&] { doLine(text); });
}

QString TModelGate::checkStatus(const QString& ip, const QString& device, const QString& type,
                                const QString& card, const QString& status)
{
    QString result;
    operation([&] { result = doCheckStatus(ip, device, type, card, status); });
    return result;
}

void TModelGate::ping(const QString& ip, const QString& device, const QString& type)
{
    operation([&] { doPing(ip, device, type); });
}

void TModelGate::updatePing(const QString& ip, const QString& device)
{
    doUpdatePing(ip, device);
}

void TModelGate::pass()
{
    operation([&] { doPass(); });
}

int TModelGate::sqlCheck(int index, int question)
{
    int result = -1;
    if (const PPass pass = passAt(std::size_t(index))) {
        operation([&] { result = ask(pass, question); });
    }
    return result;
}

void TModelGate::sendCommand(int index, int yesnot)
{
    operation([&] { doSend(passAt(std::size_t(index)), yesnot); });
}

void TModelGate::testPort()
{
    operation([&] { portReady(); });
}

void TModelGate::manual(const QString& ip, const QString& device, const QString& status)
{
    operation([&] {
        if (const PPass pending = passOf(ip); either(bool(pending), "manual: pending", "manual: new")) {
            pending->status = status;
        } else {
            doLine(u'$' + ip + u':' + device + QStringLiteral("RQ-1-1-1-1-100"));
        }
    });
}

void TModelGate::setInterval(int ms)
{
    FTimers[0].interval = ms;
    if (either(FTimers[0].enabled, "interval: running", "interval: stopped")) {
        FTimers[0].due = FNow + ms;
    }
}

void TModelGate::show(const QStringList& fields)
{
    operation([&] { doShow(fields); });
}

void TModelGate::setConnector(connector::TDeviceConnector* value)
{
    if (!FDesigning && value != nullptr) {
        went("connector: set");
        value->SetOnGetData([this, listening = FListening](platform::TComponent*, const QString& text) {
            if (*listening && FAlive) {
                line(text);
            }
        });
    } else if (!FDesigning && either(bool(link), "connector: cleared", "connector: none before")) {
        link->SetOnGetData({});
    }
    link = value;
}

bool TModelGate::connected()
{
    bool result = false;
    operation([&] {
        if (link) {
            outside([&] { result = link->GetConnected(); });
        }
    });
    return result;
}

void TModelGate::destroy()
{
    if (link) {
        link->SetOnGetData({});
    }
    for (TTicker& ticker : FTimers) {
        ticker.enabled = false;
    }
    FAlive = false;
}

} // namespace tnv5::d24::model
