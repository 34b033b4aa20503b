// Talks by itself: packets from STX to CR LF, 15 characters, the weight in characters 5 to 9.

#include "tnv5/common/text.h"
#include "tnv5/scales/families.h"

namespace tnv5::scales {

namespace {

constexpr qsizetype kPacket = 15;

TDecision decode(TStep /*step*/, const QByteArray& packet, int /*lastWeight*/)
{
    TDecision decision;
    decision.ask = true;
    decision.tolerant = true;
    const QString text = bytesAsText(packet);
    const QStringView trimmed = common::Trim(text);
    if (trimmed.size() == kPacket) {
        decision.field = fieldUnlessBlank(common::Copy(trimmed, 5, 5).toString());
    }
    return decision;
}

} // namespace

TFamily familyAxis()
{
    TFamily family;
    family.name = QStringLiteral("«Axis»");
    family.settings = platform::TLineSettings{.baudRate = 9600};
    family.start = "\x02";
    family.stop = "\r\n";
    family.findStart = byStrings;
    family.findStop = byStrings;
    family.decode = decode;
    return family;
}

} // namespace tnv5::scales
