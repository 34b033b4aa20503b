// Every text of the component, letter for letter.

#include "tnv5/scales/families.h"
#include "tnv5/scales/scales_texts.h"
#include "wire_samples.h"

#include <limits>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using namespace tnv5::scales;

const QStringList kNames = {
    QStringLiteral("Не выбрано"),
    QStringLiteral("«МАССА-К» МК_ТВ, МК_ТН"),
    QStringLiteral("«CAS» АР, AD, DB, ER, EM"),
    QStringLiteral("ВА-xx, ВЕ-xx, ПВ-xx, ПВм-xx, ВТА-60, ICSxxNT, TigerE"),
    QStringLiteral("ВР4149, BS-15D1.3T"),
    QStringLiteral("ВH-600 Промприлад"),
    QStringLiteral("«DIGI» DS-788"),
    QStringLiteral("«Axis»"),
    QStringLiteral("«UPA-Q» continuous mode (made in China)"),
};

/// Which letters are Cyrillic ("c"), Latin ("l") or neither ("."), which the eye cannot tell.
QString alphabets(const QString& text)
{
    QString result;
    for (const QChar letter : text) {
        result += letter.unicode() >= 0x400 && letter.unicode() < 0x500 ? u'c'
                  : letter.isLetter()                                   ? u'l'
                                                                        : u'.';
    }
    return result;
}

TEST(Texts, ListHasTheNamesInTheirOrder)
{
    QStringList list;
    TScalesDevice().GetScalesList(list);
    EXPECT_EQ(list, kNames);
}

TEST(Texts, ListReplacesWhatWasThere)
{
    QStringList list = {"old", "older"};
    TScalesDevice().GetScalesList(list);
    EXPECT_EQ(list, kNames);
    TScalesDevice().GetScalesList(list);
    EXPECT_EQ(list, kNames);
}

TEST(Texts, NamesMixTheAlphabetsAsMeant)
{
    QStringList list;
    TScalesDevice().GetScalesList(list);
    ASSERT_EQ(list.size(), kNames.size());
    EXPECT_EQ(alphabets(list[0]), "cc.ccccccc");
    EXPECT_EQ(alphabets(list[1]), ".ccccc.c..cc.cc..cc.cc");
    EXPECT_EQ(alphabets(list[2]), ".lll..cc..ll..ll..ll..ll");
    EXPECT_EQ(alphabets(list[3]), "cc.ll..cc.ll..cc.ll..ccc.ll..ccc.....lllllll..llllll");
    EXPECT_EQ(alphabets(list[4]), "cc......ll...l...l");
    EXPECT_EQ(alphabets(list[5]), "cl.....cccccccccc");
    EXPECT_EQ(alphabets(list[6]), ".llll..ll....");
    EXPECT_EQ(alphabets(list[7]), ".llll.");
    EXPECT_EQ(alphabets(list[8]), ".lll.l..llllllllll.llll..llll.ll.lllll.");
}

TEST(Texts, OddNamesByTheirCodes)
{
    QStringList list;
    TScalesDevice().GetScalesList(list);
    ASSERT_EQ(list.size(), kNames.size());
    EXPECT_EQ(list[5].left(6), QString::fromUtf16(u"\u0412H-600"));
    EXPECT_EQ(list[4].left(6), QString::fromUtf16(u"\u0412\u04204149"));
    EXPECT_EQ(list[2].mid(6, 2), QString::fromUtf16(u"\u0410\u0420"));
    EXPECT_EQ(list[1].left(9), QString::fromUtf16(u"\u00AB\u041C\u0410\u0421\u0421\u0410-\u041A\u00BB"));
}

TEST(Texts, MessagesInThreeLanguages)
{
    const QStringList messages[] = {
        {QStringLiteral("[1] Не найден компонент для чтения порта!"), QStringLiteral("[2] Весы перегружены!"),
         QStringLiteral("[3] Отрицательный вес!"), QStringLiteral("[4] Весы не отвечают!")},
        {QStringLiteral("[1] Не знайдено компонент для обробки порта!"),
         QStringLiteral("[2] Вага перевантажена!"), QStringLiteral("[3] Від`ємна вага!"),
         QStringLiteral("[4] Вага не відповідає!")},
        {QStringLiteral("[1] Com port not found!"), QStringLiteral("[2] Scales are overvalue!"),
         QStringLiteral("[3] Weight <0!"), QStringLiteral("[4] Scales does not answer!")},
    };
    TScalesDevice device;
    for (int language = 0; language < 3; ++language) {
        device.SetIDLang(language);
        for (int index = 0; index < 4; ++index) {
            EXPECT_EQ(device.GetMessage(index), messages[language][index]) << language << ' ' << index;
            EXPECT_EQ(messageText(index, language), messages[language][index]);
        }
    }
}

TEST(Texts, UkrainianMinusHasItsLettersAndItsBackTick)
{
    EXPECT_EQ(messageText(2, 1), QString::fromUtf16(u"[3] \u0412\u0456\u0434\u0060\u0454\u043C\u043D\u0430 "
                                                    u"\u0432\u0430\u0433\u0430!"));
}

TEST(Texts, OtherLanguagesHaveNoTexts)
{
    TScalesDevice device;
    for (const int language :
         {3, -1, 100, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        device.SetIDLang(language);
        for (int index = 0; index < 4; ++index) {
            EXPECT_EQ(device.GetMessage(index), QString()) << language << ' ' << index;
        }
    }
}

TEST(Texts, OtherIndexesHaveNoTexts)
{
    TScalesDevice device;
    for (int language = 0; language < 4; ++language) {
        device.SetIDLang(language);
        for (const int index : {-1, 4, 1000, std::numeric_limits<int>::min()}) {
            EXPECT_EQ(device.GetMessage(index), QString()) << language << ' ' << index;
        }
    }
}

TEST(Texts, LogPrefixes)
{
    EXPECT_EQ(kLogStart, QStringLiteral("[01] Start read from port "));
    EXPECT_EQ(kLogStop, QStringLiteral("[02] Stop read from port "));
    EXPECT_EQ(kLogGet, QStringLiteral("[03] Get from port "));
    EXPECT_EQ(kLogSend, QStringLiteral("[05] Send to port "));
    EXPECT_EQ(kLogReset, QStringLiteral("[07] Reset port "));
}

TEST(Texts, ReportsAreEmptyInOtherLanguages)
{
    TScalesFixture fixture;
    fixture.scales->SetIDLang(3);
    fixture.scales->SetComport(nullptr);
    fixture.scales->SetConnection(true);
    fixture.trace.expect({"error "});
}

TEST(Families, AreFoundByTheirNumber)
{
    ASSERT_EQ(families().size(), size_t(kNames.size()));
    for (int type = 1; type < kNames.size(); ++type) {
        ASSERT_NE(familyOf(type), nullptr) << type;
        EXPECT_EQ(familyOf(type), &families()[size_t(type)]);
        EXPECT_EQ(familyOf(type)->name, kNames[type]);
    }
    for (const int type : noFamilies()) {
        EXPECT_EQ(familyOf(type), nullptr) << type;
    }
}

} // namespace
