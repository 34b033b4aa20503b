#include "model/switch_model.h"

// Lines, tables and what leaves the component.

namespace tnv5::switching::model {

namespace {

constexpr std::size_t kMostRecords = 16'384;

} // namespace

constexpr TManners kManners{.lastFirst = false,
                            .clientSends = true,
                            .settersClose = false,
                            .names = true,
                            .logsVisitors = false,
                            .tellsErrors = false};

TModelSwitch::TModelSwitch(TModelWorld& world, bool designing, const TFormat& format)
    : TModelController(world, designing, kManners),
      FFormat(format),
      FStackTimer(world, 3000, [this] { p_hw_CallStackArray(); }),
      FPingTimer(world, 2000, [this] { DevicePingTime(this); }),
      FCheckTimer(world, 2000, [this] { p_hw_CheckStatusAll(); })
{
    FPingTimer.setEnabled(!designing);
    FCheckTimer.setEnabled(!designing);
    FProperties = {{"pingdelay", 15}, {"TimeDelayOpen", 2}, {"TimeOut", 5},
                   {"Server", ""},    {"Port", 0},          {"RemoutDevice", Alone}};
}

void TModelSwitch::die()
{
    if (Connector() != nullptr) {
        Connector()->SetOnGetData({});
    }
    FStackTimer.setEnabled(false);
    FPingTimer.setEnabled(false);
    FCheckTimer.setEnabled(false);
    TModelController::die();
}

void TModelSwitch::SetConnector(TModelConnector* value)
{
    TModelConnector* const before = Connector();
    FLink = value;
    if (FDesigning) {
        hit<"connector: in the designer">();
    } else if (value != nullptr) {
        either<"connector: another one", "connector: set">(before != nullptr && before != value);
        value->SetOnGetData([this](TModel*, const QString& text) {
            if (!FDead) {
                p_hw_ProtocolIn(text);
            }
        });
    } else if (either<"connector: cleared", "connector: none before">(before != nullptr)) {
        before->SetOnGetData({});
    }
}

// ---- to the outside

bool TModelSwitch::lineOpen()
{
    bool open = false;
    if (Connector() != nullptr) {
        callOut([&] { open = Connector()->GetConnected(); });
    }
    return either<"line: open", "line: not open">(open);
}

void TModelSwitch::send(const QString& command)
{
    if (either<"send", "send: no connector">(Connector() != nullptr)) {
        callOut([&] { Connector()->SendCommand(command); });
    }
}

void TModelSwitch::changeOver(const QString& ip, const QString& device, const QString& relay)
{
    const QString pair =
        either<"relay: pair", "relay: board as it stands">(device.size() == 4) ? part(device, 1, 3) : device;
    const QString start = "RL" + ip + ':' + pair;
    QString command;
    if (relay == "1") {
        hit<"relay 1">();
        command = start + "A1";
    } else if (relay == "2") {
        hit<"relay 2">();
        command = start + "A2";
    } else if (relay == "3") {
        hit<"relay 3">();
        command = start + "B1";
    } else if (relay == "4") {
        hit<"relay 4">();
        command = start + "B2";
    } else if (relay == "5") {
        hit<"relay 5">();
        command = start + "B3";
    } else {
        hit<"relay: none of the five">();
    }
    send(command);
    fire(FOnLog, this, "%Отправлено на порт% " + command);
}

void TModelSwitch::poll()
{
    if (!lineOpen()) {
        return;
    }
    const std::size_t count = FBoards.size();
    for (std::size_t i = 0; i < count; ++i) {
        hit<"poll: a board">();
        send("HW" + FBoards[i]->IP + ':' + FBoards[i]->Device);
    }
    if (FBoards.size() > count) {
        hit<"poll: a board came meanwhile">();
    }
}

void TModelSwitch::show(TModel* sender, const QString& name, const QString& device, const QString& relay,
                        const QString& first, const QString& second)
{
    attempt([&] { fire(FOnStatus, sender, name, device, relay, first, second, QString()); },
            [&](const QString& failure) {
                hit<"status handler raised">();
                error(failure);
            });
}

void TModelSwitch::report(const PJob& job)
{
    show(this, "STACK", job->Device, job->Relay, job->Status, job->StatusDevice);
    monitor("STATUS!STACK!" + job->Device + '!' + job->Relay + '!' + job->Status + '!' + job->StatusDevice +
            '&');
}

// ---- a client

// In one round each kind once; a text reaches from its tag to the "&" behind it.
void TModelSwitch::clientRead(QString buffer)
{
    while (holds(buffer, "LOG!") || holds(buffer, "ERROR!") || holds(buffer, "STATUS!")) {
        for (const QString& tag : {QString("LOG!"), QString("ERROR!"), QString("STATUS!")}) {
            const qsizetype at = position(tag, buffer);
            if (at == 0) {
                continue;
            }
            if (at > 1) {
                hit<"read: dropped before a tag">();
            }
            const QString behind = rest(buffer, at + tag.size());
            const qsizetype end = position("&", behind);
            if (!either<"read: a text", "read: a text without end">(end > 0)) {
                return;
            }
            buffer = rest(behind, end + 1);
            if (either<"read: a status dropped", "read: log or error">(tag == "STATUS!")) {
                continue;
            }
            tell(part(behind, 1, end - 1));
        }
    }
}

// ---- lines

QString TModelSwitch::ParseMessage(const QString& text, const QString& key)
{
    const qsizetype colon = position(":", text);
    const QString after = rest(text, colon + 1);
    const QString body = part(after, 5, after.size() - 6);
    const QString letter = part(after, 4, 1);
    const qsizetype relay = position("RELAY", text);
    const auto behindRelay = [&](int place) { return relay == 0 ? QString() : part(text, relay + place, 1); };
    if (key == "IP") {
        return part(text, 2, colon - 2);
    }
    if (key == "DEVICE") {
        return part(after, 1, 4);
    }
    if (key == "DEVICETYPE") {
        return letter == "G" || letter == "I" ? letter : "T";
    }
    if (key == "RELA") {
        return part(after, 7, 1);
    }
    if (key == "RELAONOFF") {
        return part(after, 8, 1);
    }
    if (key == "RELATIME") {
        return part(after, 9, 100);
    }
    if (key == "RELAY") {
        return behindRelay(5);
    }
    if (key == "RELAYONOFF") {
        return behindRelay(6);
    }
    if (key == "STATUS") {
        return body;
    }
    if (key == "STATUSSHORT") {
        return part(body, 1, 2);
    }
    return key == "CARDNUMBER" ? rest(body, 3) : QString();
}

void TModelSwitch::line(const QString& text)
{
    fire(FOnLog, this, "%Считано с порта*% " + text);
    if (mode() == Server) {
        hit<"line: server repeats it">();
        monitor("LOG!%Считано с порта% " + text + '&');
    }
    if (mode() == Client) {
        hit<"line: client forwards it">();
        monitor(text);
        return;
    }
    if (text.startsWith('$')) {
        ownReport(text);
    } else if (text.startsWith('#')) {
        connectorLine(text);
    } else {
        either<"line: empty", "line: other start">(text.isEmpty());
    }
    if (FDesigning) {
        hit<"line: no timer">();
    } else if (either<"line: timer started", "line: timer runs already">(!FStackTimer.enabled())) {
        FStackTimer.setEnabled(true);
        sweep();
    }
}

void TModelSwitch::ownReport(const QString& text)
{
    const QString ip = ParseMessage(text, "IP");
    const QString device = ParseMessage(text, "DEVICE");
    const QString code = ParseMessage(text, "STATUSSHORT");
    if (either<"code 900", "code not 900">(ParseMessage(text, "STATUS").startsWith("900"))) {
        poll();
    } else if (code == "SS") {
        const QString relay = ParseMessage(text, "RELA");
        const QString state = ParseMessage(text, "RELAONOFF");
        const auto said = FFormat.read(ParseMessage(text, "RELATIME"));
        if (state == "F") {
            const PJob job = StackItem(findOrCreate(ip, device, relay));
            if (either<"SS: off", "SS: off, no room">(bool(job))) {
                job->Status = "OFF";
            }
        } else if (state == "N") {
            either<"SS: on until", "SS: on, no time">(said.has_value());
            want(ip, device, relay, "ON", said ? double(*said) / kMsPerDay : now());
        } else {
            hit<"SS: neither">();
        }
    } else {
        const bool known = code == "ET" || code == "RQ" || code == "PR" || code == "GR" || code == "FK";
        either<"code known and ignored", "code unknown">(known);
    }
}

void TModelSwitch::connectorLine(const QString& text)
{
    const QString ip = ParseMessage(text, "IP");
    const QString device = ParseMessage(text, "DEVICE");
    const QString body = ParseMessage(text, "STATUS");
    const QString word = body.toUpper();
    if (holds(body, "RELAY")) {
        const PJob job = StackItem(findOrCreate(ip, device, ParseMessage(text, "RELAY")));
        const bool isOn = ParseMessage(text, "RELAYONOFF") == "Y";
        if (!job) {
            hit<"RELAY: no room">();
        } else {
            job->StatusDevice = either<"RELAY: on", "RELAY: off">(isOn) ? "ON" : "OFF";
        }
    } else if (word == "PING") {
        ping(ip, device, ParseMessage(text, "DEVICETYPE"));
    } else {
        const bool known = word == "DC" || word == "CC" || word == "BTPH";
        either<"word known and ignored", "word unknown">(known);
    }
}

// ---- tables

PJob TModelSwitch::StackItem(int index) const
{
    return index >= 0 && index < StackItemsCount() ? FJobs[std::size_t(index)] : nullptr;
}

int TModelSwitch::find(const QString& device, const QString& relay) const
{
    return firstIndex(FJobs, [&](const PJob& job) { return job->Device == device && job->Relay == relay; });
}

int TModelSwitch::findOrCreate(const QString& ip, const QString& device, const QString& relay)
{
    const int index = find(device, relay);
    if (index >= 0) {
        either<"job found", "job found for another link">(FJobs[std::size_t(index)]->IP == ip);
        return index;
    }
    if (FDesigning) {
        hit<"no jobs in the designer">();
        return -1;
    }
    if (FJobs.size() == kMostRecords) {
        hit<"job table full">();
        error("[13] The job table is full");
        return -1;
    }
    hit<"job made">();
    FJobs.push_back(std::make_shared<TJob>(TJob{ip, device, relay, "NONE", "NONE", now(), now()}));
    return StackItemsCount() - 1;
}

QString TModelSwitch::want(const QString& ip, const QString& device, const QString& relay,
                           const QString& status, double finish)
{
    const PJob job = StackItem(findOrCreate(ip, device, relay));
    if (!job) {
        hit<"wanted: no room">();
        return {};
    }
    job->Status = status;
    job->Finishtime = finish;
    show(this, "CHECK OLD", job->Device, job->Relay, job->Status, job->StatusDevice);
    monitor("STATUS!CHECK!" + job->Device + '!' + job->Relay + '!' + job->Status + '!' + job->StatusDevice +
            '&');
    if (either<"jobs logged", "jobs not logged">(bool(FOnLog))) {
        const int count = StackItemsCount();
        for (int i = 0; i < count; ++i) {
            fire(FOnLog, this,
                 QString::number(i) + ' ' + StackItem(i)->Device + ' ' + StackItem(i)->StatusDevice);
        }
    }
    return job->Status;
}

void TModelSwitch::fill(std::size_t size)
{
    const QString word = "filled";
    while (FJobs.size() < size) {
        FJobs.push_back(std::make_shared<TJob>(TJob{{}, word, {}, word, word, now(), now()}));
    }
    while (FBoards.size() < size) {
        FBoards.push_back(std::make_shared<TBoard>(TBoard{{}, word, "", now()}));
    }
}

int TModelSwitch::DevicePingFind(const QString& ip, const QString& device) const
{
    int last = -1;
    for (std::size_t i = 0; i < FBoards.size(); ++i) {
        if (FBoards[i]->IP == ip && FBoards[i]->Device == device) {
            if (last >= 0) {
                hit<"board: twice in the table">();
            }
            last = int(i);
        }
    }
    return last;
}

void TModelSwitch::ping(const QString& ip, const QString& device, const QString& type)
{
    const int index = DevicePingFind(ip, device);
    if (index >= 0) {
        hit<"PING: known">();
        FBoards[std::size_t(index)]->Pingtime = today();
    } else if (either<"PING: new", "PING: table full">(FBoards.size() < kMostRecords)) {
        FBoards.push_back(std::make_shared<TBoard>(TBoard{ip, device, type, now()}));
    }
    show(this, "STACK", device, "", "PING", "PING");
    monitor("STATUS!STACK!" + ip + '!' + device + '!' + type + "!!PING!PING&");
}

void TModelSwitch::silenceCheck()
{
    const std::size_t count = FBoards.size();
    for (std::size_t i = 0; i < count; ++i) {
        const std::shared_ptr<TBoard> board = FBoards[i];
        if (either<"board silent", "board heard">(
                daysApart(board->Pingtime, today(), FProperties.at("pingdelay").toInt()))) {
            show(this, "STACK", board->Device, "", "NOPING", "NOPING");
            monitor("STATUS!STACK!" + board->IP + '!' + board->Device + '!' + board->DeviceType +
                    "!!NOPING!NOPING&");
        }
    }
    if (FBoards.size() > count) {
        hit<"silence: a board came meanwhile">();
    }
}

} // namespace tnv5::switching::model
