#pragma once

#include "pos_fixture.h"

namespace tnv5::tests {

/// One run of one operation on one back-end: what the library answers, what must happen, and what the
/// results are afterwards. A result that is not named keeps what it was, "old" and its name.
struct TPosCase
{
    const char* name;
    int type;
    std::function<void(TPosFixture&)> setUp;
    std::function<QVariant(TBankPOS&)> operate;
    QVariant result;
    QStringList lines;
    std::map<QString, QString> values = {};
};

/// All of them.
const std::vector<TPosCase>& posCases();

/// Every result has an old value.
void spoilResults(TBankPOS& pos);

// one file for each back-end
std::vector<TPosCase> ecrLibCases();
std::vector<TPosCase> bpos1Cases();
std::vector<TPosCase> controlCases();
std::vector<TPosCase> bluePadCases();
std::vector<TPosCase> cardPayCases();

// what cases do
inline QVariant connect(TBankPOS& pos)
{
    return pos.Connect();
}
inline QVariant disconnect(TBankPOS& pos)
{
    return pos.Disconnect();
}
inline QVariant deviceInfo(TBankPOS& pos)
{
    return pos.DeviceInfo();
}
inline QVariant test(TBankPOS& pos)
{
    return pos.Test();
}
inline QVariant purchase(TBankPOS& pos)
{
    return pos.Purchase(1'250, 50, 3);
}
inline QVariant cashAdvance(TBankPOS& pos)
{
    return pos.CashAdvance(1'250, 50, 3);
}
inline QVariant purchaseReturn(TBankPOS& pos)
{
    return pos.PurchaseReturn(1'250, "R1", "A1", 3);
}
inline QVariant xReport(TBankPOS& pos)
{
    return pos.XReport(3);
}
inline QVariant zReport(TBankPOS& pos)
{
    return pos.ZReport(3);
}
inline QVariant merchantId(TBankPOS& pos)
{
    return pos.GetMerchantID(3);
}
inline QVariant waitResponse(TBankPOS& pos)
{
    return pos._WaitResponse();
}
inline QVariant printResponse(TBankPOS& pos)
{
    return pos.VarifonePrintResponse();
}
inline QVariant init(TBankPOS& pos)
{
    return pos.Init();
}

inline void onNetwork(TPosFixture& fixture)
{
    fixture.pos->SetIP("10.0.0.5");
    fixture.pos->SetIPPort(2'000);
}
inline void nothing(TPosFixture&) {}

// the first and last lines of operations
inline const QString kLogInit = QStringLiteral("log Ініціалізація об'єкту");
inline const QString kLogConnect = QStringLiteral("log Починаємо з'єднання з терміналом");
inline const QString kLogConnected = QStringLiteral("log З'єдналися");
inline const QString kLogNotConnected = QStringLiteral("log Не з'єдналися");
inline const QString kLogDisconnect = QStringLiteral("log Відключення терміналу");
inline const QString kLogDeviceInfo = QStringLiteral("log Спроба отримати дані про термінал");
inline const QString kLogTest = QStringLiteral("log Починаємо тест терміналу");
inline const QString kLogTerminal = QStringLiteral("log Є зв'язок з терміналом");
inline const QString kLogNoTerminal = QStringLiteral("log Нема зв'язку з терміналом");
inline const QString kLogBank = QStringLiteral("log Є зв'язок з банком");
inline const QString kLogNoBank = QStringLiteral("log Нема зв'язку з банком");
inline const QString kLogPurchase = QStringLiteral("log Починаємо оплату");
inline const QString kLogCashAdvance = QStringLiteral("log Починаємо видачу готівки");
inline const QString kLogXReport = QStringLiteral("log \u0425 звіт");
inline const QString kLogZReport = QStringLiteral("log Z звіт");
inline const QString kPleaseWait = QStringLiteral("Зачекайте будь ласка...");

} // namespace tnv5::tests
