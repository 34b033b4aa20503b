#include "model/kit/texts.h"
#include "model/turnstile_model.h"

#include <QScopedValueRollback>
#include <cmath>

// The sweep over the table, the host's check, and the commands.

namespace tnv5::turnstile::model {

namespace {

const QString kSent = "%Отправлено на порт% ";
const QString kNotOpen = "[04] Порт не открыт или не назначен";

bool isPseudo(const QString& card)
{
    return card == "-1-1-1-1-1" || card == "-2-2-2-2-2";
}

int digit(const QString& text, qsizetype at)
{
    const QString character = part(text, at, 1);
    if (character.isEmpty() || character < "0" || character > "9") {
        throw TFailure{"'" + character + "' is not a valid integer value"};
    }
    return character[0].unicode() - u'0';
}

int code(const QString& text, qsizetype at)
{
    const QByteArray byte = bytesOf(part(text, at, 1));
    return byte.isEmpty() ? 0 : uchar(byte[0]);
}

QString checksum(const QString& command)
{
    int value = code(command, 1);
    const int tens = digit(command, 2);
    value ^= tens * 10 + digit(command, 3);
    value ^= code(command, 4);
    value ^= digit(command, 5);
    value ^= digit(command, 6);
    value ^= digit(command, 7);
    return QStringLiteral("%1").arg(value, 2, 16, QLatin1Char('0')).toUpper();
}

} // namespace

void TModelGate::sweep()
{
    if (FBusy) {
        hit<"pass inside a pass">();
        if (FStack.empty()) {
            enableTimer(false);
        }
        return;
    }
    const std::size_t count = FStack.size();
    {
        const QScopedValueRollback busy(FBusy, true);
        for (std::size_t index = 0; index < count; ++index) {
            if (visit(index)) {
                return;
            }
        }
    }
    either<"pass: records came meanwhile", "pass: no record came">(FStack.size() > count);
    if (either<"pass: table empty", "pass: table not empty">(FStack.empty())) {
        enableTimer(false);
    }
}

/// True when the record was removed, which ends the sweep.
bool TModelGate::visit(std::size_t index)
{
    const PRecord record = FStack[index];
    if (record->Status == "NEW") {
        decide(record);
    }
    if (record->Status == "OPEN") {
        watchOpen(record);
    }
    if (record->Status == "NOANSWER" && offer(record, 3, index)) {
        return true;
    }
    if (record->Status == "CRC-ERROR" && offer(record, 3, index)) {
        hit<"CRC-ERROR retired">();
        return true;
    }
    if (record->Status == "TIMEOUT" && offer(record, 1, index)) {
        return true;
    }
    if (record->Status == "CLOSE") {
        hit<"refused pass removed">();
        reportStack(*record);
        remove(index);
        return true;
    }
    if (record->Status == "PROGRESS") {
        reportStack(*record);
        if (part(record->Device, 3, 1) == "A" &&
            either<"progress times out", "progress waits">(late(*record, number("TimeOut") + 10LL))) {
            record->Status = "TIMEOUT";
        }
    }
    return record->Status == "FINISH" && offer(record, 2, index);
}

void TModelGate::decide(const PRecord& record)
{
    reportStack(*record);
    const int answer = ask(record, 0);
    if (answer == 0) {
        either<"pseudo-card refused", "card refused">(isPseudo(record->CardNumber));
        sendCom(record, 0);
        record->Status = "CLOSE";
    } else if (answer == 1) {
        sendCom(record, 1);
        if (!either<"pseudo-card opened", "card opened">(isPseudo(record->CardNumber))) {
            record->Status = "OPEN";
        }
    } else {
        either<"pseudo-card undecided", "card undecided">(isPseudo(record->CardNumber));
    }
}

void TModelGate::watchOpen(const PRecord& record)
{
    reportStack(*record);
    const QString channel = part(record->Device, 3, 1);
    if (channel == "A" &&
        either<"open turnstile times out", "open turnstile waits">(late(*record, number("TimeOut") + 2LL))) {
        record->Status = "TIMEOUT";
    }
    if (channel == door() && either<"open door times out", "open door waits">(late(*record, 3))) {
        record->Status = "TIMEOUT";
    }
    if (record->StatusHard.isEmpty() && record->Status == "OPEN" &&
        either<"no answer", "answer awaited">(late(*record, 1))) {
        record->Status = "NOANSWER";
    }
}

/// Reports the record and asks the host whether it may go.
bool TModelGate::offer(const PRecord& record, int how, std::size_t index)
{
    reportStack(*record);
    const bool retired = ask(record, how) == 1;
    way<"mode 1: kept", "mode 1: retired", "mode 2: kept", "mode 2: retired", "mode 3: kept",
        "mode 3: retired">(2 * (how - 1) + int(retired));
    if (retired) {
        remove(index);
    }
    return retired;
}

void TModelGate::remove(std::size_t index)
{
    FStack.erase(FStack.begin() + std::ptrdiff_t(index));
}

bool TModelGate::late(const TRecord& record, qint64 limit) const
{
    constexpr double kMostOfADay = 80'000 / 86'400.0;
    const double now = double(FWorld.clock.timeOfDay()) / kMsPerDay;
    if (std::abs(now - record.Starttime) > kMostOfADay) {
        hit<"a pass across midnight">();
    }
    return daysApart(now, record.Starttime, limit);
}

int TModelGate::ask(const PRecord& record, int how)
{
    if (!record || how < 0 || how > 3) {
        either<"check without a pass", "check of another mode">(!record);
        return -1;
    }
    int result = how == 0 ? -1 : 1;
    if (FOnQuestion) {
        bool answered = false;
        attempt(
            [&] {
                const TQuestion handler = FOnQuestion;
                QVariant answer = -1;
                handler(this, record->Device, record->CardNumber, record->Status, record->Img, how, answer);
                if (FDead) {
                    return; // nobody reads the answer any more
                }
                answered = true;
                result = integerOf(answer); // an answer that is no number counts as a raising handler
            },
            [&](const QString& failure) {
                either<"unreadable answer", "check handler raised">(answered);
                error("[05] " + failure);
            });
    } else {
        either<"no check handler: undecided", "no check handler: retired">(how == 0);
    }
    if (how == 0 && isPseudo(record->CardNumber)) {
        record->Status = "OPEN";
    }
    return result;
}

// ---- commands

void TModelGate::sendCom(const PRecord& record, int yesnot)
{
    if (!record || (yesnot != 0 && yesnot != 1)) {
        either<"command for no pass", "command neither open nor refuse">(!record);
        return;
    }
    const auto relay = [&](const char* property) { return QString::number(number(property)); };
    const QString time = QString::number(number("TimeDelayOpen") + 1LL);
    const QString start = "$" + record->Device;
    if (yesnot == 0) {
        hit<"refuse command">();
        send(start + relay("RelayClose") + "00", "[04] ");
    } else if (either<"open command, turnstile", "open command, other">(part(record->Device, 3, 1) == "A")) {
        send(start + relay("RelayOpen") + "0" + time, "[04] ");
    } else {
        send(start + relay("RelayOpenDoor") + "2" + time, "[04] ");
    }
}

void TModelGate::p_hw_relay(const QString& device, const QString& relay, int yesnot)
{
    if (yesnot != 0 && yesnot != 1) {
        hit<"relay neither on nor off">();
        return;
    }
    const bool on =
        yesnot == 1 && !either<"relay on, turnstile", "relay on, other">(part(device, 3, 1) == "A");
    if (yesnot == 0) {
        hit<"relay off">();
    }
    operation([&] { send("$" + device + relay + (on ? "20" : "00"), "[04] "); });
}

void TModelGate::send(const QString& command, const QString& errorCode)
{
    const auto echoedError = [&](const QString& text) {
        error(text);
        echo("ERROR!" + text + "&");
    };
    if (ComPort() == nullptr || !ComPort()->Connected()) {
        either<"port not assigned", "port not open">(ComPort() == nullptr);
        echoedError(kNotOpen);
        return;
    }
    attempt(
        [&] {
            ComPort()->Write(bytesOf(command + checksum(command) + "\r"));
            hit<"written">();
        },
        [&](const QString& failure) {
            either<"poll not written", "command not written">(errorCode == "[03] ");
            echoedError(errorCode + failure);
        });
    log(kSent + command);
}

bool TModelGate::CheckCRC(const QString& message) const
{
    const QString last = message.right(2);
    return checksum(last) == last;
}

} // namespace tnv5::turnstile::model
