#include "tnv5/tools/coffee_check.h"

#include "tnv5/coffee/crc16.h"
#include "tnv5/coffee/qr_block.h"
#include "tnv5/coffee/qr_key.h"

#include <QDateTime>
#include <QRegularExpression>
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <openssl/evp.h>

namespace tnv5::tools {

namespace {

using coffee::TBlock;

TBlock blockOf(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("\\AO([0-9A-F]{32})S\\z"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch()) {
        throw ECoffeeText(QStringLiteral("This is not \"O\", 32 upper-case hexadecimal digits, \"S\""));
    }
    const QByteArray bytes = QByteArray::fromHex(match.captured(1).toLatin1());
    TBlock block{};
    std::copy(bytes.begin(), bytes.end(), block.begin());
    return block;
}

TBlock deciphered(const TBlock& cipher, const coffee::TKey& key)
{
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                                  &EVP_CIPHER_CTX_free);
    TBlock block{};
    int size = 0;
    if (!context ||
        EVP_DecryptInit_ex2(context.get(), EVP_aes_128_ecb(), key.data(), nullptr, nullptr) != 1 ||
        EVP_CIPHER_CTX_set_padding(context.get(), 0) != 1 ||
        EVP_DecryptUpdate(context.get(), block.data(), &size, cipher.data(),
                          static_cast<int>(cipher.size())) != 1) {
        throw platform::Exception(QStringLiteral("AES-128 is not available"));
    }
    return block;
}

/// The number in some bytes, the most significant one first.
quint32 number(const TBlock& block, std::size_t first, std::size_t bytes)
{
    quint32 value = 0;
    for (std::size_t i = first; i < first + bytes; ++i) {
        value = value << 8U | block[i];
    }
    return value;
}

int bits(quint32 value, unsigned lowest, unsigned width)
{
    return static_cast<int>(value >> lowest & ((1U << width) - 1U));
}

} // namespace

TCoffeeFields checkCoffeeText(const QString& text, const QString& keyHex)
{
    const TBlock block = deciphered(blockOf(text), coffee::QrKey(keyHex));
    const quint32 parts = number(block, 1, 3);
    TCoffeeFields fields;
    fields.Part1 = bits(parts, 14, 10);
    fields.Part2 = bits(parts, 8, 6);
    fields.Part3 = bits(parts, 0, 8);
    fields.Stamp = number(block, 4, 4);
    fields.Value1 = static_cast<int>(number(block, 9, 2));
    fields.Value2 = static_cast<int>(number(block, 11, 2));
    fields.FixedBytes =
        block[0] == coffee::kBlockMark && block[8] == coffee::kStampEnd && block[13] == coffee::kValuesEnd;
    fields.Crc = coffee::Crc16({block.data(), coffee::kCheckedBytes}) == number(block, 14, 2);
    return fields;
}

QString stampText(quint32 stamp)
{
    // the figures of local time, without a zone
    return QDateTime::fromSecsSinceEpoch(stamp, Qt::UTC).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString ageText(quint32 stamp, quint32 now)
{
    struct TUnit
    {
        qint64 Seconds;
        const char* Name;
    };
    constexpr TUnit kUnits[] = {{86'400, " days"}, {3'600, " h"}, {60, " min"}, {1, " s"}};
    const qint64 age = static_cast<qint32>(now - stamp);
    const qint64 length = std::abs(age);
    // two of a unit at least, so that what is left out is not much
    const auto* unit = std::find_if(std::begin(kUnits), std::end(kUnits) - 1,
                                    [&](const TUnit& each) { return length >= 2 * each.Seconds; });
    const QString text = QString::number(length / unit->Seconds) + QString::fromLatin1(unit->Name);
    return age < 0 ? QStringLiteral("in ") + text : text + QStringLiteral(" ago");
}

} // namespace tnv5::tools
