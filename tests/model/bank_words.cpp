#include "model/bank_words.h"

namespace tnv5::bank::model {

namespace {

QByteArray field(TDice& d, const QByteArray& tag)
{
    return tag + d.pick<QByteArray>({"", "00", "05", "51", "1", "4111111111111111", "X",
                                     QByteArray(d.below(1100), 'z'), "01=", "06=", "\x02", "\x05", "\x04",
                                     "\xFF\x80", QByteArray(1, '\0')});
}

QByteArray body(TDice& d)
{
    QByteArrayList list;
    switch (d.below(8)) {
    case 0:
    case 1:
        return "\x05";
    case 2:
        return "\x04";
    case 3:
        list = {field(d, "01="), "02=A/B", "03=1", "04=V", "10=7"};
        break;
    case 4:
    case 5:
        list = {"01=4111", "06=" + d.pick<QByteArray>({"00", "0", "10", "05", "51", "9", ""}), "40=3", "41=4",
                "42=5"};
        break;
    default:
        for (int left = d.between(1, 6); left > 0; --left) {
            list << field(d, d.pick({"01=", "02=", "03=", "04=", "06=", "10=", "40=", "41=", "42=", "99="}));
        }
    }
    return list.join('\x1C');
}

} // namespace

QByteArray sampleFrame(TDice& d)
{
    if (d.chance(12)) {
        return d.noise(12, QByteArray("\x02\x03\x04\x05\x06\x07\0a!\x1C", 10));
    }
    if (d.permille(5)) { // about as long as a packet may be
        return '\x02' + QByteArray(65'536 + d.between(-4, 4), 'x') + '\x03';
    }
    const QByteArray inner = body(d) + '\x03';
    char check = 0;
    for (const char byte : inner) {
        check = char(check ^ byte);
    }
    if (d.chance(8)) {
        check = char(check ^ (1 << d.below(8)));
    }
    return '\x02' + inner + check;
}

} // namespace tnv5::bank::model
