#include "tnv5/tools/explain_scales.h"

#include "tnv5/common/convert.h"
#include "tnv5/scales/families.h"
#include "tnv5/scales/scales_texts.h"

namespace tnv5::tools {

namespace {

constexpr int kEnglish = 2;

constexpr int kFamilyOfBytes = 1;   // two bytes answer each request, and nothing tells one from the other
constexpr int kFamilyOfControl = 2; // single control characters before the weight

TExplanation fromScale(const QString& meaning)
{
    return {TDirection::FromEquipment, TChecksum::None, meaning};
}

TExplanation toScale(const QString& meaning)
{
    return {TDirection::ToEquipment, TChecksum::None, meaning};
}

TExplanation noPacket()
{
    return {TDirection::Unknown, TChecksum::None, QStringLiteral("no packet of this scale")};
}

QString weightText(int weight)
{
    return QStringLiteral("weight %1").arg(weight);
}

/// The packet as the family cuts it out of the piece; nothing when there is none.
std::optional<QByteArray> packetIn(const scales::TFamily& family, const QByteArray& piece)
{
    const qsizetype start = family.findStart(scales::TStep::Ask, piece);
    const qsizetype begin = start == -1 ? piece.indexOf(family.start) : start - 1;
    if (begin < 0) {
        return std::nullopt;
    }
    const QByteArray rest = piece.mid(begin);
    const qsizetype stop = family.findStop(scales::TStep::Ask, rest);
    if (stop != -1) {
        return stop > 0 ? std::make_optional(rest.left(stop)) : std::nullopt;
    }
    const qsizetype end = rest.indexOf(family.stop, family.start.size());
    return end < 0 ? std::nullopt
                   : std::make_optional(rest.mid(family.start.size(), end - family.start.size()));
}

QString fieldMeaning(const QString& field)
{
    try {
        return weightText(common::StrToInt(field));
    } catch (const platform::EConvertError&) {
        return QStringLiteral("\"%1\", which is no weight")
            .arg(QString::fromLatin1(escaped(field.toLatin1())));
    }
}

QString meaningOf(const scales::TDecision& decision)
{
    if (decision.message >= 0) {
        return scales::messageText(decision.message, kEnglish);
    }
    if (decision.change) {
        return weightText(*decision.change);
    }
    return decision.field ? fieldMeaning(*decision.field) : QStringLiteral("no weight");
}

TExplanation explainBytes(const QByteArray& piece)
{
    if (piece == "E") {
        return toScale(QStringLiteral("asks for the weight"));
    }
    if (piece.size() != 2) {
        return noPacket();
    }
    const auto low = static_cast<uchar>(piece[0]);
    const auto high = static_cast<uchar>(piece[1]);
    const bool settled = (low & 0x80U) != 0;
    return fromScale(QStringLiteral("after \"D\": %1; after \"E\": weight %2")
                         .arg(settled ? QStringLiteral("settled") : QStringLiteral("not settled"))
                         .arg(high * 256 + low));
}

std::optional<TExplanation> explainControl(const QByteArray& piece)
{
    if (piece == "\x06") {
        return fromScale(QStringLiteral("ready to tell the weight"));
    }
    if (piece == "\x11") {
        return toScale(QStringLiteral("asks for the weight"));
    }
    return std::nullopt;
}

} // namespace

TExplanation explainScales(int number, const QByteArray& piece)
{
    const scales::TFamily* family = scales::familyOf(number);
    if (family == nullptr) {
        return noPacket();
    }
    if (!family->continuous() && piece == family->request) {
        return toScale(QStringLiteral("asks the scale"));
    }
    if (number == kFamilyOfBytes) {
        return explainBytes(piece);
    }
    if (const auto control = number == kFamilyOfControl ? explainControl(piece) : std::nullopt) {
        return *control;
    }
    const std::optional<QByteArray> packet = packetIn(*family, piece);
    return packet ? fromScale(meaningOf(family->decode(scales::TStep::Ask, *packet, 0))) : noPacket();
}

} // namespace tnv5::tools
