// ENQ CR asks; the answer runs from the last "B" to the last CR LF.

#include "tnv5/scales/families.h"

namespace tnv5::scales {

namespace {

constexpr char kEnd[] = "\r\n";

qsizetype findStart(TStep /*step*/, const QByteArray& buffer)
{
    return buffer.lastIndexOf('B') + 1;
}

qsizetype findStop(TStep /*step*/, const QByteArray& buffer)
{
    return buffer.lastIndexOf(kEnd) + 1;
}

TDecision decode(TStep /*step*/, const QByteArray& packet, int /*lastWeight*/)
{
    TDecision decision;
    decision.ask = true;
    decision.field = fieldUnlessBlank(digitsOf(bytesAsText(packet)));
    return decision;
}

} // namespace

TFamily familyDigi()
{
    TFamily family;
    family.name = QStringLiteral("«DIGI» DS-788");
    family.settings = platform::TLineSettings{.baudRate = 9600};
    family.request = "\x05\r";
    family.findStart = findStart;
    family.findStop = findStop;
    family.endSize = static_cast<qsizetype>(qstrlen(kEnd));
    family.decode = decode;
    return family;
}

} // namespace tnv5::scales
