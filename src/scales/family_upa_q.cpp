// Talks by itself: packets from "W" to "kg"; the weight is all their digits.

#include "tnv5/common/text.h"
#include "tnv5/scales/families.h"

namespace tnv5::scales {

namespace {

TDecision decode(TStep /*step*/, const QByteArray& packet, int /*lastWeight*/)
{
    TDecision decision;
    decision.ask = true;
    decision.tolerant = true;
    decision.logField = false;
    const QString text = bytesAsText(packet);
    if (!common::Trim(text).isEmpty()) {
        decision.field = digitsOf(text);
    }
    return decision;
}

} // namespace

TFamily familyUpaQ()
{
    TFamily family;
    family.name = QStringLiteral("«UPA-Q» continuous mode (made in China)");
    family.settings = platform::TLineSettings{.baudRate = 9600};
    family.start = "W";
    family.stop = "kg";
    family.findStart = byStrings;
    family.findStop = byStrings;
    family.decode = decode;
    return family;
}

} // namespace tnv5::scales
