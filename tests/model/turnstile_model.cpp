#include "model/turnstile_model.h"

#include "model/kit/texts.h"

// Lines of the controllers, and what the host calls.

namespace tnv5::turnstile::model {

namespace {

const QString kRead = "%Считано с порта% ";
const QString kButton = "-2-2-2-2-2";

/// Character 3 of an address.
QString channelOf(const QString& address)
{
    return part(address, 3, 1);
}

} // namespace

constexpr TManners kManners{.lastFirst = true,
                            .clientSends = false,
                            .settersClose = true,
                            .names = false,
                            .logsVisitors = false,
                            .tellsErrors = true};

TModelGate::TModelGate(TModelWorld& world, bool designing)
    : TModelController(world, designing, kManners),
      FDollar(world, [this](const QByteArray& body) { p_hw_ProtocolIn(u'$' + textOf(body)); }),
      FHash(world, [this](const QByteArray& body) { p_hw_ProtocolIn(u'#' + textOf(body)); }),
      FTimer(world, 100, [this] { sweep(); })
{
    FDollar.Start = "$";
    FHash.Start = "#";
    FProperties = {{"RelayOpen", 1},
                   {"RelayClose", 0},
                   {"RelayOpenDoor", 3},
                   {"RelayCloseDoor", 0},
                   {"TimeDelayOpen", 2},
                   {"TimeOut", 5},
                   {"Port", 0},
                   {"DoorIndex", "D"},
                   {"Server", ""},
                   {"RemoutDevice", Alone},
                   {"DeviceList", QStringList()}};
}

void TModelGate::die()
{
    FDollar.attach(nullptr);
    FHash.attach(nullptr);
    FTimer.setEnabled(false);
    TModelController::die();
}

void TModelGate::SetComport(TModelPort* port)
{
    if (port == ComPort()) {
        hit<"the same port again">();
    } else if (!either<"port in the designer", "port attached">(FDesigning)) {
        FDollar.attach(port);
        FHash.attach(port);
    }
    FPort = port;
}

void TModelGate::enableTimer(bool on)
{
    if (!FDesigning) {
        FTimer.setEnabled(on);
    }
}

// ---- reports

void TModelGate::log(const QString& text)
{
    fire(FOnLog, this, text);
    echo("LOG!" + text + "&");
}

void TModelGate::echo(const QString& text)
{
    toMonitor(bytesOf(text));
}

void TModelGate::show(TModel* sender, const QStringList& values)
{
    attempt([&] { fire(FOnStatus, sender, values[0], values[1], values[2], values[3], values[4]); },
            [&](const QString& failure) {
                hit<"status handler raised">();
                error("[07] " + failure);
            });
}

void TModelGate::report(const QStringList& values)
{
    show(this, values);
    echo("STATUS!" + values.join(u'!') + "&");
}

void TModelGate::reportStack(const TRecord& record)
{
    report({"STACK", record.Device, record.CardNumber, record.Status, record.Status});
}

// ---- a client

namespace {

/// What stands before the first such character; the rest begins behind it.
QString takeField(QString& rest, const QString& end)
{
    const qsizetype at = position(end, rest);
    const QString field = part(rest, 1, at - 1);
    rest = part(rest, at + 1, 1000);
    return field;
}

} // namespace

void TModelGate::clientRead(QString buffer)
{
    const auto drop = [&] { buffer = part(buffer, position("&", buffer) + 1, 2000); };
    int rounds = 0;
    while (holds(buffer, "LOG!") || holds(buffer, "ERROR!") || holds(buffer, "STATUS!")) {
        if (++rounds == 2) {
            hit<"read: another round">();
        }
        if (holds(buffer, "LOG!")) {
            if (!either<"read: log", "read: log without end">(holds(buffer, "&"))) {
                return;
            }
            const qsizetype tag = position("LOG!", buffer);
            const qsizetype count = position("&", buffer) - 5;
            if (count < 0) {
                hit<"read: log, the end stands before it">();
            }
            const QString text = part(buffer, tag + 4, count);
            tell(text);
            drop();
        }
        if (holds(buffer, "ERROR!")) {
            if (!either<"read: error", "read: error without end">(holds(buffer, "&"))) {
                return;
            }
            const qsizetype tag = position("ERROR!", buffer);
            const QString text = part(buffer, tag + 6, position("&", buffer) - 6);
            tell(text);
            drop();
        }
        if (holds(buffer, "STATUS!")) {
            if (!either<"read: status", "read: status without end">(holds(buffer, "&"))) {
                return;
            }
            QString rest = part(buffer, position("STATUS!", buffer) + 7, 1000);
            QStringList fields;
            for (int i = 1; i <= 4; ++i) {
                if (!holds(rest, "!")) {
                    hit<"read: status, too few fields">();
                }
                fields += takeField(rest, "!");
            }
            either<"read: status, end of the last field", "read: status, no end of the last field">(
                holds(rest, "&"));
            fields += takeField(rest, "&");
            show(this, fields);
            drop();
        }
    }
    if (rounds == 0) {
        hit<"read: no tag">();
    }
}

// ---- lines

void TModelGate::line(const QString& text)
{
    log(kRead + text);
    if (forwarded(text)) {
        return;
    }
    if (text == "$000900") {
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
    if (FDesigning) {
        hit<"no timer in the designer">();
    } else if (!either<"timer runs already", "timer started">(FTimer.enabled())) {
        enableTimer(true);
        sweep();
    }
}

bool TModelGate::forwarded(const QString& text)
{
    return mode() == Client && toServer(bytesOf(text));
}

void TModelGate::event(const QString& text)
{
    const QString address = text.mid(1, 3);
    const QString command = text.mid(4, 1);
    const QString data = text.mid(5);
    const QStringList known = FProperties.at("DeviceList").toStringList();
    if (!either<"address known", "address unknown">(known.contains(address))) {
        error("[02] Device not found " + address);
    }
    if (command == "R") {
        either<"R: new card", "R: pass under way">(find(address) < 0);
        const QString status = checkStatus(address, data, "R");
        report({"COME", address, data, status, status});
        return;
    }
    if (command != "P" && command != "G" && command != "F") {
        hit<"other command letter">();
        return;
    }
    const PRecord record = StackItem(find(address));
    if (!record) {
        hit<"P, G, F without a pass">();
        return;
    }
    if (command == "P") {
        const QString channel = channelOf(record->Device);
        if (either<"P: door", "P: no door">(channel == door())) {
            record->Status = "FINISH";
        }
        if (either<"P: turnstile", "P: no turnstile">(channel == "A")) {
            if (record->Status == "FINISH" && door() == "A") {
                hit<"P: the door letter is A">();
            }
            record->Status = "PROGRESS";
        }
    } else {
        record->Status = either<"G", "F">(command == "G") ? "FINISH" : "TIMEOUT";
    }
    report({"COME", record->Device, record->CardNumber, record->Status, record->Status});
}

void TModelGate::message(const QString& text)
{
    const QString address = text.mid(1, 3);
    const QString said = text.mid(4);
    const QString upper = said.toUpper();
    const bool isDoor = channelOf(address) == door();
    const PRecord record = StackItem(find(address));

    if (upper == "HARDRESET") {
        hit<"HardReset">();
        learn(address);
    }
    if (upper == "WAIT-CARD") {
        hit<"Wait-Card">();
        learn(address);
    }
    if (upper.left(5) == "RELAY") {
        learn(address);
        if (either<"Relay with a pass", "Relay without a pass">(record != nullptr)) {
            record->StatusHard = "RELAY";
        }
    }
    if (upper == "CRC-ERROR" &&
        either<"CRC-ERROR with a pass", "CRC-ERROR without a pass">(record != nullptr)) {
        record->StatusHard = "CRC-ERROR";
    }
    if (upper == "GATE-OPEN" &&
        either<"Gate-Open with a pass", "Gate-Open without a pass">(record != nullptr)) {
        record->StatusHard = "GATEOPEN";
        if (either<"Gate-Open: door", "Gate-Open: no door">(isDoor)) {
            record->Status = "FINISH";
        }
    }
    if (upper == "BTN-ACTIV" && either<"Btn-Activ: door", "Btn-Activ: no door">(isDoor)) {
        press(address);
    }
    if (upper == "ING-ACTIV") {
        either<"InG-Activ: door", "InG-Activ: no door">(isDoor);
        press(address);
    }
    report({"COME", address, "NOCARDNUMBER", said, said});
}

void TModelGate::press(const QString& address)
{
    const PRecord record = StackItem(find(address));
    if (!record) {
        hit<"button makes a pass">();
        checkStatus(address, kButton, "R");
    } else if (either<"button opens a new pass", "button, pass not new">(record->Status == "NEW")) {
        sendCom(record, 1);
        record->Status = "OPEN";
    }
}

void TModelGate::learn(const QString& address)
{
    QStringList known = FProperties.at("DeviceList").toStringList();
    if (!either<"message: address known", "message: address learnt">(known.contains(address))) {
        FProperties.at("DeviceList") = known << address;
    }
}

// ---- table

int TModelGate::find(const QString& device) const
{
    return firstIndex(FStack, [&](const PRecord& record) { return record->Device == device; });
}

PRecord TModelGate::StackItem(int index) const
{
    return index >= 0 && index < StackItemsCount() ? FStack[std::size_t(index)] : nullptr;
}

PRecord TModelGate::add(const QString& device, const QString& card)
{
    const double now = double(FWorld.clock.timeOfDay()) / kMsPerDay;
    return FStack.emplace_back(std::make_shared<TRecord>(TRecord{card, device, "NEW", {}, now, {}, 0}));
}

QString TModelGate::checkStatus(const QString& device, const QString& card, const QString& status)
{
    const PRecord known = StackItem(find(device));
    const QString result = known ? known->Status : "NEW";
    if (!known) {
        const PRecord record = add(device, card);
        fire(FOnPicture, this, device, record->Img);
    }
    report({"CHECK", device, card, status, result});
    return result;
}

// ---- what the host calls

int TModelGate::p_hw_FindDevice(const QString& device) const
{
    const int index = find(device);
    either<"find: no pass", "find: a pass">(index < 0);
    return index;
}

int TModelGate::p_hw_FindDeviceByRelay(const QString& device, const QString& relay)
{
    const int index = firstIndex(FStack, [&](const PRecord& record) {
        return record->Device == device && record->CardNumber == relay;
    });
    if (index >= 0) {
        hit<"by relay: found">();
        return index;
    }
    either<"by relay: second pass of an address", "by relay: first pass of an address">(find(device) >= 0);
    add(device, relay);
    return StackItemsCount() - 1;
}

bool TModelGate::p_hw_checktimeout(double first, double second, int limit) const
{
    return either<"time-out", "no time-out">(daysApart(first, second, limit));
}

void TModelGate::ShowinternalStatus(TModel* sender, const QString& name, const QString& device,
                                    const QString& card, const QString& first, const QString& second)
{
    operation([&] { show(sender, {name, device, card, first, second}); });
}

bool TModelGate::lineOpen()
{
    return ComPort() != nullptr && ComPort()->Connected();
}

} // namespace tnv5::turnstile::model
