#include "tnv5/tools/monitor_cutter.h"

#include "tnv5/platform/code_page.h"

#include <algorithm>
#include <array>

namespace tnv5::tools {

namespace {

struct TTag
{
    QByteArrayView text;
    TMonitorPiece::TKind kind;
};

constexpr std::array<TTag, 3> kTags = {
    {{"LOG!", TMonitorPiece::Log}, {"ERROR!", TMonitorPiece::Error}, {"STATUS!", TMonitorPiece::Status}}};
constexpr char kTagEnd = '!';
constexpr char kTextEnd = '&';

} // namespace

QList<TMonitorPiece> TMonitorCutter::take(QByteArrayView bytes)
{
    QList<TMonitorPiece> pieces;
    for (const char byte : bytes) {
        if (FKind == TMonitorPiece::Rest) {
            takeOutside(byte, pieces);
        } else {
            takeInside(byte, pieces);
        }
        if (FPending.size() >= kMaxText) {
            endRest(pieces);
        }
    }
    return pieces;
}

QList<TMonitorPiece> TMonitorCutter::end()
{
    QList<TMonitorPiece> pieces;
    endRest(pieces);
    return pieces;
}

void TMonitorCutter::takeOutside(char byte, QList<TMonitorPiece>& pieces)
{
    FPending += byte;
    if (byte != kTagEnd) {
        return;
    }
    for (const TTag& tag : kTags) {
        if (FPending.endsWith(tag.text)) {
            FPending.chop(tag.text.size());
            endRest(pieces);
            FPending = tag.text.toByteArray();
            FBody = FPending.size();
            FKind = tag.kind;
            return;
        }
    }
}

void TMonitorCutter::takeInside(char byte, QList<TMonitorPiece>& pieces)
{
    if (byte != kTextEnd) {
        FPending += byte;
        return;
    }
    pieces.append({FKind, platform::fromWire(QByteArrayView(FPending).sliced(FBody).toByteArray())});
    FPending.clear();
    FKind = TMonitorPiece::Rest;
}

void TMonitorCutter::endRest(QList<TMonitorPiece>& pieces)
{
    if (!std::all_of(FPending.cbegin(), FPending.cend(), [](char byte) { return byte == kTextEnd; })) {
        pieces.append({TMonitorPiece::Rest, platform::fromWire(FPending)});
    }
    FPending.clear();
    FKind = TMonitorPiece::Rest;
}

} // namespace tnv5::tools
