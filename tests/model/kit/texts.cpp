#include "model/kit/texts.h"

#include "model/kit/branches.h"
#include "model/kit/model_world.h"

#include <QRegularExpression>
#include <cmath>
#include <cstdlib>

namespace tnv5::modelkit {

namespace {

// The upper half of windows-1251; 0x98 is not assigned and stays as it is.
constexpr char16_t kUpperHalf[] = u"ЂЃ‚ѓ„…†‡€‰Љ‹ЊЌЋЏђ‘’“”•–—\u0098™љ›њќћџ"
                                  u"\u00A0ЎўЈ¤Ґ¦§Ё©Є«¬\u00AD®Ї°±Ііґµ¶·ё№є»јЅѕї"
                                  u"АБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯабвгдежзийклмнопрстуфхцчшщъыьэюя";
constexpr int kHalf = 128;
static_assert(std::size(kUpperHalf) == kHalf + 1);

} // namespace

QString part(const QString& text, qsizetype from, qsizetype count)
{
    QString piece;
    for (qsizetype at = from; at < from + count && at <= text.size(); ++at) {
        if (at >= 1) {
            piece += text[at - 1];
        }
    }
    return piece;
}

QString rest(const QString& text, qsizetype from)
{
    return part(text, from, text.size());
}

qsizetype position(const QString& what, const QString& text)
{
    for (qsizetype i = 0; !what.isEmpty() && i + what.size() <= text.size(); ++i) {
        if (QStringView(text).sliced(i, what.size()) == what) {
            return i + 1;
        }
    }
    return 0;
}

bool holds(const QString& text, const char* what)
{
    return position(QString::fromLatin1(what), text) > 0;
}

QString trimmed(const QString& text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] <= u' ') {
        ++begin;
    }
    while (end > begin && text[end - 1] <= u' ') {
        --end;
    }
    return text.mid(begin, end - begin);
}

TNumber numberOf(const QString& text)
{
    static const QRegularExpression whole("^ *([+-]?)([0-9]+)\\z");
    const auto match = whole.match(text);
    if (!match.hasMatch()) {
        return {};
    }
    const double value = (match.captured(1) == "-" ? -1 : 1) * match.captured(2).toDouble();
    const bool outOfRange = value < -2'147'483'648.0 || value > 2'147'483'647.0;
    return {!outOfRange, outOfRange, outOfRange ? 0 : int(value)};
}

int integerOf(const QVariant& answer)
{
    TNumber number{answer.isValid(), false, 0};
    if (answer.typeId() == QMetaType::QString) {
        number = numberOf(answer.toString().trimmed());
    } else {
        number.value = int(std::nearbyint(answer.toDouble()));
    }
    const QString type = answer.isValid() ? QString::fromLatin1(answer.typeName()) : QString("Null");
    if (number.outOfRange) {
        throw TFailure{"Overflow while converting variant of type (" + type + ") into type (Integer)"};
    }
    if (!number.valid) {
        throw TFailure{"Could not convert variant of type (" + type + ") into type (Integer)"};
    }
    return number.value;
}

QString textOf(const QByteArray& bytes, bool cyrillic)
{
    QString text;
    for (const char byte : bytes) {
        const int code = uchar(byte);
        text += QChar(cyrillic && code >= kHalf ? kUpperHalf[code - kHalf] : char16_t(code));
    }
    return text;
}

QByteArray bytesOf(const QString& text, bool cyrillic)
{
    QByteArray bytes;
    for (const QChar character : text) {
        const int code = character.unicode();
        const auto* const end = std::end(kUpperHalf) - 1;
        const auto* const found = std::find(std::begin(kUpperHalf), end, character.unicode());
        if (code < kHalf || (!cyrillic && code < 2 * kHalf)) {
            bytes += char(code);
        } else if (cyrillic && found != end) {
            bytes += char(kHalf + (found - std::begin(kUpperHalf)));
        } else {
            hit<"code page lacks a character">();
            bytes += '?';
        }
    }
    return bytes;
}

bool apart(qint64 firstMs, qint64 secondMs, qint64 limit)
{
    return std::llabs(firstMs - secondMs) / 1000 > limit;
}

bool daysApart(double first, double second, qint64 limit)
{
    return std::floor(std::fabs(first - second) * 86'400 + 0.000'005) > double(limit);
}

} // namespace tnv5::modelkit
