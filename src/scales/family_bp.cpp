// Eight bytes ask; at least 17 bytes answer, the weight in the first six, least significant first. The port
// keeps the host's settings; intended.

#include "tnv5/scales/families.h"
#include "tnv5/scales/family_reversed.h"

namespace tnv5::scales {

namespace {

constexpr qsizetype kPacket = 17;

qsizetype findStop(TStep /*step*/, const QByteArray& buffer)
{
    return buffer.size() >= kPacket ? buffer.size() : 0;
}

TDecision decode(TStep /*step*/, const QByteArray& packet, int /*lastWeight*/)
{
    TDecision decision;
    decision.ask = true;
    decision.field = reversedField(packet);
    return decision;
}

} // namespace

TFamily familyBp()
{
    TFamily family;
    family.name = QStringLiteral("ВР4149, BS-15D1.3T");
    family.readGapMs = 10;
    family.request = QByteArray("\x00\x00\x03\x00\x00\x00\x00\x00", 8);
    family.findStart = fromFirstByte;
    family.findStop = findStop;
    family.decode = decode;
    return family;
}

} // namespace tnv5::scales
