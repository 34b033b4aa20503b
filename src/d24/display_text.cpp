#include "tnv5/d24/display_text.h"

#include <algorithm>

namespace tnv5::d24 {

namespace {

constexpr QChar kBar = u'|';
constexpr QChar kLight = u'L';
constexpr QChar kSound = u'S';
constexpr char16_t kDelete = 0x7F;

bool breaksOut(QChar c)
{
    return c == kBar || c < u' ' || c == kDelete;
}

QString plain(QString text)
{
    std::replace_if(text.begin(), text.end(), breaksOut, u' ');
    return text;
}

} // namespace

TDisplayText::TDisplayText(const QString& line1, const QString& line2, const QString& line3,
                           const QString& line4)
    : FLines{plain(line1), plain(line2), plain(line3), plain(line4)}
{
}

TDisplayText& TDisplayText::light()
{
    if (!FFlags.contains(kLight)) {
        FFlags += kLight;
    }
    return *this;
}

TDisplayText& TDisplayText::sound()
{
    if (!FFlags.contains(kSound)) {
        FFlags += kSound;
    }
    return *this;
}

bool TDisplayText::isEmpty() const
{
    return FFlags.isEmpty() &&
           std::all_of(FLines.begin(), FLines.end(), [](const QString& line) { return line.isEmpty(); });
}

QString TDisplayText::text() const
{
    if (isEmpty()) {
        return {};
    }
    QString all(kBar);
    for (const QString& line : FLines) {
        all += line + kBar;
    }
    return all + FFlags + kBar;
}

} // namespace tnv5::d24
