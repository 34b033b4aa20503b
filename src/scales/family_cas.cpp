// A dialogue of control characters: ENQ is answered by ACK, DC1 by a packet from SOH to EOT.

#include "tnv5/common/text.h"
#include "tnv5/scales/families.h"

namespace tnv5::scales {

namespace {

constexpr char kSoh = 0x01;
constexpr char kEot = 0x04;
constexpr char kAck = 0x06;

// places in the packet, counted from 0 at SOH
constexpr qsizetype kState = 2;
constexpr qsizetype kSign = 3;
constexpr qsizetype kWeight = 4;
constexpr qsizetype kWeightLength = 6;

constexpr int kOverload = 1;
constexpr int kNegative = 2;

qsizetype lastAt(const QByteArray& buffer, char byte)
{
    return buffer.lastIndexOf(byte) + 1;
}

qsizetype findStart(TStep step, const QByteArray& buffer)
{
    return lastAt(buffer, step == TStep::Hey ? kAck : kSoh);
}

qsizetype findStop(TStep step, const QByteArray& buffer)
{
    return lastAt(buffer, step == TStep::Hey ? kAck : kEot);
}

TDecision decode(TStep step, const QByteArray& packet, int /*lastWeight*/)
{
    TDecision decision;
    if (step == TStep::Hey) {
        decision.ask = true;
        decision.write = "\x11";
        return decision;
    }
    const char state = packet.size() > kState ? packet.at(kState) : '\0';
    if (state == 'F') {
        decision.message = kOverload;
    }
    if (state != 'S' && state != 'U') {
        return decision;
    }
    if (packet.size() > kSign && packet.at(kSign) == '-') {
        decision.message = kNegative;
        return decision;
    }
    const QString digits = digitsOf(bytesAsText(packet.mid(kWeight, kWeightLength)));
    if (!digits.isEmpty()) {
        decision.change = digits.toInt(); // six digits at most
    }
    return decision;
}

} // namespace

TFamily familyCas()
{
    TFamily family;
    family.name = QStringLiteral("«CAS» АР, AD, DB, ER, EM");
    family.settings = platform::TLineSettings{.baudRate = 9600};
    family.readGapMs = 10;
    family.request = "\x05";
    family.findStart = findStart;
    family.findStop = findStop;
    family.endSize = 1;
    family.decode = decode;
    return family;
}

} // namespace tnv5::scales
