// Three zero-filled bytes ask; at least 18 bytes answer, the weight in the first six, least significant
// first.

#include "tnv5/scales/families.h"
#include "tnv5/scales/family_reversed.h"

namespace tnv5::scales {

namespace {

constexpr qsizetype kPacket = 18;

qsizetype findStop(TStep /*step*/, const QByteArray& buffer)
{
    return buffer.size() >= kPacket ? buffer.size() : 0;
}

TDecision decode(TStep /*step*/, const QByteArray& packet, int /*lastWeight*/)
{
    TDecision decision;
    decision.ask = true;
    decision.log << QStringLiteral("Ask  ") + bytesAsText(packet);
    decision.field = reversedField(packet);
    return decision;
}

} // namespace

TFamily familyBa()
{
    TFamily family;
    family.name = QStringLiteral("ВА-xx, ВЕ-xx, ПВ-xx, ПВм-xx, ВТА-60, ICSxxNT, TigerE");
    family.settings = platform::TLineSettings{.baudRate = 4800, .parity = platform::TParity::Even};
    family.readGapMs = 10;
    family.request = QByteArray("\x00\x00\x03", 3);
    family.findStart = fromFirstByte;
    family.findStop = findStop;
    family.decode = decode;
    return family;
}

} // namespace tnv5::scales
