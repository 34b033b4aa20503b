#include "model/scales_samples.h"

#include <algorithm>

namespace tnv5::scales::model {

namespace {

QByteArray noise(TRandom& random, int longest)
{
    QByteArray bytes;
    for (int left = random.below(longest + 1); left > 0; --left) {
        bytes +=
            random.chance(50)
                ? random.pick({'\0', '\x01', '\x02', '\x04', '\x05', '\x06', '\r', '\n', ' ', '<', '>', 'B',
                               'W',  'k',    'g',    'S',    'U',    'F',    '-',  '+',  '0', '9', '.', '\t'})
                : char(random.below(256));
    }
    return bytes;
}

/// A weight, often a little beside the last one: small changes are dropped.
int weightNear(TRandom& random, int last)
{
    if (random.chance(55)) {
        return qBound(0, last, 70'000) + random.pick({-4, -3, -2, -1, 0, 1, 2, 3, 4});
    }
    return random.pick({0, 1, 2, 3, 127, 128, 255, 256, 999, 32'767, 32'768, 65'535, random.below(65'536)});
}

/// A field of a width, mostly a number in some of the forms that scales and lines make of it.
QByteArray field(TRandom& random, int width)
{
    const int digits = random.between(0, width);
    QByteArray text;
    for (int at = 0; at < digits; ++at) {
        text += char('0' + random.below(10));
    }
    if (random.chance(15)) {
        text.prepend(random.pick({'+', '-'}));
    }
    if (random.chance(6)) {
        text.prepend(random.pick({'+', '-', '\t', '\0', '\xA0', '.'}));
    }
    const bool right = random.chance(80);
    const char fill = random.pick({' ', ' ', ' ', '0'});
    text = right ? text.rightJustified(width, fill, true) : text.leftJustified(width, fill, true);
    if (random.chance(6)) {
        text[random.below(width)] = char(random.below(256));
    }
    return text;
}

QByteArray reversedPacket(TRandom& random, int length)
{
    QByteArray text = field(random, 6);
    std::reverse(text.begin(), text.end());
    const int size = random.chance(75) ? length : length + random.pick({-17, -5, -1, 1, 2, length, 30});
    while (text.size() < size) {
        text += char(random.below(256));
    }
    return text.left(size);
}

QByteArray massaK(TRandom& random, bool asked, int lastWeight)
{
    if (!asked) {
        QByteArray state;
        state += char(random.chance(80) ? 128 + random.below(128) : random.below(128));
        state += char(random.below(256));
        return random.chance(88) ? state : random.chance(50) ? state.left(1) : state + noise(random, 3);
    }
    const int weight = qBound(0, weightNear(random, lastWeight), 65'535);
    QByteArray answer;
    answer += char(weight % 256);
    answer += char(weight / 256);
    return random.chance(90) ? answer : random.chance(50) ? answer.left(1) : answer + answer.left(1);
}

QByteArray cas(TRandom& random, bool asked, int lastWeight)
{
    if (!asked && random.chance(80)) {
        return random.pick<QByteArray>({"\x06", "\x06", "\x06", "x\x06", "\x06\x06", "\x06 "});
    }
    QByteArray packet = "\x01\x02";
    packet += random.pick({'S', 'S', 'S', 'S', 'U', 'U', 'F', 'E', '\0'});
    packet += random.pick({' ', ' ', ' ', ' ', '0', '-', '+'});
    packet += random.chance(70) ? QByteArray::number(qMax(0, weightNear(random, lastWeight)))
                                      .rightJustified(6, random.pick({' ', '0'}), true)
              : random.chance(30) ? QByteArray("      ")
                                  : field(random, 6);
    packet += random.pick<QByteArray>({"kg", "g ", "K", "12", ""});
    packet += '\x04';
    if (random.chance(8)) {
        packet = packet.left(random.below(8)) + '\x04';
    }
    return packet;
}

QByteArray axisPacket(TRandom& random)
{
    // 15 characters between the strings, of which the fifth to the ninth are the weight
    QByteArray text = random.pick<QByteArray>({"ST,+", "US,-", "S   ", "GS,G"}) + field(random, 5) +
                      random.pick<QByteArray>({" kg   ", "  g  x", "0kg 1\r", " kg..."});
    text = text.left(15);
    if (random.chance(25)) {
        text.insert(random.below(4), noise(random, 2));
    } else if (random.chance(15)) {
        text.chop(1);
    } else if (random.chance(70) && text.back() <= ' ') {
        text.back() = 'g';
    }
    if (random.chance(15)) {
        text = ' ' + text + '\0';
    }
    return '\x02' + text + "\r\n";
}

QByteArray upaQPacket(TRandom& random)
{
    const QByteArray body = random.pick<QByteArray>(
        {QByteArray::number(random.below(100'000)), field(random, 7), " 0.125 ", "2147483647", "2147483648",
         "99999999999999999999", "", "  \t", "none", "-12", "0", "k5", "\xA0", "1\xB2"});
    return 'W' + body + "kg";
}

QByteArray digiPacket(TRandom& random)
{
    const QByteArray body =
        random.pick<QByteArray>({field(random, 6), "0 00500 00100 0005", "2147483647", "2147483648", "",
                                 "no weight", QByteArray::number(random.below(50'000)), "\xB2\xB3"});
    return random.pick<QByteArray>({"B", "B", "0B", "BB", ""}) + body +
           random.pick<QByteArray>({"\r\n", "\r\n", "\r\n", "\r", "\n", "\r\r\n", "\r\nB7\r\n", "\r\n\r\n"});
}

QByteArray properPacket(TRandom& random, int type, bool asked, int lastWeight)
{
    switch (type) {
    case 1:
        return massaK(random, asked, lastWeight);
    case 2:
        return cas(random, asked, lastWeight);
    case 3:
        return reversedPacket(random, 18);
    case 4:
        return reversedPacket(random, 17);
    case 5:
        return '<' + random.pick<QByteArray>({QByteArray(1, '\0'), "!1", "01", "<2", "9"}) +
               field(random, random.chance(90) ? 5 : 3) +
               random.pick<QByteArray>({"", "!", " kg", "<x", "\r\n"}) + '>';
    case 6:
        return digiPacket(random);
    case 7:
        return axisPacket(random);
    case 8:
        return upaQPacket(random);
    default:
        return noise(random, 30);
    }
}

} // namespace

QByteArray sampleBytes(TRandom& random, int type, bool asked, int lastWeight)
{
    if (random.permille(2)) { // around the longest packet that is taken
        const QByteArray begin = random.pick<QByteArray>({"", "<", "\x02", "W", "\x01", "\x06", "B"});
        const QByteArray end = random.pick<QByteArray>({"", ">", "\r\n", "kg", "\x04", "\x06"});
        return begin + QByteArray(65'536 - begin.size() - end.size() + random.between(-1, 1), 'x') + end;
    }
    if (random.chance(10)) {
        type = random.between(1, 8);
    }
    QByteArray bytes;
    for (int packets = random.chance(80) ? 1 : random.between(2, 4); packets > 0; --packets) {
        if (random.chance(10)) {
            bytes += noise(random, 6);
        }
        bytes += properPacket(random, type, asked, lastWeight);
    }
    return random.chance(5) ? noise(random, 40) : bytes;
}

QString sampleText(TRandom& random)
{
    QString text;
    for (int left = random.below(12); left > 0; --left) {
        text += random.pick<QChar>({u'a', u'A', u'b', u'a', u'0', u'1', u'9', u'1', u'\0', u' ', u'\u00FF',
                                    u'\u00B2', u'\u0431', u'\u0661', u'\u4E01', QChar(random.below(256))});
    }
    return random.chance(5) ? text + QString::fromUcs4(U"\U0001F600") : text;
}

} // namespace tnv5::scales::model
