#include "pos_cases.h"

namespace tnv5::tests {

namespace {

std::function<void(TPosFixture&)> responding(const char* method, const std::u16string& response)
{
    return [=](TPosFixture& f) { f.answer(method, {{0, {TValue(1), TValue(response)}}}); };
}

/// The same for a method whose response is its only argument by reference.
std::function<void(TPosFixture&)> telling(const char* method, const std::u16string& response)
{
    return [=](TPosFixture& f) { f.answer(method, {{0, {TValue(response)}}}); };
}

QString logOf(const char* response)
{
    return QStringLiteral("log ") + QString::fromUtf8(response);
}

} // namespace

std::vector<TPosCase> bluePadCases()
{
    const QString open = "call OpenPort(\"COM7\")";
    const QString ping = "call Ping()";
    const QString pay = "call Purchase(&1250, &\"\")";
    const QString giveBack = "call VoidOfPurchase(1250, \"R1\", \"A1\", &\"\")";
    const QString bank = "call TestConnection(&\"\")";
    const QString report = "call GetXReport(&\"\")";
    const QString end = "call EndOfDay(&\"\")";
    const std::map<QString, QString> kept = {{"RRN", "rrn"}, {"TransactionID", "trx"}, {"AuthID", "auth"}};
    return {
        {"init",
         3,
         [](TPosFixture& f) { f.pos->Setlogfile("c.log"); },
         init,
         true,
         {kLogInit, "put SaveLog = False", "put LogFileName = \"c.log\""}},
        {"init with a log",
         3,
         [](TPosFixture& f) { f.pos->Setlog(true); },
         init,
         true,
         {kLogInit, "put SaveLog = True", "put LogFileName = \"\""}},
        {"connect", 3, nothing, connect, true, {kLogConnect, open, ping, kLogConnected}},
        {"connect on the network", 3, onNetwork, connect, true, {kLogConnect, open, ping, kLogConnected}},
        {"connect refused",
         3,
         [](TPosFixture& f) { f.answer("OpenPort", {50}); },
         connect,
         false,
         {kLogConnect, open, error(50, " the device is not connected"), kLogNotConnected}},
        {"connect without an answer",
         3,
         [](TPosFixture& f) { f.answer("Ping", {54}); },
         connect,
         false,
         {kLogConnect, open, ping, error(54, ""), kLogNotConnected}},
        {"disconnect", 3, nothing, disconnect, true, {kLogDisconnect, "call ClosePort()"}},
        {"purchase",
         3,
         responding("Purchase", u"x;0;rrn;4;5;trx;7;auth;9"),
         purchase,
         true,
         {kLogPurchase, pay, logOf("x;0;rrn;4;5;trx;7;auth;9"), "log trx rrn"},
         kept},
        {"purchase with a short response",
         3,
         responding("Purchase", u"x;0"),
         purchase,
         true,
         {kLogPurchase, pay, logOf("x;0"), "log -1 -1"},
         {{"RRN", "-1"}, {"TransactionID", "-1"}, {"AuthID", "-1"}}},
        {"purchase refused",
         3,
         responding("Purchase", u"x;42;rrn;4;5;trx;7;auth"),
         purchase,
         false,
         {kLogPurchase, pay, logOf("x;42;rrn;4;5;trx;7;auth"), error(42, " wrong PAN")}},
        {"purchase refused without a text",
         3,
         responding("Purchase", u"x;53"),
         purchase,
         false,
         {kLogPurchase, pay, logOf("x;53"), error(53, "")}},
        {"purchase with a result that is no number",
         3,
         responding("Purchase", u"x;ERR;rrn"),
         purchase,
         false,
         {kLogPurchase, pay, logOf("x;ERR;rrn"), error(-1, "")}},
        {"purchase with a result that begins with 0",
         3,
         responding("Purchase", u"x;00;rrn"),
         purchase,
         false,
         {kLogPurchase, pay, logOf("x;00;rrn"), error(0, "")}},
        {"purchase without a response",
         3,
         nothing,
         purchase,
         false,
         {kLogPurchase, pay, "log ", error(-1, "")}},
        {"purchase whose response ends in front of its result",
         3,
         responding("Purchase", u"x;;0"),
         purchase,
         false,
         {kLogPurchase, pay, logOf("x;;0"), error(-1, "")}},
        {"cash advance", 3, nothing, cashAdvance, false, {kLogCashAdvance}},
        {"return",
         3,
         telling("VoidOfPurchase", u"x;0;rrn;4;5;trx;7;auth;9"),
         purchaseReturn,
         true,
         {giveBack, logOf("x;0;rrn;4;5;trx;7;auth;9"), "log trx rrn"},
         kept},
        {"return refused",
         3,
         telling("VoidOfPurchase", u"x;1;rrn"),
         purchaseReturn,
         false,
         {giveBack, logOf("x;1;rrn"), error(1, " some error")}},
        {"X report",
         3,
         telling("GetXReport", u"x;0;3 1250 1 99;2 40 5 6"),
         xReport,
         true,
         {kLogXReport, report, logOf("x;0;3 1250 1 99;2 40 5 6"),
          logOf(
              "Продаж\r\nДебет Кількість трансакцій 3 Сума 1250\r\nКредит Кількість трансакцій 1 Сума 99\r\n"
              "Повернення\r\nДебет Кількість трансакцій 2 Сума 40\r\nКредит Кількість трансакцій 5 Сума "
              "6\r\n")},
         {{"TotalsDebitNum", "3"},
          {"TotalsDebitAmt", "1250"},
          {"TotalsCreditNum", "1"},
          {"TotalsCreditAmt", "99"},
          {"TotalsCancelledNum", "2"},
          {"TotalsCancelledAmt", "40"}}},
        {"X report without numbers",
         3,
         telling("GetXReport", u"x;0;3  7"),
         xReport,
         true,
         {kLogXReport, report, logOf("x;0;3  7"),
          logOf("Продаж\r\nДебет Кількість трансакцій 3 Сума -1\r\nКредит Кількість трансакцій 7 Сума -1\r\n"
                "Повернення\r\nДебет Кількість трансакцій -1 Сума -1\r\n"
                "Кредит Кількість трансакцій -1 Сума -1\r\n")},
         {{"TotalsDebitNum", "3"},
          {"TotalsDebitAmt", "-1"},
          {"TotalsCreditNum", "7"},
          {"TotalsCreditAmt", "-1"},
          {"TotalsCancelledNum", "-1"},
          {"TotalsCancelledAmt", "-1"}}},
        {"X report refused",
         3,
         telling("GetXReport", u"x;52;3 1250 1 99;2 40 5 6"),
         xReport,
         false,
         {kLogXReport, report, logOf("x;52;3 1250 1 99;2 40 5 6"), error(52, " end the day first")}},
        {"Z report", 3, telling("EndOfDay", u"x;0"), zReport, true, {kLogZReport, end, logOf("x;0")}},
        {"Z report refused",
         3,
         telling("EndOfDay", u"x;48"),
         zReport,
         false,
         {kLogZReport, end, logOf("x;48"), error(48, " printer is out of paper")}},
        {"device info",
         3,
         telling("GetPinpadInfo", u"P-50"),
         deviceInfo,
         true,
         {kLogDeviceInfo, "call GetPinpadInfo(&\"\")"},
         {{"DeviceModelName", "P-50"}}},
        {"device info refused",
         3,
         [](TPosFixture& f) {
             f.answer("GetPinpadInfo", {{38, {TValue(u"P-50")}}});
         },
         deviceInfo,
         false,
         {kLogDeviceInfo, "call GetPinpadInfo(&\"\")", error(38, " the device is busy, tray again")}},
        {"test",
         3,
         telling("TestConnection", u"x;0"),
         test,
         true,
         {kLogTest, ping, kLogTerminal, bank, logOf("x;0"), kLogBank}},
        {"test without a bank",
         3,
         telling("TestConnection", u"x;56"),
         test,
         false,
         {kLogTest, ping, kLogTerminal, bank, logOf("x;56"), error(56, " error open socket"), kLogNoBank}},
        {"test without a terminal",
         3,
         [](TPosFixture& f) { f.answer("Ping", {9}); },
         test,
         false,
         {kLogTest, ping, error(9, " timeout is occur"), kLogNoTerminal}},
        {"merchant", 3, nothing, merchantId, "-1", {}},
        {"wait", 3, nothing, waitResponse, false, {kWaitLoop}},
        {"print response", 3, nothing, printResponse, false, {}},
    };
}

} // namespace tnv5::tests
