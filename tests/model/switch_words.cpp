#include "model/switch_words.h"

#include "model/kit/texts.h"

#include <QDateTime>

namespace tnv5::switching::model {

QString TWords::ip()
{
    return dice.text({"0.0.0.0", "0.0.0.0", "0.0.0.0", "10.0.0.5", "10.0.0.5", "", "RELAY9Y", "шлюз"});
}

QString TWords::device()
{
    if (!job.isEmpty()) {
        return job[0];
    }
    return dice.text(
        {"000A", "000A", "000A", "000B", "000B", "012A", "012G", "003I", "0ПИЯ", "00A", "000AA", ""});
}

QString TWords::relay()
{
    if (!job.isEmpty()) {
        return job[1];
    }
    return dice.text({"1", "1", "1", "2", "2", "3", "4", "5", "6", "0", "", "12", "x", "١"});
}

QString TWords::state()
{
    return dice.text({"ON", "ON", "ON", "OFF", "OFF", "OFF", "NONE", "NOTINLINE", "on", "", "XXX"});
}

/// Mostly around now, of today or of another day, sometimes far away.
qint64 TWords::moment()
{
    if (dice.chance(8)) {
        return qint64(dice.next() % 5'000'000'000'000U);
    }
    const qint64 seconds = dice.pick({0, 1, 2, 3, 3, 6, 14, 15, 16, 30, 60, 61, 120, 3'600, 40'000});
    const qint64 days = dice.pick({0, 0, 0, 0, 1, -1, 3}) * kMsPerDay;
    return qMax<qint64>(0,
                        now + days + dice.pick({1, 1, -1}) * seconds * 1'000 + dice.pick({-1, 0, 0, 1, 500}));
}

QString TWords::written(qint64 ms)
{
    const QDateTime day(QDate(1899, 12, 30).addDays(ms / kMsPerDay),
                        QTime::fromMSecsSinceStartOfDay(int(ms % kMsPerDay)));
    return day.toString(dice.text({"dd.MM.yyyy hh:mm:ss", "dd.MM.yyyy hh:mm:ss", "d.M.yy h:m", "d.M.yy",
                                   "yyyy-MM-dd hh:mm:ss.zzz", "yyyy-M-d", "h:m", "hh:mm:ss", "h:m:s.zzz",
                                   "  dd.MM.yyyy   hh:mm  ", "yyyy-MM-ddhh:mm", "h:mhh", "dd.MM.yyyy hh",
                                   "d.M.1yy", "'@'", "MM/dd/yyyy hh:mm", "d.M.yyyy hh:mm:ss AP"}));
}

QString TWords::time()
{
    if (dice.chance(60)) {
        return written(moment());
    }
    return dice.text({"",
                      "0",
                      "29.2.2023",
                      "29.2.2024",
                      "31.4.2026",
                      "29.02.1900",
                      "29.2.00",
                      "1.13.2026",
                      "0.1.2026",
                      "1.0.26",
                      "32.1.2026",
                      "1.1.0000",
                      "1.1.0001",
                      "31.12.9999",
                      "24:00",
                      "23:60",
                      "23:59:60",
                      "0:0:0",
                      "00:00",
                      "1:2:3.4",
                      "1:2:3.45",
                      "1:2:3.4567",
                      "1:2:3.",
                      "001:02",
                      "1.1.2026 ",
                      "1.1.2026 24:0",
                      " 12:05:00 ",
                      "12:05:00A4",
                      "1.1.026",
                      "01.01.2026\t1:1",
                      "١.1.2026",
                      "2026-13-01",
                      "2026-02-29",
                      "0000-01-01",
                      "-1.1.2026",
                      "1.1.2026 1:1 1:1",
                      "@46027000",
                      "@0",
                      "@3976819200001",
                      "+1:1",
                      "12:5:0.999",
                      "23:59:59.9999"});
}

QString TWords::ownReport()
{
    const QString code = dice.text({"SS", "SS", "SS", "SS", "SS", "SS", "SS", "SS", "900", "9009", "ET",
                                    "RQ12345678", "PR", "GR", "FK", "ss", "90", "XX", ""});
    QString body = code;
    if (code == "SS") {
        body += relay() + dice.text({"N", "N", "N", "N", "F", "F", "n", ""}) + time();
    }
    return '$' + ip() + ':' + device() + body + (code == "SS" ? QString() : dice.text({"00", "A4", ""}));
}

QString TWords::connectorLine()
{
    const QString word = dice.text({"RELAY", "RELAY", "RELAY", "RELAY", "RELAY", "RELAY", "PING", "PING",
                                    "ping", "Ping", "DC", "cc", "BTPH", "PINGX", " PING", "relay1Y", ""});
    const QString state =
        word == "RELAY" ? relay() + dice.text({"Y", "Y", "Y", "N", "N", "N", "y", ""}) : QString();
    return '#' + ip() + ':' + device() + word + state + dice.text({"00", "00", "00", "4F", ""});
}

QString TWords::spoilt(QString line)
{
    const int at = dice.below(int(line.size()) + 1);
    switch (dice.below(8)) {
    case 0:
        return line.left(at);
    case 1:
        return line.mid(at);
    case 2:
        return line.remove(':');
    case 3:
        return line.remove(at, 1);
    case 4:
        return line.insert(at, dice.text({":", "$", "#", " ", "RELAY", "\r", "&", "!"}));
    case 5:
        return line + QString(dice.pick({1, 90, 92, 93, 300}), dice.pick({u' ', u'x', u'0'}));
    case 6:
        return dice.text({"",
                          "$",
                          "#",
                          ":",
                          "$:",
                          "#:",
                          "x",
                          "$a",
                          "#0.0.0.0:",
                          "#RELAY",
                          "$RELAY1Y",
                          "#RELAY1Y00",
                          "#0.0.0.0:000ARELAY",
                          "#0.0.0.0:000ARELAY1",
                          "$:000ASS",
                          "#PING00",
                          "##PI",
                          "$SS1F",
                          "$a00SS1F",
                          "%0.0.0.0:000ARELAY1Y00",
                          "#:000APING00",
                          "#:PING00"});
    default:
        return line.replace(0, 1, dice.text({"%", "#", "$"}));
    }
}

QString TWords::line()
{
    const QString line = dice.chance(50) ? ownReport() : connectorLine();
    return dice.chance(10) ? spoilt(line) : line;
}

/// Bytes as boards send them.
QByteArray TWords::wire()
{
    QString bytes;
    for (int left = dice.between(1, 3); left > 0; --left) {
        const QString body = dice.text({"$%PING00", "$%PING00", "#%HWGX=N/GR=YN/00", "#%HWGX=N/GR=NNY/00",
                                        "#%HWGX=N20x4/GR=YYY/00", "$%SS1F00", "$%SS2N", "$%90000", "#%DC00",
                                        "#%BT00", "$%ET00", "$"});
        bytes += QString(body).replace('%', dice.text({"000A", "000A", "000B", "012A"}));
        bytes += dice.text({"\r", "\r", "\r", "", "\n\r"});
    }
    return bytes.toLatin1();
}

QVariant TWords::answer(int mode)
{
    if (dice.chance(10)) {
        return dice.pick<QVariant>({"abc", QVariant(), "1", "0", " 1", true, false, 1.0, 0.0, 0.6, 1.4,
                                    qint64(1), "", "2147483648", 2});
    }
    return mode == 2 ? dice.pick({1, 0, 0, 0, -1, 2}) : dice.pick({1, 1, 1, 1, 0, 0, -1, 2});
}

QVariant TWords::wish()
{
    return dice.pick<QVariant>(
        {"ON", "ON", "ON", "ON", "OFF", "OFF", "NONE", "on", "", QVariant(), 1, "Да&!"});
}

// ---- steps

TStep TWords::lineSomehow()
{
    const QString text = line();
    const TStep onLink{LinkLine, {text}, dice.pick({0, 0, 0, 0, 1, 2})};
    return dice.pick(
        {TStep{Line, {text}}, TStep{ConnectorData, {text}}, fed(dice, 0, wire()), onLink, onLink});
}

TStep TWords::pass(bool inside)
{
    const int ms = dice.pick({1, 999, 1'000, 1'001, 1'999, 2'000, 2'000, 2'001, 3'000, 3'000, 6'000, 500});
    return {Advance, {}, inside ? qMin(ms, 2'000) : ms};
}

TStep TWords::property()
{
    const int which = dice.pick({0, 0, 1, 2, 3, 4, 4});
    const int values[] = {dice.pick({15, 15, 1, 0, -1, 2, 3, 86'000, 2'147'483'647}), dice.below(9),
                          dice.below(9), dice.pick({0, 5'000, -1}), dice.pick({0, 0, 0, 1, 1, 1, 2, 7})};
    return dice.chance(10) ? TStep{ServerName, {dice.text({"", "10.0.0.1", "касса"})}}
                           : TStep{Number, {}, which, values[which]};
}

TStep TWords::linkStep(bool inside)
{
    const TStep connect{Connect, {}, dice.pick({0, 0, 0, 1, 2, 2, -1, -1})};
    const TStep up{LinkUp, {}, dice.below(2), dice.chance(70)};
    const TStep fail{Fail, dice.pick<QStringList>({{}, {"port fails"}}), 0, dice.pick({0, 2})};
    const TStep open{dice.chance(70) ? OpenPort : ClosePort};
    const TStep other = inside ? connect : TStep{NewLink, {}, dice.below(2)};
    return dice.pick({connect, connect, up, up, fail, open, TStep{Steal, {}, dice.below(3)}, other});
}

TStep TWords::editJob()
{
    const int field =
        dice.pick<int>({jfStatus, jfStatus, jfStatus, jfStatusDevice, jfStatusDevice, jfStatusDevice,
                        jfDevice, jfRelay, jfIp, jfStart, jfStart, jfStart, jfFinish, jfFinish});
    const QString text = field <= jfStatusDevice ? state()
                         : field == jfDevice     ? device()
                         : field == jfRelay      ? relay()
                                                 : ip();
    const qint64 today = now % kMsPerDay;
    const qint64 start = qMax<qint64>(0, today - dice.pick({0, 1'000, 1'999, 2'000, 2'999, 3'000, 3'001}));
    return {EditJob, {text}, dice.below(4), field, field == jfStart ? start : moment()};
}

TStep TWords::call()
{
    const QString where = ip();
    const QString board = device();
    const TStep check{CheckStatus, {where, board, relay(), state()}, moment()};
    const TStep find{Find, {where, board, relay()}};
    const TStep change{Relay, {where, board, relay()}};
    const TStep ping{Ping, {where, board, dice.text({"T", "T", "G", "", "!&"})}};
    const TStep pingFind{PingFind, {where, board}};
    const TStep ask{Ask, {}, dice.between(-1, 3), dice.pick({0, 1, 2, 3, 4, -1})};
    const int field = dice.below(4);
    const TStep editBoard{EditBoard,
                          {field == 0 ? where : board},
                          dice.below(3),
                          field,
                          dice.chance(50) ? now % kMsPerDay : moment()};
    return dice.pick({check, check, check, check, find, change, ping, ping, pingFind, ask, editBoard,
                      editBoard, TStep{StatusAll}});
}

TStep TWords::oddment()
{
    const QString key = dice.text({"IP", "DEVICE", "DEVICETYPE", "RELA", "RELAONOFF", "RELATIME", "RELAY",
                                   "RELAYONOFF", "STATUS", "STATUSSHORT", "CARDNUMBER", "ip", ""});
    const qint64 first = moment();
    const int seconds = dice.pick({0, 1, 2, 15, 60, -1});
    const qint64 second =
        first + dice.pick({-1, 1}) * (seconds + dice.below(2)) * 1'000LL + dice.between(-1, 1);
    const TStep parse{Parse, {dice.chance(50) ? line() : spoilt(line()), key}};
    const TStep between{Between, {}, first, qMax<qint64>(second, 0), seconds};
    const TStep compare{Compare, {}, first, dice.chance(30) ? first + kMsPerDay : moment()};
    const TStep show{Show, {"NAME", device(), relay(), state(), "ПУТЬ&!"}, dice.below(3)};
    return dice.pick({parse, parse, between, between, compare, show, TStep{AskConnected}, TStep{PingTime},
                      TStep{ToMonitor}, TStep{NoEffect},
                      TStep{Send, {dice.text({"HW0.0.0.0:000A", "", "x"})}},
                      TStep{Format, {}, dice.chance(30)}});
}

TStep TWords::any(bool inside, bool mayDestroy)
{
    switch (dice.weighted({34, 22, 3, 7, 9, 8, 3, 4, 10, 5, inside && mayDestroy ? 3 : 1})) {
    case 0:
        return lineSomehow();
    case 1:
        return pass(inside);
    case 2: {
        const qint64 midnight = (now / kMsPerDay + 1) * kMsPerDay;
        return {Jump, {}, dice.pick<qint64>({midnight - dice.below(65'000), moment(), now + 1'000})};
    }
    case 3:
        return {Sweep};
    case 4:
        return editJob();
    case 5:
        return call();
    case 6:
        return {Assign, {}, dice.below(kEvents), dice.pick({0, 1, 1, 1, 2})};
    case 7:
        return property();
    case 8:
        return oddment();
    case 9:
        return linkStep(inside);
    default:
        return mayDestroy && dice.below(inside ? 2 : 8) == 0 ? TStep{Destroy} : oddment();
    }
}

TStep TWords::disturbing(bool mayDestroy)
{
    const TStep leave{mayDestroy ? Destroy : Sweep};
    const TStep time{Advance, {}, 2'000};
    return dice.pick({TStep{Connect, {}, -1}, leave, editJob(), lineSomehow(), time, {Sweep}, call()});
}

} // namespace tnv5::switching::model
