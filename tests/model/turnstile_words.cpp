#include "model/turnstile_words.h"

#include "model/kit/texts.h"

namespace tnv5::turnstile::model {

QString TWords::address()
{
    if (!pending.isEmpty() && dice.chance(55)) {
        return pending[dice.below(int(pending.size()))];
    }
    return dice.chance(85) ? dice.text({"01A", "01A", "01D", "02A", "02B", "99D"}) : oddAddress();
}

QString TWords::oddAddress()
{
    return dice.text(
        {"00A", "01a", "01d", "A1D", "0xA", "01Я", "Яж№", "01 ", "01", "1", "", "01AA", "01漢", "-1D"});
}

QString TWords::card()
{
    return dice.text({"12345678", "87654321", "0", "", "-1-1-1-1-1", "-2-2-2-2-2", "-1-1-1-1-1 ", "карта",
                      "A!B&C", "$7#"});
}

QString TWords::status()
{
    return dice.text({"NEW", "OPEN", "CLOSE", "PROGRESS", "FINISH", "TIMEOUT", "NOANSWER", "CRC-ERROR",
                      "CRC-ERROR", "open", ""});
}

QString TWords::event()
{
    const QString who = address();
    const QString letter = dice.text({"R", "R", "R", "R", "P", "P", "G", "G", "F", "r", "X", "Я", ""});
    return u'$' + who + letter + (letter == "R" || dice.chance(20) ? card() : QString());
}

QString TWords::message()
{
    QString said =
        dice.text({"HardReset", "Wait-Card", "Relay", "CRC-ERROR", "Gate-Open", "Btn-Activ", "InG-Activ"});
    const int letters = dice.below(4);
    for (QChar& character : said) {
        const bool upper = letters == 0 || (letters == 1 && dice.chance(50));
        character = letters == 3 ? character : upper ? character.toUpper() : character.toLower();
    }
    if (dice.chance(20)) {
        said =
            dice.pick<QString>({said + " ", said.chopped(1), " " + said, said + " 2", "", "Ready", "ошибка"});
    }
    return u'#' + address() + said;
}

QString TWords::line()
{
    const int kind = dice.below(100);
    if (kind < 90) {
        return kind < 55 ? event() : message();
    }
    return dice.text({"$000900", "$000900", "$000900 ", "$00090", "$0009001D", "", "$", "#", "$0", "#01",
                      "$01A", "#01D", "*01AR1", "Я", "01AR1", "$$01AR1", "##01DBtn-Activ", "#漢字\x01Relay"});
}

QByteArray TWords::stream()
{
    const auto noise = [this] { return dice.noise(5, "\x80\xA4\xC0\xE9\xFF\x98"); };
    QByteArray bytes;
    for (int lines = dice.pick({1, 1, 1, 2, 3, 4}); lines > 0; --lines) {
        bytes += dice.chance(10) ? noise() : QByteArray();
        bytes += bytesOf(line());
        bytes += dice.chance(8) ? noise() : QByteArray();
        bytes += dice.pick<const char*>({"\r", "\r", "\r", "\r", "\r", "\r", "\r", "\r", "\r\n", ""});
    }
    if (dice.permille(1)) { // around the longest packet
        bytes += dice.pick<QByteArray>({"$", "#"}) + QByteArray(dice.between(65'528, 65'538), 'x') + '\r';
    }
    return bytes;
}

QVariant TWords::answer(int mode)
{
    if (dice.chance(12)) {
        return dice.pick<QVariant>({true, false,        qlonglong{1},  uint{0}, 1.0,       0.0,
                                    0.4,  0.6,          1.4,           "1",     "0",       " 1",
                                    "+1", "-1",         "01",          "x",     "",        "1 ",
                                    "1x", "2147483648", "-2147483649", "- 1",   QVariant()});
    }
    return mode == 0 ? dice.pick({1, 1, 1, 1, 1, 0, 0, 0, -1, 2}) : dice.pick({1, 1, 1, 1, 0, -1, -1, 2});
}

} // namespace tnv5::turnstile::model
