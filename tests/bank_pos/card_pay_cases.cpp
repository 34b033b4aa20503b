#include "pos_cases.h"

namespace tnv5::tests {

namespace {

/// Sends succeed, and these are the responses; values are told by the order in which they are asked for.
std::function<void(TPosFixture&)> responses(const TScript& list, const TScript& values = {})
{
    return [=](TPosFixture& f) {
        f.answer("pos_send", {true});
        f.answer("pos_receive", list);
        f.answer("pos_get", values.answers.empty() ? TScript{u"?"} : values);
    };
}

/// The same, and a response with fields.
std::function<void(TPosFixture&)> fields(const TScript& list, const TScript& values)
{
    return [=](TPosFixture& f) {
        responses(list, values)(f);
        f.answer("pos_get_first", {{true, {TValue(u"rrn"), TValue(u"112233")}}});
        f.answer("pos_get_next", {{true, {TValue(u"approval"), TValue(u"A77")}},
                                  {true, {TValue(u"trans_rcpt"), TValue(12)}},
                                  {true, {TValue(u"RRN"), TValue(u"no")}},
                                  {true, {TValue(u""), TValue(u"")}},
                                  {false, {TValue(u"rrn"), TValue(u"after the end")}}});
    };
}

QString logOf(int response)
{
    return QStringLiteral("log response = %1").arg(response);
}

} // namespace

std::vector<TPosCase> cardPayCases()
{
    const QString receive = "call pos_receive(30000)";
    const QString receiveShort = "call pos_receive(1000)";
    const QString message = "call pos_get(RESP_MESSAGE)";
    const QString notSent = error(-1, "Неможливо відправити дані на термінал!");
    const auto got = [&](int response) { return QStringList{receive, logOf(response)}; };
    const auto noSuccess = [](int code, const QString& text) {
        return error(code, "Операція не успішна!\r\n" + text);
    };
    const QStringList confirmed = got(rConfirm);
    const QString first = "call pos_get_first(&\"\", &\"\")";
    const QString next = "call pos_get_next(&\"\", &\"\")";
    const QStringList printed = {first, "log param =rrn Val = 112233",
                                 next,  "log param =approval Val = A77",
                                 next,  "log param =trans_rcpt Val = 12",
                                 next,  "log param =RRN Val = no",
                                 next,  "log param = Val = ",
                                 next};
    const std::map<QString, QString> kept = {{"RRN", "112233"}, {"AuthID", "A77"}, {"TransactionID", "12"}};
    const QStringList merchant = {"call pos_set(POS_HOST_RECORD, 3)", "call pos_send(ACTION_HOST_INFO)",
                                  receiveShort, "call pos_get(POS_MERCHANT_ID)"};
    const QStringList amount = {"call pos_set(POS_AMOUNT, 1250)", "call pos_set(POS_CURRENCY, 980)"};
    const QString pay = "call pos_send(ACTION_PAYMENT)";
    const QString transStatus = "call pos_get(POS_TRANS_STATUS)";
    const QStringList simple = QStringList{kLogPurchase} + amount + QStringList{pay};
    const auto payWithoutMerchant = [](TBankPOS& pos) { return QVariant(pos.Purchase(1'250, 50, 0)); };
    const QString echo = "call pos_send(ACTION_HOST_ECHO_TEST)";
    const QString info = "call pos_send(ACTION_POS_INFO)";
    const QString report = "call pos_send(ACTION_XREPORT_SUMMARY)";
    const QString closing = "call pos_set(POS_REPORT, 1)";
    const QString close = "call pos_send(ACTION_CLOSE_DAY)";
    const auto unsent = [](TPosFixture& f) { f.answer("pos_send", {false}); };
    return {
        {"init",
         4,
         [](TPosFixture& f) { f.answer("pos_get", {u"4.2"}); },
         init,
         true,
         {kLogInit, "call pos_get(POS_SOFT_VER)"},
         {{"LibVersion", "4.2"}}},
        {"connect",
         4,
         [](TPosFixture& f) { f.answer("pos_open", {true}); },
         connect,
         true,
         {kLogConnect, "call pos_open(\"COM7\")", kLogConnected}},
        {"connect on the network",
         4,
         [](TPosFixture& f) {
             f.answer("pos_open", {1});
             onNetwork(f);
         },
         connect,
         true,
         {kLogConnect, "call pos_open(\"10.0.0.5:2000\")", kLogConnected}},
        {"connect refused",
         4,
         [](TPosFixture& f) { f.answer("pos_open", {false}); },
         connect,
         false,
         {kLogConnect, "call pos_open(\"COM7\")", kLogNotConnected}},
        {"disconnect", 4, nothing, disconnect, true, {kLogDisconnect, "call pos_close()"}},
        {"purchase", 4, fields({rConfirm}, {u"0"}), payWithoutMerchant, true,
         simple + confirmed + QStringList{transStatus} + printed, kept},
        {"purchase for nobody", 4, fields({rConfirm}, {u"0"}),
         [](TBankPOS& pos) { return QVariant(pos.Purchase(1'250, 50, -1)); }, true,
         simple + confirmed + QStringList{transStatus} + printed, kept},
        {"purchase for a merchant", 4, fields({0, 0, rConfirm}, {u"M5", u"0"}), purchase, true,
         QStringList{kLogPurchase} + merchant + QStringList{receiveShort} + amount +
             QStringList{"call pos_set(POS_MERCHANT_ID, \"M5\")", pay} + confirmed +
             QStringList{transStatus} + printed,
         kept},
        {"purchase for a merchant that is none", 4, fields({0, 0, rConfirm}, {u"", 0}), purchase, true,
         QStringList{kLogPurchase} + merchant + QStringList{receiveShort} + amount +
             QStringList{"call pos_set(POS_MERCHANT_ID, \"-1\")", pay} + confirmed +
             QStringList{transStatus} + printed,
         kept},
        {"purchase whose merchant cannot be asked for", 4,
         [](TPosFixture& f) {
             fields({0, rConfirm}, {u"0"})(f);
             f.answer("pos_send", {false, true});
         },
         purchase, true,
         QStringList{kLogPurchase} + merchant.mid(0, 2) + QStringList{notSent, receiveShort} + amount +
             QStringList{"call pos_set(POS_MERCHANT_ID, \"-1\")", pay} + confirmed +
             QStringList{transStatus} + printed,
         kept},
        {"purchase not sent", 4, unsent, payWithoutMerchant, false, simple + QStringList{notSent}},
        {"purchase with messages", 4,
         fields({rMessage, rIdentifier, rMessage, rConfirm}, {u"insert card", u"enter PIN", u"0"}),
         payWithoutMerchant, true,
         simple + got(rMessage) + QStringList{message, status(rMessage, "insert card"), kWait} +
             got(rIdentifier) + QStringList{kWait} + got(rMessage) +
             QStringList{message, status(rMessage, "enter PIN"), kWait} + confirmed +
             QStringList{transStatus} + printed,
         kept},
        {"purchase timed out", 4, responses({rTimeout}), payWithoutMerchant, false,
         simple + got(rTimeout) + QStringList{error(rTimeout, "Перевищено інтервал очікування")}},
        {"purchase declined", 4, responses({rDecline}, {u"no money"}), payWithoutMerchant, false,
         simple + got(rDecline) + QStringList{message, noSuccess(rDecline, "no money")}},
        {"purchase broken off", 4, responses({rBreak}, {u"by the customer"}), payWithoutMerchant, false,
         simple + got(rBreak) + QStringList{message, noSuccess(rBreak, "by the customer")}},
        {"purchase with an odd response", 4, responses({-8}, {u""}), payWithoutMerchant, false,
         simple + got(-8) + QStringList{message, noSuccess(-8, "")}},
        {"purchase with a bad status", 4, responses({rConfirm}, {u"5", u"call the bank"}), payWithoutMerchant,
         false, simple + confirmed + QStringList{transStatus, message, noSuccess(5, "call the bank")}},
        {"purchase with a status that is no number", 4, responses({rConfirm}, {u"E", u"call the bank"}),
         payWithoutMerchant, false,
         simple + confirmed + QStringList{transStatus, message, noSuccess(-1, "call the bank")}},
        {"purchase without a status", 4, responses({rConfirm}, {u"", u""}), payWithoutMerchant, false,
         simple + confirmed + QStringList{transStatus, message, noSuccess(-1, "")}},
        {"cash advance", 4, nothing, cashAdvance, false, {kLogCashAdvance}},
        {"return", 4, nothing, purchaseReturn, false, {}},
        {"X report",
         4,
         responses({rConfirm}, {1, 2, 3, 4, 5, 6}),
         xReport,
         true,
         QStringList{kLogXReport, report} + confirmed +
             QStringList{"call pos_get(POS_DEBIT_AMOUNT)", "call pos_get(POS_DEBIT_NUMBER)",
                         "call pos_get(POS_CREDIT_AMOUNT)", "call pos_get(POS_CREDIT_NUMBER)",
                         "call pos_get(POS_CANCELLED_NUMBER)", "call pos_get(POS_CANCELLED_AMOUNT)"},
         {{"TotalsDebitAmt", "1"},
          {"TotalsDebitNum", "2"},
          {"TotalsCreditAmt", "3"},
          {"TotalsCreditNum", "4"},
          {"TotalsCancelledNum", "5"},
          {"TotalsCancelledAmt", "6"}}},
        {"X report not sent", 4, unsent, xReport, false, {kLogXReport, report, notSent}},
        {"X report declined", 4, responses({rDecline}, {u"no"}), xReport, false,
         QStringList{kLogXReport, report} + got(rDecline) + QStringList{message, noSuccess(rDecline, "no")}},
        {"Z report", 4, responses({rConfirm}), zReport, true,
         QStringList{kLogZReport, closing, close} + confirmed},
        {"Z report not sent", 4, unsent, zReport, false, {kLogZReport, closing, close, notSent}},
        {"Z report timed out", 4, responses({rTimeout}), zReport, false,
         QStringList{kLogZReport, closing, close} + got(rTimeout) +
             QStringList{error(rTimeout, "Перевищено інтервал очікування")}},
        {"device info",
         4,
         responses({rConfirm}, {u"SN", u"LIC", u"SW"}),
         deviceInfo,
         true,
         QStringList{kLogDeviceInfo, info} + confirmed +
             QStringList{"call pos_get(POS_SERIAL_NUMBER)", "call pos_get(POS_LICENSE)",
                         "call pos_get(POS_SOFT_VER)"},
         {{"DeviceSerialNumber", "SN"}, {"DeviceTerminalID", "LIC"}, {"DeviceSoftVer", "SW"}}},
        {"device info not sent", 4, unsent, deviceInfo, false, {kLogDeviceInfo, info, notSent}},
        {"device info declined", 4, responses({rError}, {u"no"}), deviceInfo, false,
         QStringList{kLogDeviceInfo, info} + got(rError) + QStringList{message, noSuccess(rError, "no")}},
        {"test", 4, responses({rIdentifier, rMessage, rConfirm}, {u"dialling"}), test, true,
         QStringList{kLogTest, echo} + got(rIdentifier) + QStringList{kWait} + got(rMessage) +
             QStringList{message, status(rMessage, "dialling"), kWait} + confirmed + QStringList{kLogBank}},
        {"test not sent", 4, unsent, test, false, {kLogTest, echo, notSent, kLogNoTerminal}},
        {"test declined", 4, responses({rDecline}), test, false,
         QStringList{kLogTest, echo} + got(rDecline) +
             QStringList{error(rDecline, "Операція відхилена"), kLogNoBank}},
        {"test broken off", 4, responses({rBreak}), test, false,
         QStringList{kLogTest, echo} + got(rBreak) +
             QStringList{error(rBreak, "Операція перервана"), kLogNoBank}},
        {"test timed out", 4, responses({rTimeout}), test, false,
         QStringList{kLogTest, echo} + got(rTimeout) +
             QStringList{error(rTimeout, "Перевищено інтервал очікування"), kLogNoBank}},
        {"test in error", 4, responses({rError}, {u"line dead"}), test, false,
         QStringList{kLogTest, echo} + got(rError) +
             QStringList{message, noSuccess(rError, "line dead"), kLogNoBank}},
        {"merchant", 4, responses({0}, {u"M5"}), merchantId, "M5", merchant},
        {"merchant that is none", 4, responses({0}, {u""}), merchantId, "-1", merchant},
        {"merchant not sent", 4, unsent, merchantId, "-1", merchant.mid(0, 2) + QStringList{notSent}},
        {"wait", 4, nothing, waitResponse, true, {kWaitLoop}},
        {"print response", 4, fields({}, {}), printResponse, true, printed, kept},
        {"print response without fields", 4, nothing, printResponse, true, {first}},
    };
}

} // namespace tnv5::tests
