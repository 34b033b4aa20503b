#include "pos_cases.h"

namespace tnv5::tests {

std::vector<TPosCase> ecrLibCases()
{
    const QString last = "call GetLastResult()";
    const QString code = "call GetLastErrorCode()";
    const QString text = "call GetLastErrorText()";
    const auto succeeding = [](TPosFixture& f) { f.answer("GetLastResult", {0}); };
    const auto slow = [](TPosFixture& f) {
        f.answer("GetLastResult", {2, 2, 0});
        f.answer("getRRN", {u"112233"});
        f.answer("InvoiceNum", {77});
    };
    const auto refusing = [](TPosFixture& f) {
        f.answer("GetLastResult", {2, 1});
        f.answer("GetLastErrorCode", {51});
        f.answer("GetLastErrorText", {u"no money"});
    };
    const QString waiting = status(0, kPleaseWait);
    const QStringList refused = {kWaitLoop, last, waiting, kWait, last, code, text, error(51, "no money")};
    return {
        {"init",
         0,
         [](TPosFixture& f) { f.answer("LibraryVersion", {u"1.9"}); },
         init,
         true,
         {kLogInit, "call LibraryVersion()"},
         {{"LibVersion", "1.9"}}},
        {"init with a limit",
         0,
         [](TPosFixture& f) {
             f.answer("LibraryVersion", {2.5});
             f.pos->SetTimeOut(45);
         },
         init,
         true,
         {kLogInit, "call LibraryVersion()", "call SetUserTimeOut(45)"},
         {{"LibVersion", "2.5"}}},
        {"init with a limit below zero",
         0,
         [](TPosFixture& f) { f.pos->SetTimeOut(-1); },
         init,
         true,
         {kLogInit, "call LibraryVersion()"},
         {{"LibVersion", ""}}},
        {"connect",
         0,
         succeeding,
         connect,
         true,
         {kLogConnect, "call SetCommNum(7)", "call CommOpen()", kWaitLoop, last, kLogConnected}},
        {"connect on the network",
         0,
         [=](TPosFixture& f) {
             succeeding(f);
             onNetwork(f);
         },
         connect,
         true,
         {kLogConnect, "call CommOpenTCP(\"10.0.0.5\", 2000)", kWaitLoop, last, kLogConnected}},
        {"connect refused", 0, refusing, connect, false,
         QStringList{kLogConnect, "call SetCommNum(7)", "call CommOpen()"} + refused +
             QStringList{kLogNotConnected}},
        {"disconnect", 0, nothing, disconnect, true, {kLogDisconnect, "call CommClose()"}},
        {"purchase",
         0,
         slow,
         purchase,
         true,
         {kLogPurchase, "call PosPurchase(&1250, &50, \"3\")", kWaitLoop, last, waiting, kWait, last, waiting,
          kWait, last, last, "call getRRN()", "call InvoiceNum()"},
         {{"RRN", "112233"}, {"TransactionID", "77"}}},
        {"purchase refused", 0, refusing, purchase, false,
         QStringList{kLogPurchase, "call PosPurchase(&1250, &50, \"3\")"} + refused},
        {"purchase with an odd result",
         0,
         [](TPosFixture& f) { f.answer("GetLastResult", {3}); },
         purchase,
         false,
         {kLogPurchase, "call PosPurchase(&1250, &50, \"3\")", kWaitLoop, last}},
        {"purchase with a result below zero",
         0,
         [](TPosFixture& f) { f.answer("GetLastResult", {-1}); },
         purchase,
         false,
         {kLogPurchase, "call PosPurchase(&1250, &50, \"3\")", kWaitLoop, last}},
        {"purchase whose result changes its mind",
         0,
         [](TPosFixture& f) {
             f.answer("GetLastResult", {0, 1});
         },
         purchase,
         false,
         {kLogPurchase, "call PosPurchase(&1250, &50, \"3\")", kWaitLoop, last, last}},
        {"cash advance", 0, nothing, cashAdvance, false, {kLogCashAdvance}},
        {"return", 0, nothing, purchaseReturn, false, {}},
        {"X report",
         0,
         succeeding,
         xReport,
         true,
         {kLogXReport, "call PosXBalanceMer(\"3\")", kWaitLoop, last}},
        {"X report refused", 0, refusing, xReport, false,
         QStringList{kLogXReport, "call PosXBalanceMer(\"3\")"} + refused},
        {"Z report",
         0,
         succeeding,
         zReport,
         true,
         {kLogZReport, "call PosSettleMer(\"3\")", kWaitLoop, last}},
        {"Z report refused", 0, refusing, zReport, false,
         QStringList{kLogZReport, "call PosSettleMer(\"3\")"} + refused},
        {"device info", 0, nothing, deviceInfo, false, {kLogDeviceInfo}},
        {"test", 0, succeeding, test, true, {kLogTest, "call PosEchoTest()", kWaitLoop, last, kLogTerminal}},
        {"test refused", 0, refusing, test, false,
         QStringList{kLogTest, "call PosEchoTest()"} + refused + QStringList{kLogNoTerminal}},
        {"merchant", 0, nothing, merchantId, "-1", {}},
        {"wait", 0, succeeding, waitResponse, true, {kWaitLoop, last}},
        {"wait refused", 0, refusing, waitResponse, false, refused},
        {"print response", 0, nothing, printResponse, false, {}},
    };
}

} // namespace tnv5::tests
