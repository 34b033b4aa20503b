#include "model/turnstile_core.h"

#include "tnv5/platform/errors.h"

namespace tnv5::turnstile::model {

namespace {

const QString kRead = QStringLiteral("%Считано с порта% ");
const QString kButton = QStringLiteral("-2-2-2-2-2");

} // namespace

QString raisedText()
{
    try {
        throw;
    } catch (const platform::Exception& error) {
        return error.message();
    } catch (const TRaised& error) {
        return error.text;
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    } catch (...) {
        return QStringLiteral("Unknown exception");
    }
}

// ---- reports

void TModelGate::TCore::log(const QString& text)
{
    if (const int assigned = handler(TEvent::Log)) {
        host([&] { listener().log(assigned, text); });
    }
}

void TModelGate::TCore::error(const QString& text)
{
    if (const int assigned = handler(TEvent::Error)) {
        host([&] { listener().error(assigned, text); });
    }
}

void TModelGate::TCore::echo(const QString& text)
{
    host([&] { listener().echo(text); });
}

void TModelGate::TCore::echoedError(const QString& text)
{
    error(text);
    echo(QStringLiteral("ERROR!") + text + QStringLiteral("&"));
}

void TModelGate::TCore::showStatus(TSender sender, const QStringList& values)
{
    const int assigned = handler(TEvent::Status);
    if (assigned == 0) {
        return;
    }
    QString message;
    try {
        host([&] { listener().status(assigned, sender, values); });
        return;
    } catch (const TGone&) {
        throw;
    } catch (...) {
        message = raisedText();
    }
    hit<"status handler raised">();
    error(QStringLiteral("[07] ") + message);
}

void TModelGate::TCore::report(const QString& name, const QString& device, const QString& card,
                               const QString& first, const QString& second)
{
    const QStringList values{name, device, card, first, second};
    showStatus(TSender::Self, values);
    echo(QStringLiteral("STATUS!") + values.join(u'!') + QStringLiteral("&"));
}

void TModelGate::TCore::reportStack(const TRecord& record)
{
    report(QStringLiteral("STACK"), record.device, record.card, record.status, record.status);
}

// ---- lines

void TModelGate::TCore::line(const QString& text)
{
    log(kRead + text);
    echo(QStringLiteral("LOG!") + kRead + text + QStringLiteral("&"));
    if (forwarded(text)) {
        return;
    }
    if (text == u"$000900") {
        hit<"line: poll">();
        poll();
        return;
    }
    if (text.startsWith(u'$')) {
        event(text);
    } else if (text.startsWith(u'#')) {
        message(text);
    } else {
        either<"line: empty", "line: other start">(text.isEmpty());
    }
    if (designing) {
        hit<"no timer in the designer">();
    } else if (either<"timer runs already", "timer started">(timerEnabled)) {
        return;
    } else {
        setTimerEnabled(true);
        pass();
    }
}

bool TModelGate::TCore::forwarded(const QString& text)
{
    if (mode != TMode::Client) {
        return false;
    }
    bool ready = false;
    host([&] { ready = listener().connected(); });
    if (!either<"client connected", "client not connected">(ready)) {
        return false;
    }
    QString message;
    try {
        host([&] { listener().forward(text); });
        return true;
    } catch (const TGone&) {
        throw;
    } catch (...) {
        message = raisedText();
    }
    hit<"forwarding failed">();
    error(QStringLiteral("[01] ") + message);
    return true;
}

void TModelGate::TCore::event(const QString& text)
{
    const QString address = text.mid(1, 3);
    const QString command = text.mid(4, 1);
    const QString data = text.mid(5);
    if (!either<"address known", "address unknown">(devices.contains(address))) {
        error(QStringLiteral("[02] Device not found ") + address);
    }
    if (command == u"R") {
        either<"R: new card", "R: pass under way">(find(address) < 0);
        const QString status = checkStatus(address, data, QStringLiteral("R"));
        report(QStringLiteral("COME"), address, data, status, status);
        return;
    }
    if (command != u"P" && command != u"G" && command != u"F") {
        hit<"other command letter">();
        return;
    }
    const PRecord record = at(find(address));
    if (!record) {
        hit<"P, G, F without a pass">();
        return;
    }
    if (command == u"P") {
        const QString channel = channelOf(record->device);
        if (either<"P: door", "P: no door">(channel == doorIndex)) {
            record->status = QStringLiteral("FINISH");
        }
        if (either<"P: turnstile", "P: no turnstile">(channel == u"A")) {
            if (record->status == u"FINISH" && doorIndex == u"A") {
                hit<"P: the door letter is A">();
            }
            record->status = QStringLiteral("PROGRESS");
        }
    } else {
        record->status =
            either<"G", "F">(command == u"G") ? QStringLiteral("FINISH") : QStringLiteral("TIMEOUT");
    }
    report(QStringLiteral("COME"), record->device, record->card, record->status, record->status);
}

void TModelGate::TCore::message(const QString& text)
{
    const QString address = text.mid(1, 3);
    const QString said = text.mid(4);
    const QString upper = said.toUpper();
    const bool door = channelOf(address) == doorIndex;
    const PRecord record = at(find(address));

    if (upper == u"HARDRESET") {
        hit<"HardReset">();
        learn(address);
    }
    if (upper == u"WAIT-CARD") {
        hit<"Wait-Card">();
        learn(address);
    }
    if (upper.left(5) == u"RELAY") {
        learn(address);
        if (either<"Relay with a pass", "Relay without a pass">(record != nullptr)) {
            record->statusHard = QStringLiteral("RELAY");
        }
    }
    if (upper == u"CRC-ERROR" &&
        either<"CRC-ERROR with a pass", "CRC-ERROR without a pass">(record != nullptr)) {
        record->statusHard = QStringLiteral("CRC-ERROR");
    }
    if (upper == u"GATE-OPEN" &&
        either<"Gate-Open with a pass", "Gate-Open without a pass">(record != nullptr)) {
        record->statusHard = QStringLiteral("GATEOPEN");
        if (either<"Gate-Open: door", "Gate-Open: no door">(door)) {
            record->status = QStringLiteral("FINISH");
        }
    }
    if (upper == u"BTN-ACTIV" && either<"Btn-Activ: door", "Btn-Activ: no door">(door)) {
        press(address);
    }
    if (upper == u"ING-ACTIV") {
        either<"InG-Activ: door", "InG-Activ: no door">(door);
        press(address);
    }
    report(QStringLiteral("COME"), address, QStringLiteral("NOCARDNUMBER"), said, said);
}

void TModelGate::TCore::press(const QString& address)
{
    const PRecord record = at(find(address));
    if (!record) {
        hit<"button makes a pass">();
        checkStatus(address, kButton, QStringLiteral("R"));
    } else if (either<"button opens a new pass", "button, pass not new">(record->status == u"NEW")) {
        sendCom(record, 1);
        record->status = QStringLiteral("OPEN");
    }
}

void TModelGate::TCore::learn(const QString& address)
{
    if (!either<"message: address known", "message: address learnt">(devices.contains(address))) {
        devices.append(address);
    }
}

// ---- table

int TModelGate::TCore::find(const QString& device) const
{
    for (std::size_t index = 0; index < stack.size(); ++index) {
        if (stack[index]->device == device) {
            return static_cast<int>(index);
        }
    }
    return -1;
}

int TModelGate::TCore::findByRelay(const QString& device, const QString& relay)
{
    for (std::size_t index = 0; index < stack.size(); ++index) {
        if (stack[index]->device == device && stack[index]->card == relay) {
            hit<"by relay: found">();
            return static_cast<int>(index);
        }
    }
    either<"by relay: second pass of an address", "by relay: first pass of an address">(find(device) >= 0);
    add(device, relay);
    return static_cast<int>(stack.size()) - 1;
}

TModelGate::TCore::PRecord TModelGate::TCore::at(int index) const
{
    return index >= 0 && index < static_cast<int>(stack.size()) ? stack[static_cast<std::size_t>(index)]
                                                                : nullptr;
}

TModelGate::TCore::PRecord TModelGate::TCore::add(const QString& device, const QString& card)
{
    const auto record = std::make_shared<TRecord>();
    record->card = card;
    record->device = device;
    record->status = QStringLiteral("NEW");
    record->startMs = owner.FNow % qint64{86'400'000};
    stack.push_back(record);
    return record;
}

QString TModelGate::TCore::checkStatus(const QString& device, const QString& card, const QString& status)
{
    QString result;
    if (const PRecord known = at(find(device))) {
        result = known->status;
    } else {
        const PRecord record = add(device, card);
        result = record->status;
        if (const int assigned = handler(TEvent::Image)) {
            host([&] {
                listener().image(assigned, device, record->image, [&](int width) { record->image = width; });
            });
        }
    }
    report(QStringLiteral("CHECK"), device, card, status, result);
    return result;
}

} // namespace tnv5::turnstile::model
