#include "tnv5/platform/code_page.h"

#include "tnv5/platform/errors.h"

#include <QHash>
#include <QStringDecoder>
#include <array>
#include <memory>

namespace tnv5::platform {

namespace {

using TTable = std::array<char16_t, 256>;

constexpr int kFirstHigh = 0x80;

// Characters 0x80 to 0xBF; what follows is the Cyrillic alphabet in order. 0x98 is unassigned and maps to
// itself.
constexpr std::array<char16_t, 64> kWindows1251 = {
    0x0402, 0x0403, 0x201A, 0x0453, 0x201E, 0x2026, 0x2020, 0x2021, 0x20AC, 0x2030, 0x0409, 0x2039, 0x040A,
    0x040C, 0x040B, 0x040F, 0x0452, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x0098, 0x2122,
    0x0459, 0x203A, 0x045A, 0x045C, 0x045B, 0x045F, 0x00A0, 0x040E, 0x045E, 0x0408, 0x00A4, 0x0490, 0x00A6,
    0x00A7, 0x0401, 0x00A9, 0x0404, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x0407, 0x00B0, 0x00B1, 0x0406, 0x0456,
    0x0491, 0x00B5, 0x00B6, 0x00B7, 0x0451, 0x2116, 0x0454, 0x00BB, 0x0458, 0x0405, 0x0455, 0x0457};

constexpr TTable windows1251()
{
    TTable table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (i < 0x80) {
            table[i] = static_cast<char16_t>(i);
        } else if (i < 0xC0) {
            table[i] = kWindows1251[i - 0x80];
        } else {
            table[i] = static_cast<char16_t>(0x0410 + (i - 0xC0));
        }
    }
    return table;
}

class TCodePage
{
public:
    TCodePage(QByteArray name, const TTable& toUnicode) : FName(std::move(name)), FToUnicode(toUnicode)
    {
        for (int byte = 255; byte >= 0; --byte) {
            FToByte.insert(FToUnicode[static_cast<std::size_t>(byte)], static_cast<uchar>(byte));
        }
    }

    const QByteArray& name() const { return FName; }
    char16_t character(uchar byte) const { return FToUnicode[byte]; }
    uchar byte(char16_t character) const
    {
        // below 0x80 nearly every code page is ASCII: no need to search
        if (character < kFirstHigh && FToUnicode[character] == character) {
            return static_cast<uchar>(character);
        }
        return FToByte.value(character, '?');
    }

private:
    QByteArray FName;
    TTable FToUnicode;
    QHash<char16_t, uchar> FToByte;
};

std::unique_ptr<TCodePage>& current()
{
    static auto page = std::make_unique<TCodePage>("windows-1251", windows1251());
    return page;
}

QString decoded(const QByteArray& name, QByteArrayView bytes)
{
    QStringDecoder decoder(name.constData(), QStringDecoder::Flag::Stateless);
    if (!decoder.isValid()) {
        throw EConvertError(QStringLiteral("Unknown code page \"%1\"").arg(QString::fromLatin1(name)));
    }
    return decoder.decode(bytes);
}

// One byte may turn out to be half a character only when another one follows it.
bool isSingleByte(const QByteArray& name, char byte)
{
    for (const char second : {'A', '\xa1'}) {
        const char pair[] = {byte, second};
        if (decoded(name, {pair, 2}).size() != 2) {
            return false;
        }
    }
    return true;
}

TTable tableOf(const QByteArray& name)
{
    TTable table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        const char byte = static_cast<char>(i);
        if (!isSingleByte(name, byte)) {
            throw EConvertError(
                QStringLiteral("\"%1\" is not a single-byte code page").arg(QString::fromLatin1(name)));
        }
        const QChar character = decoded(name, {&byte, 1}).front();
        const bool unassigned = character == QChar::ReplacementCharacter;
        table[i] = unassigned ? static_cast<char16_t>(i) : character.unicode();
    }
    return table;
}

} // namespace

void setCodePage(const QByteArray& name)
{
    const QByteArray lower = name.toLower();
    const bool builtIn = lower == "windows-1251" || lower == "cp1251";
    current() = std::make_unique<TCodePage>(name, builtIn ? windows1251() : tableOf(name));
}

QByteArray codePage()
{
    return current()->name();
}

QString fromWire(QByteArrayView bytes, QStringView before)
{
    const TCodePage& page = *current();
    QString text(before.size() + bytes.size(), Qt::Uninitialized);
    const auto rest = std::copy(before.begin(), before.end(), text.begin());
    std::transform(bytes.begin(), bytes.end(), rest,
                   [&page](char byte) { return QChar(page.character(static_cast<uchar>(byte))); });
    return text;
}

QByteArray toWire(QStringView text, QByteArrayView after)
{
    const TCodePage& page = *current();
    QByteArray bytes(text.size() + after.size(), Qt::Uninitialized);
    const auto rest = std::transform(text.begin(), text.end(), bytes.begin(), [&page](QChar character) {
        return static_cast<char>(page.byte(character.unicode()));
    });
    std::copy(after.begin(), after.end(), rest);
    return bytes;
}

uchar wireByte(QChar character)
{
    return current()->byte(character.unicode());
}

} // namespace tnv5::platform
