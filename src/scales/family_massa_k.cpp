// A dialogue of bytes: "D" asks whether the weight has settled, "E" for the weight, two bytes answer each.

#include "tnv5/common/bit_text.h"
#include "tnv5/scales/families.h"

#include <cstdlib>

namespace tnv5::scales {

namespace {

qsizetype wholeBuffer(TStep /*step*/, const QByteArray& buffer)
{
    return buffer.size();
}

uchar byteAt(const QByteArray& packet, qsizetype index)
{
    return static_cast<uchar>(packet.at(index));
}

TDecision decode(TStep step, const QByteArray& packet, int lastWeight)
{
    TDecision decision;
    if (packet.size() != 2) {
        return decision;
    }
    const QString low = common::ByteToBinStr(byteAt(packet, 0));
    if (step == TStep::Hey) {
        if (low.startsWith(u'1')) { // bit 7: settled
            decision.write = "E";
            decision.askOnceWritten = true;
        }
        return decision;
    }
    const int weight = common::BitToint(common::ByteToBinStr(byteAt(packet, 1)) + low);
    decision.log << QStringLiteral("%1 %2").arg(lastWeight).arg(weight);
    decision.change = weight;
    return decision;
}

} // namespace

TFamily familyMassaK()
{
    TFamily family;
    family.name = QStringLiteral("«МАССА-К» МК_ТВ, МК_ТН");
    family.settings = platform::TLineSettings{.baudRate = 4800, .parity = platform::TParity::Even};
    family.readGapMs = 10;
    family.request = "D";
    family.requestAfterReset = true; // unlike all others; intended
    family.findStart = fromFirstByte;
    family.findStop = wholeBuffer;
    family.decode = decode;
    return family;
}

} // namespace tnv5::scales
