#include "tnv5/tools/explanation.h"

#include "tnv5/tools/explain_scales.h"

namespace tnv5::tools {

namespace {

constexpr int kVerdictWidth = 5;
constexpr int kBytesWidth = 32;

QString verdict(TChecksum checksum)
{
    switch (checksum) {
    case TChecksum::Right:
        return QStringLiteral("right");
    case TChecksum::Wrong:
        return QStringLiteral("WRONG");
    case TChecksum::None:
        break;
    }
    return QStringLiteral("-");
}

} // namespace

TExplanation explain(TProtocol protocol, const QByteArray& piece, int scalesType)
{
    switch (protocol) {
    case TProtocol::Bus:
        return explainBus(piece);
    case TProtocol::Turnstile:
        return explainTurnstile(piece);
    case TProtocol::Scales:
        break;
    }
    return explainScales(scalesType, piece);
}

QString explanationLine(const QByteArray& piece, const TExplanation& explanation)
{
    return QLatin1Char(directionMark(explanation.Direction)) +
           (u' ' + verdict(explanation.Checksum).leftJustified(kVerdictWidth) + u' ' +
            QString::fromLatin1(escaped(piece)).leftJustified(kBytesWidth) + QStringLiteral("  ") +
            explanation.Meaning);
}

} // namespace tnv5::tools
