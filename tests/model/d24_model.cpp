#include "d24_model.h"

#include "tnv5/platform/errors.h"

#include <algorithm>
#include <cstdlib>

namespace tnv5::d24::model {

namespace {

const QString kButtonCard = QStringLiteral("-2-2-2-2-2");
const QString kNoPort = QStringLiteral("Порт не открыт или не назначен");

// Bytes 0x80 to 0xBF of the Cyrillic code page; the alphabet in order follows. Kept apart from the one that
// is tested.
const QString kHighCharacters =
    QStringLiteral("ЂЃ‚ѓ„…†‡€‰Љ‹ЊЌЋЏђ‘’“”•–—\u0098™љ›њќћџ\u00A0ЎўЈ¤Ґ¦§Ё©Є«¬\u00AD®Ї°±Ііґµ¶·ё№є»јЅѕї");

QByteArray singleByte(const QString& text)
{
    QByteArray bytes;
    for (const QChar character : text) {
        const int code = character.unicode();
        const auto high = kHighCharacters.indexOf(character);
        if (code < 0x80) {
            bytes += char(code);
        } else if (code >= 0x410 && code <= 0x44F) {
            bytes += char(code - 0x410 + 0xC0);
        } else {
            bytes += high < 0 ? '?' : char(0x80 + high);
        }
    }
    return bytes;
}

QString upperCase(const QString& text)
{
    QString upper = text;
    for (QChar& character : upper) {
        if (character >= u'a' && character <= u'z') {
            character = QChar(character.unicode() - 32);
        }
    }
    return upper;
}

/// Characters `from`, counted from 1, and on; nothing for a count below 1.
QString part(const QString& text, qsizetype from, qsizetype count)
{
    QString piece;
    for (qsizetype at = from; at < from + count && at <= text.size(); ++at) {
        piece += text[at - 1];
    }
    return piece;
}

} // namespace

// ---- to the outside

void TModelGate::log(const QString& text)
{
    if (const int handler = handlers[evLog]) {
        outside([&] { FHost.text("log", handler, text); });
    }
}

void TModelGate::error(const QString& text)
{
    if (const int handler = handlers[evError]) {
        outside([&] { FHost.text("error", handler, text); });
    }
}

void TModelGate::monitor(const QString& text)
{
    if (mode != podNone) { // a gate that stands alone has nobody to tell
        outside([&] { FHost.monitor(singleByte(text)); });
    }
}

void TModelGate::doShow(const QStringList& fields)
{
    const int handler = handlers[evStatus];
    if (handler == 0) {
        return;
    }
    QString failure;
    try {
        outside([&] { FHost.status(handler, fields); });
        return;
    } catch (const TGone&) {
        throw;
    } catch (...) {
        failure = platform::exceptionMessage();
    }
    went("status handler raised");
    error(QStringLiteral("[07] ") + failure);
}

void TModelGate::report(const QStringList& fields)
{
    doShow(fields);
    monitor(QStringLiteral("STATUS!") + fields.join(u'!') + u'&');
}

void TModelGate::reportPass(const QString& name, const TPass& pass)
{
    report({name, pass.ip, pass.device, pass.type, pass.card, pass.status, pass.status});
}

QString TModelGate::command(const QString& text)
{
    if (!link) { // taken away by a handler since it was tested
        went("send: connector gone");
        throw platform::Exception(kNoPort);
    }
    QString check;
    outside([&] { check = link->SendCommand(text); });
    return check;
}

bool TModelGate::portReady()
{
    bool ready = false;
    if (either(link.isNull(), "send: no connector", "send: connector set")) {
        ready = false;
    } else {
        outside([&] { ready = link->GetConnected(); });
        if (!ready) {
            went("send: not connected");
        }
    }
    if (!ready) {
        const QString text = QStringLiteral("[04] ") + kNoPort;
        error(text);
        monitor(QStringLiteral("ERROR!") + text + u'&');
    }
    return ready;
}

// ---- lines

QString TModelGate::field(const QString& name, const QString& text)
{
    const qsizetype colon = text.indexOf(u':') + 1;
    const QString rest = part(text, colon + 1, text.size());
    const QString status = part(rest, 5, rest.size() - 6);
    if (name == QLatin1String("IP")) {
        return part(text, 2, colon - 2);
    }
    if (name == QLatin1String("DEVICE")) {
        return part(rest, 1, 4);
    }
    if (name == QLatin1String("DEVICETYPE")) {
        const QString letter = part(rest, 4, 1);
        return letter == QLatin1String("G") || letter == QLatin1String("I") ? letter : QStringLiteral("T");
    }
    if (name == QLatin1String("STATUS")) {
        return status;
    }
    if (name == QLatin1String("STATUSSHORT")) {
        return part(status, 1, 2);
    }
    if (name == QLatin1String("CARDNUMBER")) {
        return part(status, 3, status.size());
    }
    return {};
}

void TModelGate::doLine(const QString& text)
{
    log(QStringLiteral("%Считано с порта*% ") + text);
    if (mode == podServer) {
        went("line: server repeats it");
        monitor(QStringLiteral("LOG!%Считано с порта% ") + text + u'&');
    }
    if (mode == PodClient) {
        went("line: client forwards it");
        monitor(text);
        return;
    }
    if (text.startsWith(u'$')) {
        eventLine(text);
    } else if (text.startsWith(u'#')) {
        stateLine(text);
    } else {
        went("line: another first character");
    }
    if (FDesigning) {
        went("line: no timer");
    } else if (either(!FTimers[0].enabled, "line: timer started", "line: timer runs already")) {
        enableStack(true);
        doPass();
    }
}

void TModelGate::eventLine(const QString& text)
{
    const QString ip = field("IP", text);
    const QString device = field("DEVICE", text);
    const QString type = field("DEVICETYPE", text);
    const QString status = field("STATUSSHORT", text);
    const QString card = field("CARDNUMBER", text);
    doUpdatePing(ip, device);
    if (status == QLatin1String("ET")) {
        confirm(device);
    } else if (status == QLatin1String("RQ")) {
        went("RQ");
        const QString found = doCheckStatus(ip, device, type, card, QStringLiteral("RQ"));
        report({"COME", ip, device, type, card, found, found});
    } else if (status == QLatin1String("PR") || status == QLatin1String("GR") ||
               status == QLatin1String("FK")) {
        moveOn(device, status);
    } else {
        went("short status: unknown");
    }
}

void TModelGate::confirm(const QString& device)
{
    const PPass pass = passOf(device);
    if (!checkET) {
        went("ET: not in confirmation mode");
    } else if (!pass) {
        went("ET: no pass");
    } else if (either(pass->crc.isEmpty(), "ET: confirmed", "ET: pass with check text")) {
        pass->command.clear();
        pass->finish = true;
    }
}

void TModelGate::moveOn(const QString& device, const QString& shortStatus)
{
    const PPass pass = passOf(device);
    if (shortStatus == QLatin1String("GR")) {
        if (either(!pass, "GR: no pass", "GR: pass")) {
            return;
        }
        pass->status = QStringLiteral("FINISH");
    } else if (shortStatus == QLatin1String("FK")) {
        if (either(!pass, "FK: no pass", "FK: pass")) {
            return;
        }
        pass->status = QStringLiteral("TIMEOUT");
    } else {
        if (!pass) {
            went("PR: no pass");
            return;
        }
        const bool ends = either(pass->type == QLatin1String("D"), "PR: type D", "PR: other types");
        pass->status = ends ? QStringLiteral("FINISH") : QStringLiteral("PROGRESSSTART");
    }
    reportPass(QStringLiteral("COME"), *pass);
}

void TModelGate::stateLine(const QString& text)
{
    const QString ip = field("IP", text);
    const QString device = field("DEVICE", text);
    const QString type = field("DEVICETYPE", text);
    const QString status = field("STATUS", text);
    const QString word = upperCase(status);
    doUpdatePing(ip, device);
    if (word == QLatin1String("DC")) {
        went("DC");
        report({"STACK", ip, device, type, "", "CONNECTED", "CONNECTED"});
    } else if (word == QLatin1String("CC")) {
        went("CC");
        report({"STACK", ip, device, type, "", "DISCONNECTED", "DISCONNECTED"});
    } else if (word == QLatin1String("PING")) {
        doPing(ip, device, type);
    } else if (word == QLatin1String("CROSS")) {
        cross(ip, device, type);
    } else if (word == QLatin1String("BTPH")) {
        button(ip, device, type);
    } else {
        went("state: unknown");
    }
    report({"COME", ip, device, type, "NOCARDNUMBER", status, status});
}

void TModelGate::cross(const QString& ip, const QString& device, const QString& type)
{
    if (findIp(ip) != -1) {
        went("CROSS: pass pending");
        return;
    }
    report({"STACK", ip, device, type, "", "CROSS", "CROSS"});
    if (either(checkCross, "CROSS: alarm", "CROSS: no alarm")) {
        if (either(bool(link), "CROSS: alarm sent", "CROSS: alarm without connector")) {
            command(QStringLiteral("AL") + ip + u':' + device);
        }
    }
}

void TModelGate::button(const QString& ip, const QString& device, const QString& type)
{
    const PPass pass = passOf(device);
    if (!pass) {
        went("BTPH: no pass");
        doCheckStatus(ip, device, type, kButtonCard, QStringLiteral("RQ"));
    } else if (either(pass->status == QLatin1String("NEW"), "BTPH: new pass", "BTPH: other pass")) {
        doSend(pass, 1);
        pass->status = QStringLiteral("OPEN");
    }
}

// ---- tables

TModelGate::PPass TModelGate::passOf(const QString& device) const
{
    const int index = findDevice(device);
    return index < 0 ? nullptr : passes[std::size_t(index)];
}

int TModelGate::findDevice(const QString& device) const
{
    for (std::size_t i = 0; i < passes.size(); ++i) {
        if (passes[i]->device == device) {
            return int(i);
        }
    }
    return -1;
}

int TModelGate::findIp(const QString& ip) const
{
    for (std::size_t i = 0; i < passes.size(); ++i) {
        if (passes[i]->ip == ip) {
            return int(i);
        }
    }
    return -1;
}

int TModelGate::findByCard(const QString& ip, const QString& device, const QString& type, const QString& card)
{
    for (std::size_t i = 0; i < passes.size(); ++i) {
        if (passes[i]->device == device && passes[i]->card == card) {
            went("by card: found");
            return int(i);
        }
    }
    went("by card: made");
    add(ip, device, type, card);
    return int(passes.size()) - 1;
}

TModelGate::PPass TModelGate::add(const QString& ip, const QString& device, const QString& type,
                                  const QString& card)
{
    const auto pass = std::make_shared<TPass>();
    pass->ip = ip;
    pass->device = device;
    pass->type = type;
    pass->card = card;
    pass->status = QStringLiteral("NEW");
    pass->start = timeOfDay();
    passes.push_back(pass);
    return pass;
}

QString TModelGate::doCheckStatus(const QString& ip, const QString& device, const QString& type,
                                  const QString& card, const QString& status)
{
    QString result = QStringLiteral("NEW");
    if (const PPass found = passOf(device); either(bool(found), "lookup: found", "lookup: made")) {
        result = found->status;
    } else {
        const PPass made = add(ip, device, type, card);
        if (const int handler = handlers[evImg]) {
            outside([&] { FHost.picture(handler, device, made->img); });
        }
    }
    report({"CHECK", ip, device, type, card, status, result});
    return result;
}

int TModelGate::findController(const QString& ip, const QString& device) const
{
    int last = -1;
    for (std::size_t i = 0; i < controllers.size(); ++i) {
        if (controllers[i]->ip == ip && controllers[i]->device == device) {
            last = int(i);
        }
    }
    return last;
}

void TModelGate::doPing(const QString& ip, const QString& device, const QString& type)
{
    const int index = findController(ip, device);
    if (either(index < 0, "PING: new", "PING: known")) {
        controllers.push_back(std::make_shared<TController>(TController{ip, device, type, FNow}));
    } else {
        controllers[std::size_t(index)]->heard = timeOfDay();
    }
    const TController entry = *(index < 0 ? controllers.back() : controllers[std::size_t(index)]);
    report({"STACK", entry.ip, entry.device, entry.type, "", "PING", "PING"});
}

void TModelGate::doUpdatePing(const QString& ip, const QString& device)
{
    const int index = findController(ip, device);
    if (either(index >= 0, "update ping: known", "update ping: unknown")) {
        controllers[std::size_t(index)]->heard = timeOfDay();
    }
}

bool TModelGate::late(qint64 moment, qint64 limit) const
{
    return std::llabs(timeOfDay() - moment) / 1000 > limit;
}

} // namespace tnv5::d24::model
