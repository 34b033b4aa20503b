#include "model/d24_model.h"
#include "model/kit/texts.h"

#include <cmath>

// Commands, the host's answers, the sweep over the table, and what the host calls.

namespace tnv5::d24::model {

namespace {

const QString kManualCard = "-1-1-1-1-1";

bool isPseudo(const QString& card)
{
    return card == kManualCard || card == kButtonCard;
}

} // namespace

// ---- commands and questions

void TModelGate::send(const PPass& pass, int yesnot)
{
    if (!portReady()) {
        return;
    }
    if (!pass || yesnot < 0 || yesnot > 1) {
        hit<"send: neither allow nor refuse">();
        return;
    }
    const bool allow = yesnot == 1;
    const QString rest = pass->IP + u':' + pass->Device + pass->InfoMess;
    const QString open = (allow ? "GO" : "PH") + rest;
    const QString text = "SH" + rest;
    QString main;
    QString extra;
    if (pass->DeviceType == "G") {
        either<"send: allow G", "send: refuse G">(allow);
        main = open;
        extra = text;
    } else if (pass->DeviceType == "I") {
        either<"send: allow I", "send: refuse I">(allow);
        extra = text;
    } else if (pass->DeviceType == "T" && !pass->InfoMess.isEmpty()) {
        either<"send: allow T with text", "send: refuse T with text">(allow);
        main = open;
        extra = text;
    } else if (pass->DeviceType == "T") {
        either<"send: allow T without text", "send: refuse T without text">(allow);
        main = open;
    } else {
        either<"send: allow other", "send: refuse other">(allow);
    }
    std::optional<QString> failure;
    try {
        if (!extra.isEmpty()) {
            command(extra);
        }
        pass->Command = main;
        pass->Finish = false;
        pass->CRC = command(main);
        pass->CRCtime = today();
    } catch (const TFailure& raised) {
        failure = raised.text;
    }
    if (failure && either<"send: allow failed", "send: refuse failed">(allow)) {
        error("[04] " + *failure);
        monitor("ERROR![045] " + *failure + u'&');
    } else if (failure) {
        error("[044] " + *failure);
        monitor("ERROR![044] " + *failure + u'&');
    }
    log("%Отправлено на порт% " + main);
    monitor("LOG!%Отправлено на порт% " + main + u'&');
}

int TModelGate::askHandler(const PPass& pass, int question, bool takeMessage)
{
    QVariant mess = QString();
    QVariant result = -1;
    fire(FOnQuestion, this, pass->IP, pass->Device, pass->DeviceType, pass->CardNumber, pass->Status,
         pass->Img, question, mess, result);
    if (takeMessage) {
        pass->InfoMess = mess.isNull() ? QString() : mess.toString();
    }
    try {
        return integerOf(result);
    } catch (const TFailure&) {
        hit<"check: not a number">();
        throw;
    }
}

int TModelGate::ask(const PPass& pass, int question)
{
    const bool handled = bool(FOnQuestion);
    if (question == 0) {
        either<"check: mode 0 with handler", "check: mode 0 without handler">(handled);
        const int result = handled ? askHandler(pass, 0, true) : -1;
        if (isPseudo(pass->CardNumber)) {
            hit<"check: pseudo card">();
            pass->Status = "OPEN";
        }
        if (pass->DeviceType == "I") {
            hit<"check: type I">();
            pass->Status = "FINISH";
        }
        return result;
    }
    if (question == 1 || question == 2 || question == 3 || question == 5) {
        either<"check: other modes with handler", "check: other modes without handler">(handled);
        return handled ? askHandler(pass, question, false) : 1;
    }
    hit<"check: unknown mode">();
    return -1;
}

// ---- the pass over the table

void TModelGate::sweep()
{
    if (FBusy) {
        hit<"pass: busy">();
    } else {
        const std::size_t count = FPasses.size();
        try {
            for (std::size_t i = 0; i < count; ++i) {
                const PPass pass = StackItem(int(i));
                if (!pass || !resend(pass, i)) {
                    hit<"pass: record gone">(); // what is left waits for the next round
                    break;
                }
                if (!visit(pass)) {
                    return;
                }
            }
        } catch (...) {
            hit<"pass: left by exception">();
            FBusy = false;
            throw;
        }
        FBusy = false;
    }
    if (FPasses.empty()) {
        hit<"pass: table empty">();
        enableStack(false);
    }
}

/// False when the pass went away meanwhile: until the first one is sent, another round may run inside.
bool TModelGate::resend(const PPass& pass, std::size_t index)
{
    if (number("CheckET") != 0 && !pass->Finish && !pass->Command.isEmpty() && late(pass->Starttime, 1) &&
        Connector() != nullptr) {
        hit<"pass: resend">();
        command(pass->Command);
    }
    return StackItem(int(index)) == pass;
}

/// False when the pass was removed, which ends the round.
bool TModelGate::visit(const PPass& pass)
{
    FBusy = true;
    static const QStringList known{"NEW",   "OPEN",          "NOANSWER", "CRC-ERROR", "TIMEOUT",
                                   "CLOSE", "PROGRESSSTART", "PROGRESS", "FINISH"};
    if (!known.contains(pass->Status)) {
        hit<"pass: unknown status">();
        return true;
    }
    reportPass("STACK", *pass);
    return actOn(pass);
}

bool TModelGate::remove(const PPass& pass)
{
    std::erase(FPasses, pass);
    FBusy = false;
    return false;
}

bool TModelGate::actOn(const PPass& pass)
{
    const QString status = pass->Status;
    const auto tooLong = [&] {
        return pass->DeviceType == "T" && late(pass->Starttime, number("TimeOut") + 10LL);
    };
    if (status == "NEW") {
        decide(pass);
    } else if (status == "OPEN") {
        checkOpen(*pass);
    } else if (status == "NOANSWER") {
        if (either<"NOANSWER: removed", "NOANSWER: kept">(ask(pass, 3) != 0)) {
            return remove(pass);
        }
    } else if (status == "CRC-ERROR") {
        if (either<"CRC-ERROR: removed", "CRC-ERROR: kept">(ask(pass, 3) == 1)) {
            return remove(pass);
        }
    } else if (status == "TIMEOUT") {
        if (either<"TIMEOUT: removed", "TIMEOUT: kept">(ask(pass, 1) == 1)) {
            return remove(pass);
        }
    } else if (status == "CLOSE") {
        hit<"CLOSE">();
        return remove(pass);
    } else if (status == "PROGRESSSTART") {
        if (either<"PROGRESSSTART: late", "PROGRESSSTART: in time">(tooLong())) {
            pass->Status = "TIMEOUT";
        }
        ask(pass, 5);
        pass->Status = "PROGRESS";
    } else if (status == "PROGRESS") {
        if (either<"PROGRESS: late", "PROGRESS: in time">(tooLong())) {
            pass->Status = "TIMEOUT";
        }
    } else if (status == "FINISH") {
        if (either<"FINISH: removed", "FINISH: not answered">(ask(pass, 2) == 1)) {
            return remove(pass);
        }
        pass->Status = "NOANSWER";
    }
    return true;
}

void TModelGate::decide(const PPass& pass)
{
    const int answer = ask(pass, 0);
    if (answer == -1) {
        hit<"NEW: no answer">();
        pass->Status = "NOANSWER";
    } else if (answer == 0) {
        hit<"NEW: refused">();
        send(pass, 0);
        pass->Status = "CLOSE";
    } else if (answer == 1) {
        if (!either<"NEW: button", "NEW: allowed">(pass->CardNumber == kButtonCard)) {
            send(pass, 1);
        }
        if (pass->CardNumber == kManualCard) {
            hit<"NEW: manual">();
        }
        if (pass->DeviceType == "I") {
            hit<"NEW: type I">();
            pass->Status = "FINISH";
        } else if (!isPseudo(pass->CardNumber)) {
            pass->Status = "OPEN";
        }
    } else {
        hit<"NEW: asked again">();
    }
}

void TModelGate::checkOpen(TPass& pass)
{
    const bool quick = pass.DeviceType == "I" || pass.DeviceType == "G";
    if (quick && number("CheckET") == 0) {
        hit<"OPEN: no confirmation wanted">();
        pass.Status = "NOANSWER";
    } else if (quick && pass.Finish) {
        hit<"OPEN: confirmed">();
        pass.Status = "NOANSWER";
    } else if (quick &&
               either<"OPEN: not confirmed in time", "OPEN: not confirmed">(late(pass.Starttime, 2))) {
        pass.Status = "NOANSWER";
    }
    if (pass.DeviceType == "T" &&
        either<"OPEN: T times out", "OPEN: T waits">(late(pass.Starttime, number("TimeOut") + 2LL))) {
        pass.Status = "TIMEOUT";
    }
    if (pass.DeviceType == "D" && either<"OPEN: D times out", "OPEN: D waits">(late(pass.Starttime, 3))) {
        pass.Status = "TIMEOUT";
    }
    if (isPseudo(pass.CardNumber)) {
        hit<"OPEN: pseudo card">();
        pass.Status = "FINISH";
    }
}

void TModelGate::enableStack(bool on)
{
    if (!FDesigning) {
        FStackTimer.setEnabled(on);
    }
}

void TModelGate::silenceCheck()
{
    const std::size_t count = FControllers.size();
    for (std::size_t i = 0; i < count; ++i) {
        const TController entry = *FControllers[i];
        if (either<"silent: reported", "silent: heard lately">(late(entry.Pingtime, number("pingdelay")))) {
            report({"STACK", entry.IP, entry.Device, entry.DeviceType, "", "NOPING", "NOPING"});
        }
    }
}

// ---- what the host calls

bool TModelGate::p_hw_checktimeout(double first, double second, int limit) const
{
    return apart(std::llround(first * kMsPerDay), std::llround(second * kMsPerDay), limit);
}

void TModelGate::p_hw_manual(const QString& ip, const QString& device, const QString& status)
{
    if (const PPass pending = passOf(ip); either<"manual: pending", "manual: new">(bool(pending))) {
        pending->Status = status;
    } else {
        p_hw_ProtocolIn(u'$' + ip + u':' + device + "RQ-1-1-1-1-100");
    }
}

void TModelGate::SetTimerInterval(int ms)
{
    either<"interval: running", "interval: stopped">(FStackTimer.enabled());
    FStackTimer.setInterval(ms);
}

void TModelGate::ShowinternalStatus(TModel* sender, const QString& name, const QString& ip,
                                    const QString& device, const QString& type, const QString& card,
                                    const QString& first, const QString& second)
{
    operation([&] { show(sender, {name, ip, device, type, card, first, second}); });
}

void TModelGate::SetConnector(TModelConnector* value)
{
    if (!FDesigning && value != nullptr) {
        hit<"connector: set">();
        value->SetOnGetData([this](TModel*, const QString& text) {
            if (!FDead) {
                p_hw_ProtocolIn(text);
            }
        });
    } else if (!FDesigning &&
               either<"connector: cleared", "connector: none before">(Connector() != nullptr)) {
        Connector()->SetOnGetData({});
    }
    FLink = value;
}

} // namespace tnv5::d24::model
