#include "pos_cases.h"

namespace tnv5::tests {

namespace {

void fill(TPosFixture& f)
{
    f.answer("LastStatMsgCode", {4, 5});
    f.answer("LastStatMsgDescription", {u"insert card", u"enter PIN"});
    f.answer("RRN", {u"r1", u"r2"});
    f.answer("InvoiceNum", {1, 2});
    f.answer("AuthCode", {u"a1", u"a2"});
    f.answer("PAN", {u"p1", u"p2"});
    f.answer("IssuerName", {u"i1", u"i2"});
    f.answer("MerchantID", {u"m1", u"m2"});
    f.answer("TerminalID", {u"t1", u"t2"});
    f.answer("TotalsDebitAmt", {100});
    f.answer("TotalsDebitNum", {1});
    f.answer("TotalsCreditAmt", {200});
    f.answer("TotalsCreditNum", {2});
    f.answer("TotalsCancelledAmt", {300});
    f.answer("TotalsCancelledNum", {3});
    f.answer("GetLastErrorCode", {51});
    f.answer("GetLastErrorText", {u"no money"});
}

std::function<void(TPosFixture&)> results(const TScript& list)
{
    return [list](TPosFixture& f) {
        fill(f);
        f.answer("LastResult", list);
    };
}

std::map<QString, QString> values(const QString& number)
{
    return {{"RRN", "r" + number},       {"TransactionID", number},    {"AuthID", "a" + number},
            {"PAN", "p" + number},       {"IssuerName", "i" + number}, {"MerchantID", "m" + number},
            {"TerminalID", "t" + number}};
}

} // namespace

std::vector<TPosCase> bpos1Cases()
{
    const QString last = "call LastResult()";
    const QStringList good = {kWaitLoop, last};
    const QStringList progress = {"call LastStatMsgCode()", "call LastStatMsgDescription()"};
    const QStringList refused = {kWaitLoop, last, "call GetLastErrorCode()", "call GetLastErrorText()",
                                 error(51, "no money")};
    const QStringList seven = {"call RRN()",        "call InvoiceNum()", "call AuthCode()",  "call PAN()",
                               "call IssuerName()", "call MerchantID()", "call TerminalID()"};
    const QStringList totals = {"call TotalsDebitAmt()",     "call TotalsDebitNum()",
                                "call TotalsCreditAmt()",    "call TotalsCreditNum()",
                                "call TotalsCancelledAmt()", "call TotalsCancelledNum()"};
    const std::map<QString, QString> sums = {{"TotalsDebitAmt", "100"},     {"TotalsDebitNum", "1"},
                                             {"TotalsCreditAmt", "200"},    {"TotalsCreditNum", "2"},
                                             {"TotalsCancelledAmt", "300"}, {"TotalsCancelledNum", "3"}};
    const QStringList pay = {kLogPurchase, "call Purchase(&1250, &50, &3)"};
    const QStringList advance = {
        kLogCashAdvance,
        "call StartScenario(\"<ActionScenarioRequest><Action>CashBack</Action><AddAmount>1250"
        "</AddAmount><MerchIdx>3</MerchIdx></ActionScenarioRequest>\")"};
    const QString giveBack = "call PurchaseReturn(1250, 3, \"R1\")";
    const QString confirm = "call Confirm()";
    const QString receipt = "call ReqCurrReceipt()";
    return {
        {"init",
         1,
         [](TPosFixture& f) {
             f.answer("LibraryVersion", {u"3.0"});
             f.pos->Setlogfile("a.log");
             f.pos->SetLanguage(2);
         },
         init,
         true,
         {kLogInit, "call LibraryVersion()", "call useLogging(0, \"\")", "call SetErrorLang(2)"},
         {{"LibVersion", "3.0"}}},
        {"init with a log",
         1,
         [](TPosFixture& f) {
             f.pos->Setlogfile("a.log");
             f.pos->Setlog(true);
         },
         init,
         true,
         {kLogInit, "call LibraryVersion()", "call useLogging(1, \"a.log\")", "call SetErrorLang(0)"},
         {{"LibVersion", ""}}},
        {"connect", 1, results({0}), connect, true,
         QStringList{kLogConnect, "call CommOpen(7, 9600)"} + good + QStringList{kLogConnected}},
        {"connect on the network", 1,
         [](TPosFixture& f) {
             f.answer("LastResult", {0});
             onNetwork(f);
         },
         connect, true,
         QStringList{kLogConnect, "call CommOpenTCP(\"10.0.0.5\", 2000)"} + good +
             QStringList{kLogConnected}},
        {"connect refused", 1, results({1}), connect, false,
         QStringList{kLogConnect, "call CommOpen(7, 9600)"} + refused + QStringList{kLogNotConnected}},
        {"disconnect", 1, nothing, disconnect, true, {kLogDisconnect, "call CommClose()"}},
        {"purchase", 1, results({2, 2, 0, 0, 2, 0, 0}), purchase, true,
         pay + QStringList{kWaitLoop, last} + progress + QStringList{status(4, "insert card"), kWait, last} +
             progress + QStringList{status(5, "enter PIN"), kWait, last, last} + seven +
             QStringList{confirm, kWaitLoop, last} + progress +
             QStringList{status(5, "enter PIN"), kWait, last} + seven + QStringList{last, receipt},
         values("2")},
        {"purchase refused", 1, results({1}), purchase, false, pay + refused},
        {"purchase with an odd result", 1, results({7}), purchase, false, pay + good},
        {"purchase whose result changes its mind", 1, results({0, 1}), purchase, false,
         pay + good + QStringList{last}},
        {"confirmation refused", 1, results({0, 0, 1}), purchase, false,
         pay + good + QStringList{last} + seven + QStringList{confirm} + refused + seven, values("2")},
        {"confirmation whose result changes its mind", 1, results({0, 0, 0, 3}), purchase, false,
         pay + good + QStringList{last} + seven + QStringList{confirm} + good + seven + QStringList{last},
         values("2")},
        {"cash advance", 1, results({0, 0}), cashAdvance, true, advance + good + QStringList{last} + seven,
         values("1")},
        {"cash advance refused", 1, results({1}), cashAdvance, false, advance + refused},
        {"cash advance whose result changes its mind", 1, results({0, 3}), cashAdvance, false,
         advance + good + QStringList{last}},
        {"return",
         1,
         results({0}),
         purchaseReturn,
         true,
         QStringList{giveBack} + good + QStringList{"call AuthCode()"},
         {{"RRN", "R1"}, {"AuthID", "a1"}}},
        {"return refused", 1, results({1}), purchaseReturn, false, QStringList{giveBack} + refused},
        {"X report", 1, results({0}), xReport, true,
         QStringList{kLogXReport, "call GetBatchTotals(3)"} + good + totals +
             QStringList{"call PrintBatchTotals(3)"} + good + QStringList{receipt},
         sums},
        {"X report refused", 1, results({1}), xReport, false,
         QStringList{kLogXReport, "call GetBatchTotals(3)"} + refused},
        {"X report not printed", 1, results({0, 1}), xReport, false,
         QStringList{kLogXReport, "call GetBatchTotals(3)"} + good + totals +
             QStringList{"call PrintBatchTotals(3)"} + refused,
         sums},
        {"Z report", 1, results({0}), zReport, true,
         QStringList{kLogZReport, "call Settlement(3)"} + good + QStringList{receipt}},
        {"Z report refused", 1, results({1}), zReport, false,
         QStringList{kLogZReport, "call Settlement(3)"} + refused},
        {"device info",
         1,
         [](TPosFixture& f) { f.answer("TerminalInfo", {u"B-1"}); },
         deviceInfo,
         true,
         {kLogDeviceInfo, "call TerminalInfo()"},
         {{"DeviceModelName", "B-1"}}},
        {"test", 1, results({0}), test, true,
         QStringList{kLogTest, "call Ping()"} + good + QStringList{kLogTerminal}},
        {"test refused", 1, results({1}), test, false,
         QStringList{kLogTest, "call Ping()"} + refused + QStringList{kLogNoTerminal}},
        {"merchant", 1, nothing, merchantId, "-1", {}},
        {"wait", 1, results({2, 0}), waitResponse, true,
         QStringList{kWaitLoop, last} + progress + QStringList{status(4, "insert card"), kWait, last}},
        {"print response", 1, nothing, printResponse, false, {}},
    };
}

} // namespace tnv5::tests
