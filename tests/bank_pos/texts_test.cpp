// The texts, letter for letter: what looks alike is told apart by its code points.

#include "support/text_printers.h"
#include "tnv5/bank/bank_pos_texts.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::bank::texts;

TEST(PosTexts, AreTheseLetters)
{
    const std::pair<QString, const char*> rows[] = {
        {kInit, "Ініціалізація об'єкту"},
        {kConnect, "Починаємо з'єднання з терміналом"},
        {kDisconnect, "Відключення терміналу"},
        {kDeviceInfo, "Спроба отримати дані про термінал"},
        {kTest, "Починаємо тест терміналу"},
        {kPurchase, "Починаємо оплату"},
        {kCashAdvance, "Починаємо видачу готівки"},
        {kXReport, "\u0425 звіт"},
        {kZReport, "Z звіт"},
        {kWaitLoop, "Цикл очікування"},
        {kConnected, "З'єдналися"},
        {kNotConnected, "Не з'єдналися"},
        {kTerminalAnswers, "Є зв'язок з терміналом"},
        {kTerminalSilent, "Нема зв'язку з терміналом"},
        {kBankAnswers, "Є зв'язок з банком"},
        {kBankSilent, "Нема зв'язку з банком"},
        {kResponse, "response = "},
        {kParameter, "param ="},
        {kParameterValue, " Val = "},
        {kEnd, "Заверщення роботи"},
        {kPleaseWait, "Зачекайте будь ласка..."},
        {kConfirmed, "Операція підтверджена"},
        {kCreationFailed, "Неможливо створити OLE об'єкт. "},
        {kCallFailed, "Помилка OLE об'єкту. "},
        {kNotSent, "Неможливо відправити дані на термінал!"},
        {kNotSuccessful, "Операція не успішна!\r\n"},
        {kTimedOut, "Перевищено інтервал очікування"},
        {kBrokenOff, "Операція перервана"},
        {kDeclined, "Операція відхилена"},
        {kSale, "Продаж"},
        {kReturn, "Повернення"},
        {kDebit, "Дебет "},
        {kCredit, "Кредит "},
        {kTransactions, "Кількість трансакцій "},
        {kSum, "Сума "},
        {kLineEnd, "\r\n"},
        {kCashBack, "<ActionScenarioRequest><Action>CashBack</Action><AddAmount>"},
        {kCashBackMerchant, "</AddAmount><MerchIdx>"},
        {kCashBackEnd, "</MerchIdx></ActionScenarioRequest>"},
        {kNone, "-1"},
    };
    for (const auto& [text, wanted] : rows) {
        EXPECT_EQ(text, QString::fromUtf8(wanted));
    }
}

TEST(PosTexts, HaveNoLatinLettersInUkrainianWords)
{
    for (const QString& text :
         {kInit,           kConnect,     kDisconnect,   kDeviceInfo, kTest,         kPurchase,
          kCashAdvance,    kXReport,     kWaitLoop,     kConnected,  kNotConnected, kTerminalAnswers,
          kTerminalSilent, kBankAnswers, kBankSilent,   kEnd,        kPleaseWait,   kConfirmed,
          kNotSent,        kTimedOut,    kBrokenOff,    kDeclined,   kSale,         kReturn,
          kDebit,          kCredit,      kTransactions, kSum}) {
        for (const QChar letter : text) {
            EXPECT_FALSE(letter.isLetter() && letter.unicode() < 0x400) << text.toStdString();
        }
    }
}

} // namespace
