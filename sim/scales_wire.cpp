#include "sim/scales_wire.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace tnv5::sim {

namespace {

constexpr int kGramsPerKilogram = 1'000;

// Decimal places of a number without its sign.
QByteArray digits(int value, qsizetype width)
{
    return QByteArray::number(std::abs(value)).rightJustified(width, '0', true);
}

// A field of fixed width for scales that show a sign in its first place; what they cannot show is blank.
QByteArray signedField(const TLoad& load, qsizetype width)
{
    if (load.Over) {
        return QByteArray(width, ' ');
    }
    return load.Weight < 0 ? '-' + digits(load.Weight, width - 1) : digits(load.Weight, width);
}

// Kilograms with a point and three decimals for scales that have no sign; what they cannot show is dashes.
QByteArray kilograms(const TLoad& load)
{
    if (load.Over || load.Weight < 0) {
        return "--.---";
    }
    return digits(load.Weight / kGramsPerKilogram, 2) + '.' + digits(load.Weight % kGramsPerKilogram, 3);
}

bool shown(const TLoad& load)
{
    return !load.Over && load.Weight >= 0;
}

// 1: a state byte whose bit 7 tells that the weight has settled, then the weight, low byte first

QByteArray stateBytes(const TLoad& load)
{
    return load.Settled && shown(load) ? QByteArray("\x80\x00", 2) : QByteArray(2, '\0');
}

QByteArray weightBytes(const TLoad& load)
{
    const auto weight = shown(load) ? static_cast<unsigned>(load.Weight) : 0U;
    return {QByteArray(1, static_cast<char>(weight & 0xFFU)) + static_cast<char>(weight >> 8U)};
}

// 2: SOH STX, state, sign, six characters, unit, check byte, ETX EOT

QByteArray ready(const TLoad& /*load*/)
{
    return "\x06";
}

QByteArray framedWeight(const TLoad& load)
{
    QByteArray body;
    body += load.Over ? 'F' : load.Settled ? 'S' : 'U';
    body += load.Weight < 0 ? '-' : ' ';
    body += load.Over ? QByteArray("--.---") : kilograms({std::abs(load.Weight), true, false});
    body += "kg";
    char check = 0;
    for (const char byte : body) {
        check = static_cast<char>(check ^ byte);
    }
    return "\x01\x02" + body + check + "\x03\x04";
}

// 3 and 4: six characters, the last one first, then what nobody reads

QByteArray reversed(const TLoad& load, qsizetype size)
{
    QByteArray field = signedField(load, 6);
    std::reverse(field.begin(), field.end());
    return field.leftJustified(size, '0');
}

QByteArray eighteenBytes(const TLoad& load)
{
    return reversed(load, 18);
}

QByteArray seventeenBytes(const TLoad& load)
{
    return reversed(load, 17);
}

// 5: the request comes back with five characters in it

QByteArray bracketed(const TLoad& load)
{
    return QByteArray("<\x00!", 3) + signedField(load, 5) + "\r>";
}

// 6: a line from "B" to CR LF

QByteArray lineOfB(const TLoad& load)
{
    return "B " + kilograms(load) + " kg\r\n";
}

// 7: STX, 15 characters with the weight in the fifth to ninth, CR LF

QByteArray fifteenCharacters(const TLoad& load)
{
    return (load.Settled ? "\x02ST  " : "\x02US  ") + signedField(load, 5) + " g NET\r\n";
}

// 8: from "W" to "kg"

QByteArray fromWToKg(const TLoad& load)
{
    return "W " + kilograms(load) + "kg";
}

} // namespace

const TScaleWire* scaleWire(int family)
{
    static const std::vector<TScaleWire> wires = {
        {"D", stateBytes, "E", weightBytes, 65'535, {}},
        {"\x05", ready, "\x11", framedWeight, 99'999, "\x01\x04\x06"},
        {QByteArray("\x00\x00\x03", 3), eighteenBytes, {}, nullptr, 999'999, {}},
        {QByteArray("\x00\x00\x03\x00\x00\x00\x00\x00", 8), seventeenBytes, {}, nullptr, 999'999, {}},
        {QByteArray("<\x00!>", 4), bracketed, {}, nullptr, 99'999, "<>"},
        {"\x05\r", lineOfB, {}, nullptr, 99'999, "B\r\n"},
        {{}, fifteenCharacters, {}, nullptr, 99'999, "\x02\r\n"},
        {{}, fromWToKg, {}, nullptr, 99'999, "Wkg"},
    };
    return family >= 1 && family <= static_cast<int>(wires.size())
               ? &wires[static_cast<std::size_t>(family - 1)]
               : nullptr;
}

} // namespace tnv5::sim
