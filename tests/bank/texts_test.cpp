// Every text of the component, letter for letter.

#include "bank_fixture.h"
#include "tnv5/bank/serial_bank_texts.h"
#include "tnv5/bank/terminal_version.h"

#include <limits>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const QStringList kNames = {
    QStringLiteral("Не выбрано"),
    QStringLiteral("«Ingenico» ICT220 Ver. 3"),
    QStringLiteral("«Ingenico» ICT220 Ver. 3+"),
    QStringLiteral("«Ingenico» ICT220 Ver. 3.2"),
};

const QStringList kMessages[] = {
    {QStringLiteral("[1] Не найден компонент для чтения порта!"),
     QStringLiteral("[2] Запрос суммы платежа от терминала..."), QStringLiteral("[3] Отмена операции..."),
     QStringLiteral("[4] Отправлена сумма платежа "), QStringLiteral("[5] Ожидание ответа..."),
     QStringLiteral("[6] Ошибка"), QStringLiteral("[7] Подтверджено"),
     QStringLiteral("[8] Ожидание карты...")},
    {QStringLiteral("[1] Не знайдено компонент для обробки порта!"),
     QStringLiteral("[2] Запит на суму платежу від терминалу..."),
     QStringLiteral("[3] Скасування операції..."), QStringLiteral("[4] Відправлена сума платежу "),
     QStringLiteral("[5] Очікування відповіді..."), QStringLiteral("[6] Помилка"),
     QStringLiteral("[7] Підтверджено"), QStringLiteral("[8] Очікування картки...")},
    {QStringLiteral("[1] Com port not found!"), QStringLiteral("[2] Request for payment is coming..."),
     QStringLiteral("[3] Canceling operation..."), QStringLiteral("[4] Payment amount has been sent "),
     QStringLiteral("[5] Waiting answer..."), QStringLiteral("[6] Error"), QStringLiteral("[7] Confirmed"),
     QStringLiteral("[8] Waiting card...")},
};

TEST(Texts, ListReplacesWhatWasThere)
{
    QStringList list = {"old"};
    TBankPos pos;
    pos.GetPosList(list);
    EXPECT_EQ(list, kNames);
    pos.GetPosList(list);
    EXPECT_EQ(list, kNames);
}

TEST(Texts, NamesByTheirCodes)
{
    QStringList list;
    TBankPos().GetPosList(list);
    ASSERT_EQ(list.size(), 4);
    EXPECT_EQ(list[0], QString::fromUtf16(u"\u041D\u0435 \u0432\u044B\u0431\u0440\u0430\u043D\u043E"));
    EXPECT_EQ(list[3], QString::fromUtf16(u"\u00ABIngenico\u00BB ICT220 Ver. 3.2"));
}

TEST(Texts, MessagesInThreeLanguages)
{
    TBankPos pos;
    for (int language = 0; language < 3; ++language) {
        pos.SetIDLang(language);
        for (int index = 0; index < 8; ++index) {
            EXPECT_EQ(pos.GetMessage(index), kMessages[language][index]) << language << ' ' << index;
        }
    }
}

TEST(Texts, DeliberateSpellings)
{
    EXPECT_EQ(bank::messageText(6, 0),
              QString::fromUtf16(u"[7] \u041F\u043E\u0434\u0442\u0432\u0435\u0440\u0434\u0436\u0435\u043D"
                                 u"\u043E"));
    EXPECT_EQ(bank::messageText(1, 1).right(12),
              QString::fromUtf16(u"\u0442\u0435\u0440\u043C\u0438\u043D\u0430\u043B\u0443..."));
    EXPECT_EQ(bank::messageText(4, 1),
              QString::fromUtf16(u"[5] \u041E\u0447\u0456\u043A\u0443\u0432\u0430\u043D\u043D\u044F "
                                 u"\u0432\u0456\u0434\u043F\u043E\u0432\u0456\u0434\u0456..."));
}

TEST(Texts, OtherLanguagesAndIndexesHaveNoTexts)
{
    TBankPos pos;
    for (const int language :
         {3, -1, 100, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        pos.SetIDLang(language);
        for (int index = -1; index < 9; ++index) {
            EXPECT_EQ(pos.GetMessage(index), QString()) << language << ' ' << index;
        }
    }
    for (int language = 0; language < 3; ++language) {
        pos.SetIDLang(language);
        for (const int index : {-1, 8, 1000, std::numeric_limits<int>::min()}) {
            EXPECT_EQ(pos.GetMessage(index), QString()) << language << ' ' << index;
        }
    }
}

TEST(Texts, VersionsAreFoundByTheirNumber)
{
    EXPECT_EQ(bank::terminalVersions().size(), 4U);
    for (const int type : {0, -1, 4, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_EQ(bank::versionOf(type), nullptr) << type;
    }
    for (const int type : {1, 2, 3}) {
        ASSERT_NE(bank::versionOf(type), nullptr);
        EXPECT_EQ(bank::versionOf(type)->name, kNames[type]);
    }
}

class Spoken : public TBankTest, public ::testing::WithParamInterface<int>
{
protected:
    QString said(int index) const { return kMessages[GetParam()][index]; }
};

TEST_P(Spoken, EveryMessageWhereItBelongs)
{
    pos->SetIDLang(GetParam());
    feed(kAskAmount);
    trace.expect({packet(kAskAmount), bare("WAIT"), logged(said(1)), kAck, "amount 0 0 apply=0",
                  wrote(kAmountMessage), logged(said(3) + "1250"), bare("WAIT", true), logged(said(4))});
    feed(framed(kAnswerBody));
    EXPECT_TRUE(trace.take().contains(logged(said(6))));
    feed(framed("01=1\x1C"
                "06=05"));
    EXPECT_TRUE(trace.take().contains(logged(said(5))));
    acceptAnswer = false;
    feed(framed(kAnswerBody));
    EXPECT_EQ(trace.take().filter("log ").last(), logged(said(2)));
    port->Close();
    EXPECT_TRUE(pos->SetConnection(true));
    trace.expect({failed(said(7))});
    pos->SetComport(nullptr);
    EXPECT_FALSE(pos->SetConnection(true));
    trace.expect({failed(said(0))});
}

INSTANTIATE_TEST_SUITE_P(Language, Spoken, ::testing::Values(0, 1, 2));

} // namespace
