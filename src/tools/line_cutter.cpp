#include "tnv5/tools/line_cutter.h"

#include "tnv5/common/crc8.h"
#include "tnv5/scales/families.h"

#include <algorithm>

namespace tnv5::tools {

namespace {

constexpr qsizetype kAddressLength = 4;
constexpr qsizetype kChecksumLength = 2;
constexpr qsizetype kShortestCommand = 9;

bool isStart(char c)
{
    return c == '$' || c == '#';
}

bool isAddressCharacter(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z');
}

bool hasRightChecksum(QByteArrayView piece)
{
    return piece.size() >= kShortestCommand &&
           common::HexByte(common::Crc8(piece.chopped(kChecksumLength))).toLatin1() ==
               piece.last(kChecksumLength);
}

/// A start character that an address follows, at or behind `at`; -1 when there is none.
qsizetype findStart(QByteArrayView bytes, qsizetype at)
{
    for (; at + kAddressLength < bytes.size(); ++at) {
        const QByteArrayView address = bytes.sliced(at + 1, kAddressLength);
        if (isStart(bytes[at]) && std::all_of(address.begin(), address.end(), isAddressCharacter)) {
            return at;
        }
    }
    return -1;
}

/// What a packet of a scale ends with: the family's stop string, or what stands here for a family that finds
/// its packets by positions. Empty: only silence ends it.
QByteArrayView endOfScales(int number)
{
    switch (number) {
    case 2:
        return "\x04";
    case 6:
        return "\n";
    default:
        const scales::TFamily* family = scales::familyOf(number);
        return family == nullptr ? QByteArrayView() : QByteArrayView(family->stop);
    }
}

/// What a family asks with, when that can be told from an answer: several bytes. It shows when both sides of
/// a line are heard.
QByteArrayView requestOfScales(int number)
{
    const scales::TFamily* family = scales::familyOf(number);
    return family == nullptr || family->request.size() < 2 ? QByteArrayView() : family->request;
}

/// The control characters of family 2 that are pieces of their own outside a packet.
bool isAlone(int family, char byte)
{
    return family == 2 && (byte == '\x05' || byte == '\x06' || byte == '\x11');
}

} // namespace

QByteArrayList TLineCutter::take(QByteArrayView bytes)
{
    if (FProtocol == TProtocol::Scales) {
        return takeOfScales(bytes);
    }
    QByteArrayList pieces;
    for (const char byte : bytes) {
        if (isStart(byte) && endsBeforeStart()) {
            flush(pieces);
        }
        FPending += byte;
        if (byte == '\r' || FPending.size() >= kMaxPiece) {
            flush(pieces);
        }
    }
    return pieces;
}

QByteArrayList TLineCutter::takeOfScales(QByteArrayView bytes)
{
    const QByteArrayView end = endOfScales(FScalesType);
    const QByteArrayView asked = requestOfScales(FScalesType);
    QByteArrayList pieces;
    for (const char byte : bytes) {
        const bool alone = isAlone(FScalesType, byte) && !FPending.startsWith('\x01');
        if (alone) {
            flush(pieces);
        }
        FPending += byte;
        const bool request = !asked.isEmpty() && FPending == asked;
        const bool ended = !end.isEmpty() && FPending.endsWith(end);
        if (alone || request || ended || FPending.size() >= kMaxPiece) {
            flush(pieces);
        }
    }
    return pieces;
}

QByteArrayList TLineCutter::pause()
{
    QByteArrayList pieces;
    flush(pieces);
    return pieces;
}

bool TLineCutter::endsBeforeStart() const
{
    if (FPending.isEmpty()) {
        return false;
    }
    return !isStart(FPending.front()) || (FProtocol == TProtocol::Bus && hasRightChecksum(FPending));
}

// A damaged command on a bus has nothing that ends it: then a start character with an address behind it does.
void TLineCutter::flush(QByteArrayList& pieces)
{
    if (FPending.isEmpty()) {
        return;
    }
    QByteArrayView rest(FPending);
    const bool damaged =
        FProtocol == TProtocol::Bus && !hasRightChecksum(rest.endsWith('\r') ? rest.chopped(1) : rest);
    for (qsizetype start = findStart(rest, 1); damaged && start > 0; start = findStart(rest, 1)) {
        pieces.append(rest.first(start).toByteArray());
        rest = rest.sliced(start);
    }
    pieces.append(rest.toByteArray());
    FPending.clear();
}

} // namespace tnv5::tools
