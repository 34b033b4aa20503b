// The last library: parameters are set, an action is sent, and its responses are received one by one.

#include "sim/pos_terminal.h"

namespace tnv5::sim {

namespace {

using TKind = TPosMachine::TKind;
using platform::automation::TValue;

enum TParameter {
    pSoftVer = 101,
    pAmount,
    pCurrency,
    pMerchantId,
    pTransStatus,
    pDebitAmount,
    pDebitNumber,
    pCreditAmount,
    pCreditNumber,
    pCancelledNumber,
    pCancelledAmount,
    pReport,
    pSerialNumber,
    pLicense,
    pHostRecord
};
enum TAction { aPayment = 201, aXReport, aCloseDay, aPosInfo, aEchoTest, aHostInfo };
enum TResponse { rMessage = 301, rIdentifier, rConfirm, rDecline, rTimeout, rBreak, rError };

constexpr int kCurrency = 980;

const std::pair<const char*, int> kConstants[] = {{"POS_SOFT_VER", pSoftVer},
                                                  {"POS_AMOUNT", pAmount},
                                                  {"POS_CURRENCY", pCurrency},
                                                  {"POS_MERCHANT_ID", pMerchantId},
                                                  {"POS_TRANS_STATUS", pTransStatus},
                                                  {"POS_DEBIT_AMOUNT", pDebitAmount},
                                                  {"POS_DEBIT_NUMBER", pDebitNumber},
                                                  {"POS_CREDIT_AMOUNT", pCreditAmount},
                                                  {"POS_CREDIT_NUMBER", pCreditNumber},
                                                  {"POS_CANCELLED_NUMBER", pCancelledNumber},
                                                  {"POS_CANCELLED_AMOUNT", pCancelledAmount},
                                                  {"POS_REPORT", pReport},
                                                  {"POS_SERIAL_NUMBER", pSerialNumber},
                                                  {"POS_LICENSE", pLicense},
                                                  {"POS_HOST_RECORD", pHostRecord},
                                                  {"ACTION_PAYMENT", aPayment},
                                                  {"ACTION_XREPORT_SUMMARY", aXReport},
                                                  {"ACTION_CLOSE_DAY", aCloseDay},
                                                  {"ACTION_POS_INFO", aPosInfo},
                                                  {"ACTION_HOST_ECHO_TEST", aEchoTest},
                                                  {"ACTION_HOST_INFO", aHostInfo},
                                                  {"RESP_MESSAGE", rMessage},
                                                  {"RESP_IDENTIFIER", rIdentifier},
                                                  {"RESP_CONFIRM", rConfirm},
                                                  {"RESP_DECLINE", rDecline},
                                                  {"RESP_TIMEOUT", rTimeout},
                                                  {"RESP_BREAK", rBreak},
                                                  {"RESP_ERROR", rError}};

class TMessagePos final : public TSimulatedPos
{
public:
    explicit TMessagePos(const TPosScenario& scenario) : TSimulatedPos(scenario)
    {
        for (const auto& [name, value] : kConstants) {
            properties[QString::fromLatin1(name)] = value;
        }
        FParameters = {{pSoftVer, u"SIM 4"}, {pSerialNumber, u"SN-0004"}, {pLicense, u"LIC-0004"}};
    }

    TPosReply call(const QString& method, const QVariantList& arguments) override
    {
        const int first = arguments.value(0).toInt();
        if (method == u"pos_open") {
            return {true};
        }
        if (method == u"pos_close") {
            return {};
        }
        if (method == u"pos_set") {
            set(first, arguments.value(1));
            return {};
        }
        if (method == u"pos_get") {
            return {get(first)};
        }
        if (method == u"pos_send") {
            return {send(first)};
        }
        if (method == u"pos_receive") {
            return receive(first);
        }
        if (method == u"pos_get_first" || method == u"pos_get_next") {
            return field(method == u"pos_get_first");
        }
        return unknown(method);
    }

private:
    void set(int parameter, const QVariant& value)
    {
        FParameters[parameter] = wide(value.toString());
        if (parameter == pHostRecord) {
            const int index = value.toInt();
            FParameters[pMerchantId] = index == 1 ? TValue(u"M0001") : TValue(u"");
        }
    }

    TValue get(int parameter)
    {
        switch (parameter) {
        case pDebitAmount:
            return std::int64_t{machine.debit().amount};
        case pDebitNumber:
            return machine.debit().number;
        case pCreditAmount:
            return std::int64_t{machine.credit().amount};
        case pCreditNumber:
            return machine.credit().number;
        case pCancelledAmount:
            return std::int64_t{machine.cancelled().amount};
        case pCancelledNumber:
            return machine.cancelled().number;
        case pTransStatus:
            return machine.approved() ? 0 : machine.errorCode();
        case rMessage:
            return wide(FMessage);
        default:
            return FParameters[parameter];
        }
    }

    bool send(int action)
    {
        if (machine.scenario().unsent > 0) {
            --machine.scenario().unsent;
            return false;
        }
        FAction = action;
        FReceived = 0;
        FField = 0;
        const bool payment = action == aPayment;
        machine.begin(payment ? TKind::Payment : TKind::Other, payment ? FParameters[pAmount].toInt() : 0);
        if (action == aCloseDay) {
            machine.closeDay();
        }
        return !payment || FParameters[pCurrency] == TValue(wide(QString::number(kCurrency)));
    }

    TPosReply receive(int ms)
    {
        if (FAction != aPayment) {
            FAction = 0;
            return {rConfirm};
        }
        TPosReply reply;
        reply.afterMs = qMin(ms, machine.scenario().stepMs);
        const int step = FReceived++;
        const TPosEnd end = machine.scenario().end;
        if (step < TPosMachine::kSteps) {
            const bool lost =
                (end == TPosEnd::Crash || end == TPosEnd::Hang) && step >= TPosMachine::kBankStep;
            reply.end = lost ? end : TPosEnd::Approve;
            FMessage = TPosMachine::shown(step);
            reply.result = step == 1 ? rIdentifier : rMessage;
            return reply;
        }
        FMessage = machine.errorText();
        machine.finish();
        reply.result = machine.approved()         ? rConfirm
                       : end == TPosEnd::TimeOut  ? rTimeout
                       : end == TPosEnd::BreakOff ? rBreak
                                                  : rDecline;
        return reply;
    }

    TPosReply field(bool first)
    {
        FField = first ? 0 : FField + 1;
        const std::pair<QString, QString> fields[] = {
            {QStringLiteral("rrn"), machine.rrn()},
            {QStringLiteral("approval"), machine.authCode()},
            {QStringLiteral("trans_rcpt"), QString::number(machine.invoice())}};
        TPosReply reply{FField < static_cast<int>(std::size(fields))};
        if (FField < static_cast<int>(std::size(fields))) {
            reply.outs = {wide(fields[FField].first), wide(fields[FField].second)};
        }
        return reply;
    }

    std::map<int, TValue> FParameters;
    QString FMessage;
    int FAction = 0;
    int FReceived = 0;
    int FField = 0;
};

} // namespace

std::unique_ptr<TSimulatedPos> makeMessagePos(const TPosScenario& scenario)
{
    return std::make_unique<TMessagePos>(scenario);
}

} // namespace tnv5::sim
