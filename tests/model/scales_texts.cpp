// Texts and helpers of a scale's model.

#include "model/scales_model.h"

namespace tnv5::scales::model {

namespace {

constexpr const char16_t* kMessages[3][4] = {
    {u"[1] Не найден компонент для чтения порта!", u"[2] Весы перегружены!", u"[3] Отрицательный вес!",
     u"[4] Весы не отвечают!"},
    {u"[1] Не знайдено компонент для обробки порта!", u"[2] Вага перевантажена!", u"[3] Від`ємна вага!",
     u"[4] Вага не відповідає!"},
    {u"[1] Com port not found!", u"[2] Scales are overvalue!", u"[3] Weight <0!",
     u"[4] Scales does not answer!"}};

} // namespace

QString TModelScales::GetMessage(int index) const
{
    if (FLang < 0 || FLang > 2) {
        hit<"LangOther">();
        return {};
    }
    if (index < 0 || index > 3) {
        hit<"MessageOther">();
        return {};
    }
    return QString::fromUtf16(kMessages[FLang][index]);
}

void TModelScales::GetScalesList(QStringList& names) const
{
    names = {"Не выбрано",
             "«МАССА-К» МК_ТВ, МК_ТН",
             "«CAS» АР, AD, DB, ER, EM",
             "ВА-xx, ВЕ-xx, ПВ-xx, ПВм-xx, ВТА-60, ICSxxNT, TigerE",
             "ВР4149, BS-15D1.3T",
             "ВH-600 Промприлад",
             "«DIGI» DS-788",
             "«Axis»",
             "«UPA-Q» continuous mode (made in China)"};
}

QString TModelScales::DigitsOnly(const QString& text)
{
    QString digits = text;
    digits.removeIf([](QChar character) { return character < u'0' || character > u'9'; });
    return digits;
}

QString TModelScales::ReplaceStr(const QString& text, const QString& old, const QString& with)
{
    QString result;
    qsizetype at = 0;
    while (at < text.size()) {
        if (!old.isEmpty() && QStringView(text).mid(at, old.size()) == old) {
            result += with;
            at += old.size();
        } else {
            result += text[at++];
        }
    }
    return result;
}

int TModelScales::StringLRC(const QString& text)
{
    int sum = 0;
    for (const QChar character : text) {
        sum ^= character.unicode() % 256;
    }
    return sum;
}

QString modelByteToBin(int value)
{
    return QString::number(value, 2).rightJustified(8, u'0');
}

int modelBinToInt(const QString& bits)
{
    quint32 value = 0;
    for (const QChar bit : bits) {
        value = value * 2 + (bit == u'1' ? 1 : 0);
    }
    return int(value);
}

} // namespace tnv5::scales::model
