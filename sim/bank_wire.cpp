#include "sim/bank_wire.h"

namespace tnv5::sim {

namespace {

constexpr char kFieldSeparator = 0x1C;
constexpr qsizetype kDigits = 12;
constexpr qsizetype kTag = 3;

/// A number of twelve digits behind a tag.
std::optional<qint64> numberOf(const QByteArray& field, const QByteArray& tag)
{
    bool ok = false;
    const qint64 number = field.mid(kTag).toLongLong(&ok);
    const bool fits = field.startsWith(tag) && field.size() == kTag + kDigits && ok && number >= 0;
    return fits ? std::optional(number) : std::nullopt;
}

} // namespace

QByteArray bankFrame(const QByteArray& body)
{
    char check = kBankEtx;
    for (const char byte : body) {
        check = static_cast<char>(check ^ byte);
    }
    return kBankStx + body + kBankEtx + check;
}

QByteArray bankFields(const QByteArrayList& fields)
{
    return fields.join(kFieldSeparator);
}

std::optional<TBankAmount> readBankAmount(const QByteArray& frame)
{
    constexpr qsizetype kAround = 3;
    if (frame.size() < kAround || frame != bankFrame(frame.mid(1, frame.size() - kAround))) {
        return std::nullopt;
    }
    const QByteArrayList fields = frame.mid(1, frame.size() - kAround).split(kFieldSeparator);
    const std::optional<qint64> amount = numberOf(fields.first(), "05=");
    const std::optional<qint64> discount =
        fields.size() == 2 ? numberOf(fields.last(), "41=") : std::optional<qint64>(0);
    if (fields.size() > 2 || !amount || !discount) {
        return std::nullopt;
    }
    return TBankAmount{*amount, *discount};
}

} // namespace tnv5::sim
