#include "model/scales_words.h"

#include <algorithm>

namespace tnv5::scales::model {

namespace {

QByteArray noise(TDice& d, int longest)
{
    return d.noise(longest, QByteArray("\0\x01\x02\x04\x05\x06\r\n <>BWkgSUF-+09.\t", 24));
}

/// A weight, often a little beside the last one: small changes are dropped.
int weightNear(TDice& d, int last)
{
    if (d.chance(55)) {
        return qBound(0, last, 70'000) + d.pick({-4, -3, -2, -1, 0, 1, 2, 3, 4});
    }
    return d.pick({0, 1, 2, 3, 127, 128, 255, 256, 999, 32'767, 32'768, 65'535, d.below(65'536)});
}

/// A field of a width, mostly a number in some of the forms that scales and lines make of it.
QByteArray field(TDice& d, int width)
{
    const int digits = d.between(0, width);
    QByteArray text;
    for (int at = 0; at < digits; ++at) {
        text += char('0' + d.below(10));
    }
    if (d.chance(15)) {
        text.prepend(d.pick({'+', '-'}));
    }
    if (d.chance(6)) {
        text.prepend(d.pick({'+', '-', '\t', '\0', '\xA0', '.'}));
    }
    const bool right = d.chance(80);
    const char fill = d.pick({' ', ' ', ' ', '0'});
    text = right ? text.rightJustified(width, fill, true) : text.leftJustified(width, fill, true);
    if (d.chance(6)) {
        text[d.below(width)] = char(d.below(256));
    }
    return text;
}

QByteArray reversedPacket(TDice& d, int length)
{
    QByteArray text = field(d, 6);
    std::reverse(text.begin(), text.end());
    const int size = d.chance(75) ? length : length + d.pick({-17, -5, -1, 1, 2, length, 30});
    while (text.size() < size) {
        text += char(d.below(256));
    }
    return text.left(size);
}

QByteArray massaK(TDice& d, bool asked, int lastWeight)
{
    if (!asked) {
        QByteArray state;
        state += char(d.chance(80) ? 128 + d.below(128) : d.below(128));
        state += char(d.below(256));
        return d.chance(88) ? state : d.chance(50) ? state.left(1) : state + noise(d, 3);
    }
    const int weight = qBound(0, weightNear(d, lastWeight), 65'535);
    QByteArray answer;
    answer += char(weight % 256);
    answer += char(weight / 256);
    return d.chance(90) ? answer : d.chance(50) ? answer.left(1) : answer + answer.left(1);
}

QByteArray cas(TDice& d, bool asked, int lastWeight)
{
    if (!asked && d.chance(80)) {
        return d.pick<QByteArray>({"\x06", "\x06", "\x06", "x\x06", "\x06\x06", "\x06 "});
    }
    QByteArray packet = "\x01\x02";
    packet += d.pick({'S', 'S', 'S', 'S', 'U', 'U', 'F', 'E', '\0'});
    packet += d.pick({' ', ' ', ' ', ' ', '0', '-', '+'});
    packet += d.chance(70) ? QByteArray::number(qMax(0, weightNear(d, lastWeight)))
                                 .rightJustified(6, d.pick({' ', '0'}), true)
              : d.chance(30) ? QByteArray("      ")
                             : field(d, 6);
    packet += d.pick<QByteArray>({"kg", "g ", "K", "12", ""});
    packet += '\x04';
    if (d.chance(8)) {
        packet = packet.left(d.below(8)) + '\x04';
    }
    return packet;
}

QByteArray axisPacket(TDice& d)
{
    // 15 characters between the strings, of which the fifth to the ninth are the weight
    QByteArray text = d.pick<QByteArray>({"ST,+", "US,-", "S   ", "GS,G"}) + field(d, 5) +
                      d.pick<QByteArray>({" kg   ", "  g  x", "0kg 1\r", " kg..."});
    text = text.left(15);
    if (d.chance(25)) {
        text.insert(d.below(4), noise(d, 2));
    } else if (d.chance(15)) {
        text.chop(1);
    } else if (d.chance(70) && text.back() <= ' ') {
        text.back() = 'g';
    }
    if (d.chance(15)) {
        text = ' ' + text + '\0';
    }
    return '\x02' + text + "\r\n";
}

QByteArray upaQPacket(TDice& d)
{
    const QByteArray body = d.pick<QByteArray>({QByteArray::number(d.below(100'000)), field(d, 7), " 0.125 ",
                                                "2147483647", "2147483648", "99999999999999999999", "",
                                                "  \t", "none", "-12", "0", "k5", "\xA0", "1\xB2"});
    return 'W' + body + "kg";
}

QByteArray digiPacket(TDice& d)
{
    const QByteArray body =
        d.pick<QByteArray>({field(d, 6), "0 00500 00100 0005", "2147483647", "2147483648", "", "no weight",
                            QByteArray::number(d.below(50'000)), "\xB2\xB3"});
    return d.pick<QByteArray>({"B", "B", "0B", "BB", ""}) + body +
           d.pick<QByteArray>({"\r\n", "\r\n", "\r\n", "\r", "\n", "\r\r\n", "\r\nB7\r\n", "\r\n\r\n"});
}

QByteArray properPacket(TDice& d, int type, bool asked, int lastWeight)
{
    switch (type) {
    case 1:
        return massaK(d, asked, lastWeight);
    case 2:
        return cas(d, asked, lastWeight);
    case 3:
        return reversedPacket(d, 18);
    case 4:
        return reversedPacket(d, 17);
    case 5:
        return '<' + d.pick<QByteArray>({QByteArray(1, '\0'), "!1", "01", "<2", "9"}) +
               field(d, d.chance(90) ? 5 : 3) + d.pick<QByteArray>({"", "!", " kg", "<x", "\r\n"}) + '>';
    case 6:
        return digiPacket(d);
    case 7:
        return axisPacket(d);
    case 8:
        return upaQPacket(d);
    default:
        return noise(d, 30);
    }
}

} // namespace

QByteArray sampleBytes(TDice& d, int type, bool asked, int lastWeight)
{
    if (d.permille(2)) { // around the longest packet that is taken
        const QByteArray begin = d.pick<QByteArray>({"", "<", "\x02", "W", "\x01", "\x06", "B"});
        const QByteArray end = d.pick<QByteArray>({"", ">", "\r\n", "kg", "\x04", "\x06"});
        return begin + QByteArray(65'536 - begin.size() - end.size() + d.between(-1, 1), 'x') + end;
    }
    if (d.chance(10)) {
        type = d.between(1, 8);
    }
    QByteArray bytes;
    for (int packets = d.chance(80) ? 1 : d.between(2, 4); packets > 0; --packets) {
        if (d.chance(10)) {
            bytes += noise(d, 6);
        }
        bytes += properPacket(d, type, asked, lastWeight);
    }
    return d.chance(5) ? noise(d, 40) : bytes;
}

QString sampleText(TDice& d)
{
    QString text;
    for (int left = d.below(12); left > 0; --left) {
        text += d.pick<QChar>({u'a', u'A', u'b', u'a', u'0', u'1', u'9', u'1', u'\0', u' ', u'\u00FF',
                               u'\u00B2', u'\u0431', u'\u0661', u'\u4E01', QChar(d.below(256))});
    }
    return d.chance(5) ? text + QString::fromUcs4(U"\U0001F600") : text;
}

} // namespace tnv5::scales::model
