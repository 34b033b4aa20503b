#include "model/bank_pos_words.h"

namespace tnv5::bank::model {

namespace {

QVariant anyValue(TDice& d)
{
    switch (d.below(6)) {
    case 0:
        return d.below(100);
    case 1:
        return {};
    case 2:
        return d.chance(50);
    case 3:
        return qlonglong(5'000'000'000) + d.below(9);
    default:
        return d.text({"R1", "112233", "", "A77", "4111******1111", "Банк", "0", "-1", " 7"});
    }
}

QString fourNumbers(TDice& d)
{
    QStringList list;
    for (int left = d.pick({4, 4, 4, 3, 0, 6}); left > 0; --left) {
        list << d.text({"3", "1250", "0", "", "x"});
    }
    return list.join(u' ');
}

} // namespace

QVariant sampleResult(TDice& d, const QString& method)
{
    if (d.permille(15)) {
        return anyValue(d).typeId() == QMetaType::QString ? QVariant(d.text({"2", "junk", " 0 "}))
                                                          : QVariant();
    }
    if (method == "GetLastResult" || method == "LastResult") {
        return d.pick<QVariant>({0, 0, 0, 0, 2, 2, 1, d.pick<QVariant>({0, 3, -1, "2", true, 0})});
    }
    if (method == "pos_receive") {
        return d.chance(55) ? 3 : d.below(9);
    }
    if (method == "pos_send" || method == "pos_open" || method.startsWith("pos_get_")) {
        return d.pick<QVariant>({true, true, true, 1, -1, true, false, 0});
    }
    if (method == "pos_get") {
        return d.chance(50) ? QVariant("0") : anyValue(d);
    }
    if (method.startsWith("GetLastErrorC") || method == "LastStatMsgCode") {
        return d.pick<QVariant>({51, 0, -7, "12", true});
    }
    const QStringList judged{"PosOpen",      "PosEchoTest", "PosPurchaseMer", "PosXBalanceMer",
                             "PosSettleMer", "OpenPort",    "Ping",           "GetPinpadInfo"};
    if (judged.contains(method)) {
        return d.pick<QVariant>({0, 0, 0, 0, d.below(60), -1, QVariant()});
    }
    return anyValue(d);
}

QVariant sampleOut(TDice& d, const QString& method)
{
    if (method.startsWith("pos_get_")) {
        return d.text({"rrn", "approval", "trans_rcpt", "RRN", "x", "", "7"});
    }
    if (method == "GetPinpadInfo") {
        return anyValue(d);
    }
    return d.permille(10) ? anyValue(d) : QVariant(sampleResponse(d));
}

QString sampleResponse(TDice& d)
{
    QStringList list{"x", d.chance(70)
                              ? "0"
                              : d.text({"1", "42", "53", "56", "", "00", "ERR", "-1", " 5", "99999999999"})};
    for (int left = d.pick({7, 7, 7, 2, 0, 12}); left > 0; --left) {
        list << (d.chance(40) ? fourNumbers(d) : d.text({"112233", "77", "", "", "A1", "ф"}));
    }
    return list.join(u';');
}

TStep sampleSetting(TDice& d, int kind)
{
    const char* const texts[] = {"IP", "logfile", "RRN", "TransactionID", "AuthID", "PAN", "TotalsDebitAmt"};
    const char* const numbers[] = {"ComPort", "ComPortRate", "IPPort", "TimeOut", "Language"};
    switch (d.below(4)) {
    case 0:
        return {kind, {numbers[d.below(5)]}, d.pick({0, 1, -1, 7, 2'147'483'647}), 1};
    case 1:
        return {kind, {"log"}, d.below(2), 2};
    default:
        return {
            kind, {texts[d.below(d.chance(60) ? 2 : 7)], d.text({"", "", "10.0.0.5", "журнал.log"})}, 0, 0};
    }
}

const QStringList& constantNames()
{
    static const QStringList names{"RESP_MESSAGE",           "RESP_IDENTIFIER",
                                   "RESP_CONFIRM",           "RESP_DECLINE",
                                   "RESP_TIMEOUT",           "RESP_BREAK",
                                   "POS_SOFT_VER",           "POS_AMOUNT",
                                   "POS_CURRENCY",           "POS_MERCHANT_ID",
                                   "POS_TRANS_STATUS",       "POS_DEBIT_AMOUNT",
                                   "POS_DEBIT_NUMBER",       "POS_CREDIT_AMOUNT",
                                   "POS_CREDIT_NUMBER",      "POS_CANCELLED_NUMBER",
                                   "POS_CANCELLED_AMOUNT",   "POS_REPORT",
                                   "POS_SERIAL_NUMBER",      "POS_LICENSE",
                                   "POS_HOST_RECORD",        "ACTION_PAYMENT",
                                   "ACTION_XREPORT_SUMMARY", "ACTION_CLOSE_DAY",
                                   "ACTION_POS_INFO",        "ACTION_HOST_ECHO_TEST",
                                   "ACTION_HOST_INFO"};
    return names;
}

} // namespace tnv5::bank::model
