#include "model/d24_model.h"

#include "model/kit/texts.h"

#include <cmath>

// Lines, tables and reports.

namespace tnv5::d24::model {

namespace {

const QString kNoPort = "Порт не открыт или не назначен";

} // namespace

constexpr TManners kManners{.lastFirst = false,
                            .clientSends = true,
                            .settersClose = true,
                            .names = true,
                            .logsVisitors = true,
                            .tellsErrors = true};

TModelGate::TModelGate(TModelWorld& world, bool designing)
    : TModelController(world, designing, kManners),
      FStackTimer(world, 10, [this] { p_hw_CallStackArray(); }),
      FPingTimer(world, 2000, [this] { DevicePingTime(this); })
{
    FPingTimer.setEnabled(!designing);
    FProperties = {{"CheckCross", false}, {"CheckET", false}, {"pingdelay", 15},      {"TimeOut", 5},
                   {"Port", 0},           {"Server", ""},     {"RemoutDevice", Alone}};
}

void TModelGate::die()
{
    if (Connector() != nullptr) {
        Connector()->SetOnGetData({});
    }
    FStackTimer.setEnabled(false);
    FPingTimer.setEnabled(false);
    TModelController::die();
}

// ---- to the outside

void TModelGate::show(TModel* sender, const QStringList& f)
{
    attempt([&] { fire(FOnStatus, sender, f[0], f[1], f[2], f[3], f[4], f[5], f[6]); },
            [&](const QString& failure) {
                hit<"status handler raised">();
                error("[07] " + failure);
            });
}

void TModelGate::report(const QStringList& fields)
{
    show(this, fields);
    monitor("STATUS!" + fields.join(u'!') + u'&');
}

void TModelGate::reportPass(const QString& name, const TPass& pass)
{
    report({name, pass.IP, pass.Device, pass.DeviceType, pass.CardNumber, pass.Status, pass.Status});
}

QString TModelGate::command(const QString& text)
{
    if (Connector() == nullptr) { // taken away by a handler since it was tested
        hit<"send: connector gone">();
        throw TFailure{kNoPort};
    }
    QString check;
    callOut([&] { check = Connector()->SendCommand(text); });
    return check;
}

bool TModelGate::lineOpen()
{
    bool open = false;
    if (!either<"send: no connector", "send: connector set">(Connector() == nullptr)) {
        callOut([&] { open = Connector()->GetConnected(); });
        if (!open) {
            hit<"send: not connected">();
        }
    }
    return open;
}

bool TModelGate::portReady()
{
    const bool ready = lineOpen();
    if (!ready) {
        const QString text = "[04] " + kNoPort;
        error(text);
        monitor("ERROR!" + text + u'&');
    }
    return ready;
}

// ---- a client

// Each part is one step of the reading; false ends it.
void TModelGate::clientRead(QString buffer)
{
    const auto first = [&](const char* what) { return position(what, buffer); };
    const auto unfinished = [&] {
        if (first("&") > 0) {
            return false;
        }
        hit<"read: a tag without end">();
        return true;
    };
    while (first("LOG!") > 0 || first("ERROR!") > 0 || first("STATUS!") > 0) {
        if (const qsizetype p = first("LOG!"); p > 0) {
            if (unfinished()) {
                return;
            }
            const qsizetype q = first("&");
            either<"read: log before its end", "read: log behind an end">(p < q);
            log(part(buffer, p + 4, q - 5));
            buffer = part(buffer, q + 1, 2000);
        }
        if (const qsizetype p = first("ERROR!"); p > 0) {
            if (unfinished()) {
                return;
            }
            const qsizetype q = first("&");
            either<"read: error before its end", "read: error behind an end">(p < q);
            log(part(buffer, p + 6, q - 6));
            buffer = rest(buffer, q + 1);
        }
        if (const qsizetype p = first("STATUS!"); p > 0) {
            if (unfinished()) {
                return;
            }
            QString left = part(buffer, p + 7, 1000);
            QStringList fields;
            while (fields.size() < 6) {
                const qsizetype at = position("!", left);
                if (either<"read: a field", "read: a field is missing">(at > 0)) {
                    fields += part(left, 1, at - 1);
                    left = rest(left, at + 1);
                } else {
                    fields += QString();
                }
            }
            fields += part(left, 1, position("&", left) - 1);
            show(this, fields);
            buffer = rest(buffer, first("&") + 1);
        }
    }
}

// ---- lines

QString TModelGate::ParseMessage(const QString& name, const QString& text)
{
    const qsizetype colon = text.indexOf(u':') + 1;
    const QString rest = part(text, colon + 1, text.size());
    const QString status = part(rest, 5, rest.size() - 6);
    const QString letter = part(rest, 4, 1);
    const std::map<QString, QString> fields{{"IP", part(text, 2, colon - 2)},
                                            {"DEVICE", part(rest, 1, 4)},
                                            {"DEVICETYPE", letter == "G" || letter == "I" ? letter : "T"},
                                            {"STATUS", status},
                                            {"STATUSSHORT", part(status, 1, 2)},
                                            {"CARDNUMBER", part(status, 3, status.size())}};
    const auto found = fields.find(name);
    return found == fields.end() ? QString() : found->second;
}

void TModelGate::line(const QString& text)
{
    log("%Считано с порта*% " + text);
    if (mode() == Server) {
        hit<"line: server repeats it">();
        monitor("LOG!%Считано с порта% " + text + u'&');
    }
    if (mode() == Client) {
        hit<"line: client forwards it">();
        monitor(text);
        return;
    }
    if (text.startsWith(u'$')) {
        eventLine(text);
    } else if (text.startsWith(u'#')) {
        stateLine(text);
    } else {
        hit<"line: another first character">();
    }
    if (FDesigning) {
        hit<"line: no timer">();
    } else if (either<"line: timer started", "line: timer runs already">(!FStackTimer.enabled())) {
        enableStack(true);
        sweep();
    }
}

void TModelGate::eventLine(const QString& text)
{
    const QString ip = ParseMessage("IP", text);
    const QString device = ParseMessage("DEVICE", text);
    const QString type = ParseMessage("DEVICETYPE", text);
    const QString status = ParseMessage("STATUSSHORT", text);
    const QString card = ParseMessage("CARDNUMBER", text);
    UpdatePing(ip, device);
    if (status == "ET") {
        confirm(device);
    } else if (status == "RQ") {
        hit<"RQ">();
        const QString found = checkStatus(ip, device, type, card, "RQ");
        report({"COME", ip, device, type, card, found, found});
    } else if (status == "PR" || status == "GR" || status == "FK") {
        moveOn(device, status);
    } else {
        hit<"short status: unknown">();
    }
}

void TModelGate::confirm(const QString& device)
{
    const PPass pass = passOf(device);
    if (number("CheckET") == 0) {
        hit<"ET: not in confirmation mode">();
    } else if (!pass) {
        hit<"ET: no pass">();
    } else if (either<"ET: confirmed", "ET: pass with check text">(pass->CRC.isEmpty())) {
        pass->Command.clear();
        pass->Finish = true;
    }
}

void TModelGate::moveOn(const QString& device, const QString& shortStatus)
{
    const PPass pass = passOf(device);
    const int kind = shortStatus == "PR" ? 0 : shortStatus == "GR" ? 1 : 2;
    if (!pass) {
        way<"PR: no pass", "GR: no pass", "FK: no pass">(kind);
        return;
    }
    if (kind == 0) {
        const bool ends = either<"PR: type D", "PR: other types">(pass->DeviceType == "D");
        pass->Status = ends ? "FINISH" : "PROGRESSSTART";
    } else {
        pass->Status = either<"GR: pass", "FK: pass">(kind == 1) ? "FINISH" : "TIMEOUT";
    }
    reportPass("COME", *pass);
}

void TModelGate::stateLine(const QString& text)
{
    const QString ip = ParseMessage("IP", text);
    const QString device = ParseMessage("DEVICE", text);
    const QString type = ParseMessage("DEVICETYPE", text);
    const QString status = ParseMessage("STATUS", text);
    const QString word = QString::fromLatin1(status.toLatin1().toUpper()); // Latin letters only
    UpdatePing(ip, device);
    if (word == "DC") {
        hit<"DC">();
        report({"STACK", ip, device, type, "", "CONNECTED", "CONNECTED"});
    } else if (word == "CC") {
        hit<"CC">();
        report({"STACK", ip, device, type, "", "DISCONNECTED", "DISCONNECTED"});
    } else if (word == "PING") {
        ping(ip, device, type);
    } else if (word == "CROSS") {
        cross(ip, device, type);
    } else if (word == "BTPH") {
        button(ip, device, type);
    } else {
        hit<"state: unknown">();
    }
    report({"COME", ip, device, type, "NOCARDNUMBER", status, status});
}

void TModelGate::cross(const QString& ip, const QString& device, const QString& type)
{
    if (p_hw_FindIP(ip) != -1) {
        hit<"CROSS: pass pending">();
        return;
    }
    report({"STACK", ip, device, type, "", "CROSS", "CROSS"});
    if (either<"CROSS: alarm", "CROSS: no alarm">(number("CheckCross") != 0)) {
        if (either<"CROSS: alarm sent", "CROSS: alarm without connector">(Connector() != nullptr)) {
            command("AL" + ip + u':' + device);
        }
    }
}

void TModelGate::button(const QString& ip, const QString& device, const QString& type)
{
    const PPass pass = passOf(device);
    if (!pass) {
        hit<"BTPH: no pass">();
        checkStatus(ip, device, type, kButtonCard, "RQ");
    } else if (either<"BTPH: new pass", "BTPH: other pass">(pass->Status == "NEW")) {
        send(pass, 1);
        pass->Status = "OPEN";
    }
}

// ---- tables

PPass TModelGate::StackItem(int index) const
{
    return index >= 0 && index < StackItemsCount() ? FPasses[std::size_t(index)] : nullptr;
}

int TModelGate::p_hw_FindDevice(const QString&, const QString& device) const
{
    return firstIndex(FPasses, [&](const PPass& pass) { return pass->Device == device; });
}

int TModelGate::p_hw_FindIP(const QString& ip) const
{
    return firstIndex(FPasses, [&](const PPass& pass) { return pass->IP == ip; });
}

int TModelGate::p_hw_FindDeviceByRelay(const QString& ip, const QString& device, const QString& type,
                                       const QString& card)
{
    const int index = firstIndex(
        FPasses, [&](const PPass& pass) { return pass->Device == device && pass->CardNumber == card; });
    if (!either<"by card: found", "by card: made">(index >= 0)) {
        add(ip, device, type, card);
    }
    return index >= 0 ? index : StackItemsCount() - 1;
}

PPass TModelGate::add(const QString& ip, const QString& device, const QString& type, const QString& card)
{
    const auto pass = std::make_shared<TPass>();
    pass->IP = ip;
    pass->Device = device;
    pass->DeviceType = type;
    pass->CardNumber = card;
    pass->Status = "NEW";
    pass->Starttime = today();
    FPasses.push_back(pass);
    return pass;
}

QString TModelGate::checkStatus(const QString& ip, const QString& device, const QString& type,
                                const QString& card, const QString& status)
{
    QString result = "NEW";
    if (const PPass found = passOf(device); either<"lookup: found", "lookup: made">(bool(found))) {
        result = found->Status;
    } else {
        const PPass made = add(ip, device, type, card);
        fire(FOnPicture, this, device, made->Img);
    }
    report({"CHECK", ip, device, type, card, status, result});
    return result;
}

int TModelGate::DevicePingFind(const QString& ip, const QString& device) const
{
    int last = -1;
    for (std::size_t i = 0; i < FControllers.size(); ++i) {
        if (FControllers[i]->IP == ip && FControllers[i]->Device == device) {
            last = int(i);
        }
    }
    return last;
}

void TModelGate::ping(const QString& ip, const QString& device, const QString& type)
{
    const int index = DevicePingFind(ip, device);
    if (either<"PING: new", "PING: known">(index < 0)) {
        FControllers.push_back(std::make_shared<TController>(
            TController{ip, device, type, double(FWorld.clock.nowMs()) / kMsPerDay}));
    } else {
        FControllers[std::size_t(index)]->Pingtime = today();
    }
    const TController entry = *(index < 0 ? FControllers.back() : FControllers[std::size_t(index)]);
    report({"STACK", entry.IP, entry.Device, entry.DeviceType, "", "PING", "PING"});
}

void TModelGate::UpdatePing(const QString& ip, const QString& device)
{
    const int index = DevicePingFind(ip, device);
    if (either<"update ping: known", "update ping: unknown">(index >= 0)) {
        FControllers[std::size_t(index)]->Pingtime = today();
    }
}

double TModelGate::today() const
{
    return double(FWorld.clock.timeOfDay()) / kMsPerDay;
}

bool TModelGate::late(double moment, qint64 limit) const
{
    return apart(FWorld.clock.timeOfDay(), std::llround(moment * kMsPerDay), limit);
}

} // namespace tnv5::d24::model
