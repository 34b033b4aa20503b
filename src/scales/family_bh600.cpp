// A request and its answer stand between "<" and ">".

#include "tnv5/common/text.h"
#include "tnv5/scales/families.h"

namespace tnv5::scales {

namespace {

TDecision decode(TStep /*step*/, const QByteArray& packet, int /*lastWeight*/)
{
    TDecision decision;
    decision.ask = true;
    decision.field = fieldUnlessBlank(common::Copy(bytesAsText(packet), 3, 5).toString());
    return decision;
}

} // namespace

TFamily familyBh600()
{
    TFamily family;
    family.name = QStringLiteral("ВH-600 Промприлад"); // a Cyrillic В beside a Latin H; intended
    family.settings = platform::TLineSettings{.baudRate = 9600};
    family.request = QByteArray("<\x00!>", 4);
    family.start = "<";
    family.stop = ">";
    family.findStart = byStrings;
    family.findStop = byStrings;
    family.decode = decode;
    return family;
}

} // namespace tnv5::scales
