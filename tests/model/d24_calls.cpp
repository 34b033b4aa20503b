// What a scenario is made of: calls made up at random, near what matters.

#include "d24_host.h"

#include "tnv5/platform/clock.h"

#include <algorithm>
#include <limits>

namespace tnv5::d24::model {

namespace {

template <class Value, std::size_t Size>
Value pick(TRandom& random, const Value (&values)[Size])
{
    return values[random() % Size];
}

int below(TRandom& random, int limit)
{
    return int(random() % quint64(limit));
}

QString oneOf(TRandom& random, std::initializer_list<const char*> values)
{
    return QString::fromUtf8(*(values.begin() + below(random, int(values.size()))));
}

QString anIp(TRandom& random)
{
    return oneOf(random, {"10.0.0.5", "10.0.0.5", "10.0.0.5", "0.0.0.0", "0.0.0.0", "a", "", "001T"});
}

QString aDevice(TRandom& random)
{
    return oneOf(random, {"001T", "001T", "001T", "002G", "002G", "003I", "003I", "004X", "005g", "0ПИТ"});
}

QString aType(TRandom& random)
{
    return oneOf(random, {"T", "T", "G", "I", "D", "D", "D", "X", ""});
}

QString aCard(TRandom& random)
{
    return oneOf(random, {"12345678", "12345678", "00A1B2C3", "", "-1-1-1-1-1", "-2-2-2-2-2", "Карта ☃",
                          "a:b", "-1-1-1-1-", "x&y!z"});
}

QString aStatus(TRandom& random)
{
    return oneOf(random, {"NEW", "NEW", "OPEN", "OPEN", "CLOSE", "NOANSWER", "FINISH", "PROGRESSSTART",
                          "PROGRESS", "TIMEOUT", "CRC-ERROR", "CRC-ERROR", "open", "", "HELD"});
}

QString eventWord(TRandom& random)
{
    const QString word = oneOf(random, {"RQ", "RQ", "RQ", "RQ", "RQ", "RQ", "PR", "PR", "GR", "GR", "FK",
                                        "ET", "ET", "ET", "rq", "XX"});
    return word + (word == QLatin1String("RQ") || below(random, 4) == 0 ? aCard(random) : QString());
}

QString stateWord(TRandom& random)
{
    return oneOf(random,
                 {"DC",    "CC",   "dc",   "Cc",   "PING", "PING",    "PING", "ping",  "CROSS", "CROSS",
                  "CrosS", "BTPH", "BTPH", "BTPH", "btph", "RELAY1Y", "",     "PINGX", "DC ",   "СС"});
}

/// Spoils a line a little.
QString spoilt(TRandom& random, QString line)
{
    const int at = below(random, int(line.size()) + 1);
    switch (below(random, 8)) {
    case 0:
        return line.left(at);
    case 1:
        return line.mid(at);
    case 2:
        return line.remove(u':');
    case 3:
        return line.remove(at, 1);
    case 4:
        return line.insert(at, oneOf(random, {":", "$", "#", " ", "ё", "\r", "&", "!"}));
    case 5:
        return oneOf(random, {"", "$", "#", "$:", "#:", ":", "x", "$a", "#a:00", "$a:001T", "$a:001TR",
                              "$RQRQRQ", "$a:001T12", "#a:001TPI", "$:001TRQ00", "#001TPING00"});
    case 6:
        return line.toLower();
    default:
        line[0] = below(random, 2) == 0 ? u'%' : u'#';
        return line;
    }
}

QString aLine(TRandom& random)
{
    if (below(random, 12) == 0) {
        return oneOf(random, {"#10.0.0.5:001TPING00", "#0.0.0.0:002GPING00", "#10.0.0.7:001TCROSS00",
                              "$10.0.0.5:002GRQ12345678AB", "$10.0.0.5:002GET00"});
    }
    const bool event = below(random, 3) != 0;
    const QString body = event ? eventWord(random) : stateWord(random);
    const QString ip = anIp(random);
    const QString device = aDevice(random);
    const QString line =
        (event ? u'$' : u'#') + ip + u':' + device + body + oneOf(random, {"00", "AB", "4F"});
    return below(random, 10) == 0 ? spoilt(random, line) : line;
}

/// Bytes as boards send them, one character a byte.
QString boardBytes(TRandom& random)
{
    QString bytes;
    for (int i = below(random, 3); i >= 0; --i) {
        const QString device = oneOf(random, {"001T", "001T", "002G", "003I", "00ÀT"});
        const QString body =
            oneOf(random, {"$%RQ1234AB", "$%RQ1234AB", "$%PR00", "$%GR00", "$%FK00", "$%PING00", "$%ET00",
                           "#%ET00", "#%BT00", "#%GO00", "#%HWGX=N20x4/GR=YN/00", "#%DC00", "$%RQÿ00",
                           "#%HWGX=N/GR=NNY/00", "$", "%RQ1234AB"});
        bytes += QString(body).replace(u'%', device) + oneOf(random, {"\r", "\r", "\r", "", "\n\r"});
    }
    return bytes;
}

qint64 aStep(TRandom& random)
{
    const qint64 seconds = pick(random, {1, 1, 2, 3, 4, 5, 7, 8, 11, 13, 15, 16, 18});
    return seconds * 1000 + pick(random, {-1, 0, 0, 0, 1, 999, -3600'000});
}

TCall jump(TRandom& random, bool inside)
{
    constexpr qint64 kDay = 46'027 * platform::kMsPerDay;
    if (inside) { // time never runs backward inside a tick
        return {TOp::Jump, {}, 0, std::max<qint64>(aStep(random), 0), 0};
    }
    if (below(random, 6) != 0) {
        return {TOp::Jump, {}, 0, aStep(random), 0};
    }
    const qint64 midnight = kDay + platform::kMsPerDay * pick(random, {0, 1, 2});
    return {TOp::Jump, {}, midnight - below(random, 3000), 0, 0};
}

TCall property(TRandom& random)
{
    switch (below(random, 6)) {
    case 0:
        return {TOp::SetCheckCross, {}, below(random, 4) != 0, 0, 0};
    case 1:
    case 2:
        return {TOp::SetCheckET, {}, below(random, 3) != 0, 0, 0};
    case 3:
        return {TOp::SetPingDelay, {}, pick(random, {15, 15, 1, 0, -1, 2, 86'000}), 0, 0};
    case 4:
        return {TOp::SetTimeOut,
                {},
                pick(random, {5, 5, 0, 1, -2, -9, -20, std::numeric_limits<int>::max()}),
                0,
                0};
    default:
        return {TOp::SetMode, {}, pick(random, {podNone, podNone, podServer, podServer, PodClient}), 0, 0};
    }
}

TCall link(TRandom& random, bool inside)
{
    switch (below(random, inside ? 6 : 8)) {
    case 0:
        return {TOp::SetConnector, {}, below(random, 4) - 1, 0, 0};
    case 1:
        return {TOp::LinkUp, {}, below(random, 2), below(random, 3) != 0, 0};
    case 2:
        return {TOp::PortFails, {}, below(random, 3), below(random, 2), 0};
    case 3:
        return {TOp::PortOpen, {}, below(random, 3) != 0, 0, 0};
    case 4:
        return {TOp::LinkType, {}, pick(random, {1, 1, 1, 1, 0, 2}), 0, 0};
    case 5:
        return {TOp::Steal, {}, below(random, 3), 0, 0};
    case 6:
        return {TOp::NewLink, {}, below(random, 2), 0, 0};
    default:
        return {TOp::SetConnector, {}, pick(random, {0, 0, 2, -1}), 0, 0};
    }
}

TCall lookup(TRandom& random)
{
    const QString ip = anIp(random);
    const QString device = aDevice(random);
    switch (below(random, 9)) {
    case 0:
    case 1:
        return {TOp::CheckStatus, {ip, device, aType(random), aCard(random), aStatus(random)}, 0, 0, 0};
    case 2:
        return {TOp::FindDevice, {ip, device}, 0, 0, 0};
    case 3:
        return {TOp::FindIp, {ip}, 0, 0, 0};
    case 4:
    case 5:
        return {
            TOp::FindByCard,
            {ip, device, aType(random), below(random, 2) == 0 ? QStringLiteral("12345678") : aCard(random)},
            0,
            0,
            0};
    case 6:
        return {TOp::Ping, {ip, device, aType(random)}, 0, 0, 0};
    case 7:
        return {TOp::PingFind, {ip, device}, 0, 0, 0};
    default:
        return {TOp::UpdatePing, {ip, device}, 0, 0, 0};
    }
}

TCall oddment(TRandom& random)
{
    const QString ip = anIp(random);
    const QString device = aDevice(random);
    switch (below(random, 7)) {
    case 0:
        return {TOp::StatusAll, {}, 0, 0, 0};
    case 1:
        return {TOp::Relay, {ip, device, "1"}, below(random, 3), 0, 0};
    case 2:
        return {TOp::Connected, {}, 0, 0, 0};
    case 3:
        return {TOp::Show, {"NAME", ip, device, "T", "card", aStatus(random), "ПУТЬ"}, 0, 0, 0};
    case 4: {
        const qint64 moment = qint64(random() % 5'000'000'000'000);
        return {
            TOp::CheckTimeout, {}, moment, moment + aStep(random), pick(random, {0, 1, 2, 3, 4, 7, 15, -1})};
    }
    case 5:
        return {TOp::CheckTimeout,
                {},
                qint64(random() % 5'000'000'000'000),
                below(random, 86'400'000),
                std::numeric_limits<int>::max()};
    default:
        return {
            TOp::Parse,
            {oneOf(random, {"IP", "DEVICE", "DEVICETYPE", "STATUS", "STATUSSHORT", "CARDNUMBER", "ip", ""}),
             aLine(random)},
            0,
            0,
            0};
    }
}

TCall record(TRandom& random)
{
    const int field = below(random, 8);
    QString text;
    switch (field) {
    case 0:
        text = aStatus(random);
        break;
    case 1:
        text = aType(random);
        break;
    case 2:
        text = aCard(random);
        break;
    case 3:
        text = oneOf(random, {"", "", "4F"});
        break;
    case 4:
        text = oneOf(random, {"GO10.0.0.5:001T", ""});
        break;
    case 7:
        text = oneOf(random, {"", "|A|||||", "TEXT"});
        break;
    default:
        break;
    }
    return {TOp::SetRecord, {text}, below(random, 3), field, below(random, 86'400'000)};
}

TCall aLineSomehow(TRandom& random)
{
    switch (below(random, 8)) {
    case 0:
        return {TOp::Line, {aLine(random)}, 0, 0, 0};
    case 1:
        return {TOp::ConnectorData, {aLine(random)}, 0, 0, 0};
    case 2:
        return {TOp::Feed, {boardBytes(random)}, pick(random, {0, 0, 0, 1, 3, 7}), 0, 0};
    default:
        return {TOp::LinkLine, {aLine(random)}, pick(random, {0, 0, 0, 0, 1, 2}), 0, 0};
    }
}

} // namespace

TCall randomCall(TRandom& random, const TTemper& temper, bool inside)
{
    const int choice = below(random, 100);
    if (choice < 38) {
        return aLineSomehow(random);
    }
    if (choice < 58) {
        const qint64 ms = pick(random, {10, 10, 10, 20, 9, 1, 11, 5, 30, 0});
        return {TOp::Advance, {}, !inside && below(random, 40) == 0 ? 2000 + ms : ms, 0, 0};
    }
    if (choice < 65) {
        return jump(random, inside);
    }
    if (choice < 71) {
        return {TOp::Pass, {}, 0, 0, 0};
    }
    if (choice < 75) {
        return {TOp::Manual,
                {below(random, 2) == 0 ? anIp(random) : aDevice(random), aDevice(random), aStatus(random)},
                0,
                0,
                0};
    }
    if (choice < 79) {
        return record(random);
    }
    if (choice < 82) {
        const int event = below(random, kEventCount);
        return {TOp::Assign, {}, event, pick(random, {0, 1, 1, 1, 2}), 0};
    }
    if (choice < 86) {
        return property(random);
    }
    if (choice < 89) {
        return link(random, inside);
    }
    if (choice < 93) {
        return lookup(random);
    }
    if (choice < 94) {
        return {TOp::SqlCheck, {}, below(random, 4) - 1, pick(random, {0, 0, 1, 2, 3, 5, 4, -1, 6}), 0};
    }
    if (choice < 96) {
        return {TOp::Send, {}, below(random, 4) - 1, pick(random, {0, 1, 0, 1, 2, -1}), 0};
    }
    if (choice < 97) {
        return {TOp::SilenceCheck, {}, 0, 0, 0};
    }
    if (choice < 98) {
        return {TOp::Interval, {}, pick(random, {10, 10, 10, 1, 3, 0, -5, 100}), 0, 0};
    }
    if (choice < 99 && temper.mayDestroy && below(random, inside ? 2 : 8) == 0) {
        return {TOp::Destroy, {}, 0, 0, 0};
    }
    return oddment(random);
}

TCall disturbingCall(TRandom& random, const TTemper& temper)
{
    switch (below(random, 8)) {
    case 0:
        return {TOp::SetConnector, {}, -1, 0, 0};
    case 1:
        return temper.mayDestroy ? TCall{TOp::Destroy, {}, 0, 0, 0} : TCall{TOp::Pass, {}, 0, 0, 0};
    case 2:
        return record(random);
    case 3:
        return aLineSomehow(random);
    case 4:
    case 5:
        return {TOp::Advance, {}, 10, 0, 0};
    default:
        return {TOp::Pass, {}, 0, 0, 0};
    }
}

QString describe(const TCall& call)
{
    static const char* const kNames[] = {
        "Line",         "ConnectorData", "LinkLine",   "Feed",         "Parse",        "CheckStatus",
        "FindDevice",   "FindIp",        "FindByCard", "Ping",         "PingFind",     "UpdatePing",
        "SilenceCheck", "Pass",          "SqlCheck",   "Send",         "CheckTimeout", "StatusAll",
        "Relay",        "Manual",        "Interval",   "Show",         "Connected",    "SetConnector",
        "Assign",       "SetCheckCross", "SetCheckET", "SetPingDelay", "SetTimeOut",   "SetMode",
        "SetRecord",    "Advance",       "Jump",       "LinkUp",       "PortFails",    "PortOpen",
        "LinkType",     "Steal",         "NewLink",    "Destroy"};
    return QStringLiteral("%1(\"%2\", %3, %4, %5)")
        .arg(QLatin1String(kNames[std::size_t(call.op)]), call.text.join(QStringLiteral("\", \"")))
        .arg(call.a)
        .arg(call.b)
        .arg(call.c);
}

} // namespace tnv5::d24::model
