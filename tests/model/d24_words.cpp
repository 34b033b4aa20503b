#include "model/d24_words.h"

#include "model/kit/texts.h"

#include <limits>

namespace tnv5::d24::model {

namespace {

constexpr int kLargest = std::numeric_limits<int>::max();

QString anIp(TDice& d)
{
    return d.text({"10.0.0.5", "10.0.0.5", "10.0.0.5", "0.0.0.0", "0.0.0.0", "a", "", "001T"});
}

QString aDevice(TDice& d)
{
    return d.text({"001T", "001T", "001T", "002G", "002G", "003I", "003I", "004X", "005g", "0ПИТ"});
}

QString aType(TDice& d)
{
    return d.text({"T", "T", "G", "I", "D", "D", "D", "X", ""});
}

QString aCard(TDice& d)
{
    return d.text({"12345678", "12345678", "00A1B2C3", "", "-1-1-1-1-1", "-2-2-2-2-2", "Карта ☃", "a:b",
                   "-1-1-1-1-", "x&y!z"});
}

QString aStatus(TDice& d)
{
    return d.text({"NEW", "NEW", "OPEN", "OPEN", "CLOSE", "NOANSWER", "FINISH", "PROGRESSSTART", "PROGRESS",
                   "TIMEOUT", "CRC-ERROR", "CRC-ERROR", "open", "", "HELD"});
}

QString eventWord(TDice& d)
{
    const QString word = d.text(
        {"RQ", "RQ", "RQ", "RQ", "RQ", "RQ", "PR", "PR", "GR", "GR", "FK", "ET", "ET", "ET", "rq", "XX"});
    return word + (word == "RQ" || d.below(4) == 0 ? aCard(d) : QString());
}

QString stateWord(TDice& d)
{
    return d.text({"DC",    "CC",   "dc",   "Cc",   "PING", "PING",    "PING", "ping",  "CROSS", "CROSS",
                   "CrosS", "BTPH", "BTPH", "BTPH", "btph", "RELAY1Y", "",     "PINGX", "DC ",   "СС"});
}

/// Spoils a line a little.
QString spoilt(TDice& d, QString line)
{
    const int at = d.below(int(line.size()) + 1);
    switch (d.below(8)) {
    case 0:
        return line.left(at);
    case 1:
        return line.mid(at);
    case 2:
        return line.remove(u':');
    case 3:
        return line.remove(at, 1);
    case 4:
        return line.insert(at, d.text({":", "$", "#", " ", "ё", "\r", "&", "!"}));
    case 5:
        return d.text({"", "$", "#", "$:", "#:", ":", "x", "$a", "#a:00", "$a:001T", "$a:001TR", "$RQRQRQ",
                       "$a:001T12", "#a:001TPI", "$:001TRQ00", "#001TPING00"});
    case 6:
        return line.toLower();
    default:
        line[0] = d.below(2) == 0 ? u'%' : u'#';
        return line;
    }
}

/// Bytes as boards send them, one character a byte.
QString boardBytes(TDice& d)
{
    QString bytes;
    for (int i = d.below(3); i >= 0; --i) {
        const QString device = d.text({"001T", "001T", "002G", "003I", "00ÀT"});
        const QString body = d.text({"$%RQ1234AB", "$%RQ1234AB", "$%PR00", "$%GR00", "$%FK00", "$%PING00",
                                     "$%ET00", "#%ET00", "#%BT00", "#%GO00", "#%HWGX=N20x4/GR=YN/00",
                                     "#%DC00", "$%RQÿ00", "#%HWGX=N/GR=NNY/00", "$", "%RQ1234AB"});
        bytes += QString(body).replace(u'%', device) + d.text({"\r", "\r", "\r", "", "\n\r"});
    }
    return bytes;
}

qint64 someTime(TDice& d)
{
    const qint64 seconds = d.pick({1, 1, 2, 3, 4, 5, 7, 8, 11, 13, 15, 16, 18});
    return seconds * 1000 + d.pick({-1, 0, 0, 0, 1, 999, -3600'000});
}

TStep jump(TDice& d, bool inside)
{
    if (inside || d.below(6) != 0) {
        return {Jump, {}, 0, inside ? qMax<qint64>(someTime(d), 0) : someTime(d)};
    }
    return {Jump, {}, kToday + kMsPerDay * d.below(3) - d.below(3000)};
}

TStep property(TDice& d)
{
    const int which = d.pick({0, 1, 1, 2, 3, 4, 4, 5});
    const int values[] = {d.below(4) != 0,
                          d.below(3) != 0,
                          d.pick({15, 15, 1, 0, -1, 2, 86'000}),
                          d.pick({5, 5, 0, 1, -2, -9, -20, kLargest}),
                          d.pick({0, 0, 0, 1, 1, 1, 2, 2}),
                          d.pick({0, 5'000, -1})};
    return d.chance(8) ? TStep{ServerName, {d.text({"", "10.0.0.1", "касса"})}}
                       : TStep{Number, {}, which, values[which]};
}

TStep linkStep(TDice& d, bool inside)
{
    const TStep connect{Connect, {}, d.pick({0, 0, 0, 1, 2, 2, -1, -1})};
    const TStep up{LinkUp, {}, d.below(2), d.below(3) != 0};
    const TStep fail{Fail, d.pick<QStringList>({{}, {"port fails"}}), 0, d.pick({0, 2})};
    const TStep open{d.below(3) != 0 ? OpenPort : ClosePort};
    const TStep type{LinkType, {}, d.pick({1, 1, 1, 1, 0, 2})};
    const TStep other = inside ? connect : TStep{NewLink, {}, d.below(2)};
    return d.pick({connect, connect, up, fail, open, type, TStep{Steal, {}, d.below(3)}, other});
}

TStep lookup(TDice& d)
{
    const QString ip = anIp(d);
    const QString device = aDevice(d);
    const TStep check{CheckStatus, {ip, device, aType(d), aCard(d), aStatus(d)}};
    const TStep byCard{FindByCard, {ip, device, aType(d), d.below(2) == 0 ? "12345678" : aCard(d)}};
    const TStep ping{Ping, {ip, device, aType(d)}};
    const TStep simple{d.pick<int>({FindDevice, PingFind, UpdatePing}), {ip, device}};
    return d.pick({check, check, byCard, byCard, simple, simple, simple, ping, TStep{FindIp, {ip}}});
}

TStep oddment(TDice& d)
{
    const QString ip = anIp(d);
    const QString device = aDevice(d);
    const qint64 moment = qint64(d.next() % 5'000'000'000'000U);
    const QString field =
        d.text({"IP", "DEVICE", "DEVICETYPE", "STATUS", "STATUSSHORT", "CARDNUMBER", "ip", ""});
    const TStep relay{Relay, {ip, device, "1"}, d.below(3)};
    const TStep show{Show, {"NAME", ip, device, "T", "card", aStatus(d), "ПУТЬ"}};
    const TStep late{TimedOut, {}, moment, moment + someTime(d), d.pick({0, 1, 2, 3, 4, 7, 15, -1})};
    const TStep never{TimedOut, {}, moment, d.below(86'400'000), kLargest};
    return d.pick(
        {TStep{StatusAll}, relay, TStep{AskConnected}, show, late, never, TStep{Parse, {field, aLine(d)}}});
}

TStep editPass(TDice& d)
{
    const int field = d.below(8);
    const QString texts[] = {aStatus(d),
                             aType(d),
                             aCard(d),
                             d.text({"", "", "4F"}),
                             d.text({"GO10.0.0.5:001T", ""}),
                             "",
                             "",
                             d.text({"", "|A|||||", "TEXT"})};
    return {EditPass, {texts[field]}, d.below(3), field, d.below(86'400'000)};
}

TStep aLineSomehow(TDice& d)
{
    const QString line = aLine(d);
    const TStep onLink{LinkLine, {line}, d.pick({0, 0, 0, 0, 1, 2})};
    const TStep onPort = fed(d, 0, boardBytes(d).toLatin1());
    return d.pick(
        {TStep{Line, {line}}, TStep{ConnectorData, {line}}, onPort, onLink, onLink, onLink, onLink, onLink});
}

} // namespace

QString aLine(TDice& d)
{
    if (d.below(12) == 0) {
        return d.text({"#10.0.0.5:001TPING00", "#0.0.0.0:002GPING00", "#10.0.0.7:001TCROSS00",
                       "$10.0.0.5:002GRQ12345678AB", "$10.0.0.5:002GET00"});
    }
    const bool event = d.below(3) != 0;
    const QString body = event ? eventWord(d) : stateWord(d);
    const QString ip = anIp(d);
    const QString device = aDevice(d);
    const QString line = (event ? u'$' : u'#') + ip + u':' + device + body + d.text({"00", "AB", "4F"});
    return d.below(10) == 0 ? spoilt(d, line) : line;
}

TStep anyStep(TDice& d, bool inside, bool mayDestroy)
{
    switch (d.weighted({38, 20, 7, 6, 4, 4, 3, 4, 3, 4, 1, 2, 1, 1, inside && mayDestroy ? 6 : 1, 1})) {
    case 0:
        return aLineSomehow(d);
    case 1: {
        const int ms = d.pick({10, 10, 10, 20, 9, 1, 11, 5, 30, 0});
        return {Advance, {}, !inside && d.below(40) == 0 ? 2000 + ms : ms};
    }
    case 2:
        return jump(d, inside);
    case 3:
        return {Sweep};
    case 4:
        return {Manual, {d.below(2) == 0 ? anIp(d) : aDevice(d), aDevice(d), aStatus(d)}};
    case 5:
        return editPass(d);
    case 6:
        return {Assign, {}, d.below(kEvents), d.pick({0, 1, 1, 1, 2})};
    case 7:
        return property(d);
    case 8:
        return linkStep(d, inside);
    case 9:
        return lookup(d);
    case 10:
        return {Ask, {}, d.between(-1, 2), d.pick({0, 0, 1, 2, 3, 5, 4, -1, 6})};
    case 11:
        return {Send, {}, d.between(-1, 2), d.pick({0, 1, 0, 1, 2, -1})};
    case 12:
        return {SilenceCheck};
    case 13:
        return {Interval, {}, d.pick({10, 10, 10, 1, 3, 0, -5, 100})};
    case 14:
        return mayDestroy && d.below(inside ? 2 : 8) == 0 ? TStep{Destroy} : oddment(d);
    default:
        return oddment(d);
    }
}

TStep disturbing(TDice& d, bool mayDestroy)
{
    const TStep time{Advance, {}, 10};
    const TStep leave{mayDestroy ? Destroy : Sweep};
    return d.pick(
        {TStep{Connect, {}, -1}, leave, editPass(d), aLineSomehow(d), time, time, {Sweep}, {Sweep}});
}

QVariant oddAnswer(TDice& d)
{
    return d.pick<QVariant>({"abc", QVariant(), "1", "0", "-1", 1.0, 0.0, 2.0, "22", "", 1.2, qint64(1)});
}

QVariant displayText(TDice& d)
{
    return d.pick<QVariant>({"", "|A|B|C|D|LS|", "NO ENTRY", "|Баланс 5 €||||", QVariant(), 5});
}

} // namespace tnv5::d24::model
