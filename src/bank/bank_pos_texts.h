#pragma once

#include <QString>

/// The automation bank terminals' own texts, letter for letter.
namespace tnv5::bank::texts {

// logs, where operations begin
inline const QString kInit = QStringLiteral("Ініціалізація об'єкту");
inline const QString kConnect = QStringLiteral("Починаємо з'єднання з терміналом");
inline const QString kDisconnect = QStringLiteral("Відключення терміналу");
inline const QString kDeviceInfo = QStringLiteral("Спроба отримати дані про термінал");
inline const QString kTest = QStringLiteral("Починаємо тест терміналу");
inline const QString kPurchase = QStringLiteral("Починаємо оплату");
inline const QString kCashAdvance = QStringLiteral("Починаємо видачу готівки");
inline const QString kXReport = QStringLiteral("Х звіт"); // a Cyrillic letter
inline const QString kZReport = QStringLiteral("Z звіт"); // a Latin one; intended
inline const QString kWaitLoop = QStringLiteral("Цикл очікування");

// logs, what came of them
inline const QString kConnected = QStringLiteral("З'єдналися");
inline const QString kNotConnected = QStringLiteral("Не з'єдналися");
inline const QString kTerminalAnswers = QStringLiteral("Є зв'язок з терміналом");
inline const QString kTerminalSilent = QStringLiteral("Нема зв'язку з терміналом");
inline const QString kBankAnswers = QStringLiteral("Є зв'язок з банком");
inline const QString kBankSilent = QStringLiteral("Нема зв'язку з банком");
inline const QString kResponse = QStringLiteral("response = ");
inline const QString kParameter = QStringLiteral("param =");
inline const QString kParameterValue = QStringLiteral(" Val = ");
inline const QString kEnd = QStringLiteral("Заверщення роботи"); // spelt like this; intended

// status events
inline const QString kPleaseWait = QStringLiteral("Зачекайте будь ласка...");
inline const QString kConfirmed = QStringLiteral("Операція підтверджена");

// errors
inline const QString kCreationFailed = QStringLiteral("Неможливо створити OLE об'єкт. ");
inline const QString kCallFailed = QStringLiteral("Помилка OLE об'єкту. ");
inline const QString kNotSent = QStringLiteral("Неможливо відправити дані на термінал!");
inline const QString kNotSuccessful = QStringLiteral("Операція не успішна!\r\n");
inline const QString kTimedOut = QStringLiteral("Перевищено інтервал очікування");
inline const QString kBrokenOff = QStringLiteral("Операція перервана");
inline const QString kDeclined = QStringLiteral("Операція відхилена");

// the X report of back-end 3
inline const QString kSale = QStringLiteral("Продаж");
inline const QString kReturn = QStringLiteral("Повернення");
inline const QString kDebit = QStringLiteral("Дебет ");
inline const QString kCredit = QStringLiteral("Кредит ");
inline const QString kTransactions = QStringLiteral("Кількість трансакцій ");
inline const QString kSum = QStringLiteral("Сума ");
inline const QString kLineEnd = QStringLiteral("\r\n");

// the cash-advance request of back-end 1
inline const QString kCashBack =
    QStringLiteral("<ActionScenarioRequest><Action>CashBack</Action><AddAmount>");
inline const QString kCashBackMerchant = QStringLiteral("</AddAmount><MerchIdx>");
inline const QString kCashBackEnd = QStringLiteral("</MerchIdx></ActionScenarioRequest>");

/// What stands for a value that there is none of.
inline const QString kNone = QStringLiteral("-1");

/// The text of an error code of back-end 3, written as a decimal number; empty for a code that is none.
QString errorText(const QString& code);

} // namespace tnv5::bank::texts
