#include "pos_cases.h"

namespace tnv5::tests {

namespace {

/// The control tells what it does while a call is under way, and at its end how it went.
std::function<void(TPosFixture&)> telling(const QString& method, const std::u16string& text, int code,
                                          int result)
{
    return [=](TPosFixture& f) {
        f.answer(method, {result});
        f.answer("TrxRRNp", {u"778899"});
        f.answer("Receipt", {12});
        TPosFixture* const fixture = &f;
        f.OnCall = [=](const QString& line) {
            if (line.startsWith("call " + method + u'(')) {
                const auto library = fixture->library; // the handlers may take everything away
                library->raiseEvent(u"OnMsgReceived", {text});
                library->raiseEvent(u"OnTrxComplete", {code});
            }
        };
    };
}

} // namespace

std::vector<TPosCase> controlCases()
{
    const QString opened = "call PosOpen()";
    const QString echo = "call PosEchoTest()";
    const QString pay = "call PosPurchaseMer(1250, 50, &3)";
    const QString giveBack = "call PosPurchaseMer(-1250, 0, &3)";
    const QStringList values = {"call TrxRRNp()", "call Receipt()"};
    const std::map<QString, QString> kept = {{"RRN", "778899"}, {"TransactionID", "12"}};
    const auto receive = [](int response) {
        return [=](TPosFixture& f) { f.answer("pos_receive", {response}); };
    };
    const QString received = "call pos_receive(180000)";
    return {
        {"init",
         2,
         [](TPosFixture& f) {
             f.answer("DLLVersion", {u"98.1"});
             f.pos->Setlogfile("b.log");
         },
         init,
         true,
         {kLogInit, "call DLLVersion()", "call PathToLogging(\"b.log\")", "call LoggingOFF()"},
         {{"LibVersion", "98.1"}}},
        {"init with a log",
         2,
         [](TPosFixture& f) { f.pos->Setlog(true); },
         init,
         true,
         {kLogInit, "call DLLVersion()", "call PathToLogging(\"\")", "call LoggingON()"},
         {{"LibVersion", ""}}},
        {"connect",
         2,
         nothing,
         connect,
         true,
         {kLogConnect, "put TransportType = 0", "put PosPort = 7", opened, echo, kLogConnected}},
        {"connect on the network",
         2,
         onNetwork,
         connect,
         true,
         {kLogConnect, "put TransportType = 1", "put PosIP = \"10.0.0.5\"", "put PosPort = 2000", opened,
          echo, kLogConnected}},
        {"connect refused",
         2,
         [](TPosFixture& f) { f.answer("PosOpen", {5}); },
         connect,
         false,
         {kLogConnect, "put TransportType = 0", "put PosPort = 7", opened, error(5, ""), kLogNotConnected}},
        {"connect without an echo",
         2,
         [](TPosFixture& f) { f.answer("PosEchoTest", {-6}); },
         connect,
         false,
         {kLogConnect, "put TransportType = 0", "put PosPort = 7", opened, echo, error(-6, ""),
          kLogNotConnected}},
        {"disconnect", 2, nothing, disconnect, true, {kLogDisconnect, "call PosClose()"}},
        {"purchase", 2, telling("PosPurchaseMer", u"a card, please", 0, 0), purchase, true,
         QStringList{kLogPurchase, pay, status(0, "a card, please")} + values, kept},
        {"purchase after a failure", 2,
         [](TPosFixture& f) {
             telling("PosPurchaseMer", u"approved", 0, 0)(f);
             f.pos->_OnTrxComplete(99);
         },
         purchase, true, QStringList{kLogPurchase, pay, status(0, "approved")} + values, kept},
        {"purchase with a code",
         2,
         telling("PosPurchaseMer", u"declined", 51, 0),
         purchase,
         false,
         {kLogPurchase, pay, status(0, "declined"), error(51, "declined")}},
        {"purchase with a result",
         2,
         telling("PosPurchaseMer", u"busy", 0, 9),
         purchase,
         false,
         {kLogPurchase, pay, status(0, "busy"), error(9, "busy")}},
        {"purchase with both",
         2,
         telling("PosPurchaseMer", u"declined", 51, 9),
         purchase,
         false,
         {kLogPurchase, pay, status(0, "declined"), error(51, "declined")}},
        {"cash advance", 2, nothing, cashAdvance, false, {kLogCashAdvance}},
        {"return", 2, telling("PosPurchaseMer", u"approved", 0, 0), purchaseReturn, true,
         QStringList{giveBack, status(0, "approved")} + values, kept},
        {"return of an amount below zero", 2, telling("PosPurchaseMer", u"approved", 0, 0),
         [](TBankPOS& pos) { return QVariant(pos.PurchaseReturn(-1'250, "R", "A", 3)); }, true,
         QStringList{giveBack, status(0, "approved")} + values, kept},
        {"return of the least amount",
         2,
         telling("PosPurchaseMer", u"", 1, 0),
         [](TBankPOS& pos) { return QVariant(pos.PurchaseReturn(-2'147'483'647 - 1, "R", "A", 3)); },
         false,
         {"call PosPurchaseMer(-2147483648, 0, &3)", status(0, ""), error(1, "")}},
        {"return refused",
         2,
         telling("PosPurchaseMer", u"declined", 51, 0),
         purchaseReturn,
         false,
         {giveBack, status(0, "declined"), error(51, "declined")}},
        {"X report", 2, nothing, xReport, true, {kLogXReport, "call PosXBalanceMer(3)"}},
        {"X report refused",
         2,
         [](TPosFixture& f) { f.answer("PosXBalanceMer", {4}); },
         xReport,
         false,
         {kLogXReport, "call PosXBalanceMer(3)", error(4, "")}},
        {"Z report", 2, nothing, zReport, true, {kLogZReport, "call PosSettleMer(3)"}},
        {"Z report refused",
         2,
         [](TPosFixture& f) { f.answer("PosSettleMer", {4}); },
         zReport,
         false,
         {kLogZReport, "call PosSettleMer(3)", error(4, "")}},
        {"device info",
         2,
         [](TPosFixture& f) { f.answer("PosGetInfo", {u"C-98"}); },
         deviceInfo,
         true,
         {kLogDeviceInfo, "call PosGetInfo()"},
         {{"DeviceModelName", "C-98"}}},
        {"test", 2, nothing, test, true, {kLogTest, echo, kLogTerminal}},
        {"test refused",
         2,
         [](TPosFixture& f) { f.answer("PosEchoTest", {6}); },
         test,
         false,
         {kLogTest, echo, error(6, ""), kLogNoTerminal}},
        {"merchant", 2, nothing, merchantId, "-1", {}},
        {"wait confirmed",
         2,
         receive(rConfirm),
         waitResponse,
         true,
         {kWaitLoop, received, status(rConfirm, "Операція підтверджена")}},
        {"wait timed out",
         2,
         receive(rTimeout),
         waitResponse,
         false,
         {kWaitLoop, received, error(rTimeout, "Перевищено інтервал очікування")}},
        {"wait broken off",
         2,
         receive(rBreak),
         waitResponse,
         false,
         {kWaitLoop, received, error(rBreak, "Операція перервана")}},
        {"wait declined",
         2,
         receive(rDecline),
         waitResponse,
         false,
         {kWaitLoop, received, error(rDecline, "Операція відхилена")}},
        {"wait with another response", 2, receive(rMessage), waitResponse, false, {kWaitLoop, received}},
        {"print response", 2, nothing, printResponse, false, {}},
    };
}

} // namespace tnv5::tests
