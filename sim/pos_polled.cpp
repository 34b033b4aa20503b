// The first two libraries: an operation is begun, and its result is asked for until it is over.

#include "sim/pos_terminal.h"

#include <QHash>

namespace tnv5::sim {

namespace {

class TPolledPos final : public TSimulatedPos
{
public:
    TPolledPos(bool second, const TPosScenario& scenario) : TSimulatedPos(scenario), FSecond(second) {}

    TPosReply call(const QString& method, const QVariantList& arguments) override
    {
        const QHash<QString, std::function<TPosReply()>>& methods = FSecond ? second() : first();
        FArguments = arguments;
        const auto found = methods.find(method);
        return found != methods.end() ? (*found)() : unknown(method);
    }

private:
    using TKind = TPosMachine::TKind;
    using TMethods = QHash<QString, std::function<TPosReply()>>;

    TPosReply begin(TKind kind)
    {
        machine.begin(kind, kind == TKind::Other ? 0 : FArguments.value(0).toLongLong());
        FConfirming = false;
        return {0};
    }

    /// 2 while it lasts, then 0 or 1.
    TPosReply result()
    {
        if (const auto lost = machine.lost()) {
            TPosReply reply;
            reply.end = *lost;
            return reply;
        }
        if (!machine.over()) {
            return {2};
        }
        if (FSecond && !FConfirming && machine.approved()) {
            return {0}; // booked when it is confirmed
        }
        if (FConfirming && machine.scenario().end == TPosEnd::Unconfirmed) {
            return {1};
        }
        return {machine.finish() ? 0 : 1};
    }

    TPosReply confirm()
    {
        FConfirming = true;
        machine.finish();
        return {0};
    }

    TPosReply scenario()
    {
        const QString request = FArguments.value(0).toString();
        const QString from = QStringLiteral("<AddAmount>");
        const auto begins = request.indexOf(from) + from.size();
        const auto ends = request.indexOf(QStringLiteral("</AddAmount>"));
        machine.begin(TKind::CashAdvance, request.mid(begins, ends - begins).toLongLong());
        FConfirming = true; // a cash advance needs no second half
        return {0};
    }

    TPosReply refund()
    {
        begin(TKind::Refund);
        FConfirming = true;
        return {0};
    }

    TPosReply settle()
    {
        machine.begin(TKind::Other);
        machine.closeDay();
        return {0};
    }

    TMethods common()
    {
        const auto other = [this] { return begin(TKind::Other); };
        const auto code = [this] { return TPosReply{machine.errorCode()}; };
        const auto text = [this] { return TPosReply{wide(machine.errorText())}; };
        return {{QStringLiteral("CommOpen"), other},
                {QStringLiteral("CommOpenTCP"), other},
                {QStringLiteral("CommClose"), other},
                {QStringLiteral("GetLastErrorCode"), code},
                {QStringLiteral("GetLastErrorText"), text},
                {QStringLiteral("InvoiceNum"), [this] { return TPosReply{machine.invoice()}; }}};
    }

    const TMethods& first()
    {
        if (FMethods.isEmpty()) {
            const auto other = [this] { return begin(TKind::Other); };
            FMethods = common();
            FMethods.insert({{QStringLiteral("LibraryVersion"), [] { return TPosReply{u"SIM 0"}; }},
                             {QStringLiteral("SetUserTimeOut"), other},
                             {QStringLiteral("SetCommNum"), other},
                             {QStringLiteral("PosEchoTest"), other},
                             {QStringLiteral("PosPurchase"), [this] { return begin(TKind::Payment); }},
                             {QStringLiteral("GetLastResult"), [this] { return result(); }},
                             {QStringLiteral("getRRN"), [this] { return TPosReply{wide(machine.rrn())}; }},
                             {QStringLiteral("PosXBalanceMer"), other},
                             {QStringLiteral("PosSettleMer"), [this] { return settle(); }}});
        }
        return FMethods;
    }

    const TMethods& second()
    {
        if (!FMethods.isEmpty()) {
            return FMethods;
        }
        const auto other = [this] { return begin(TKind::Other); };
        const auto number = [](qint64 value) { return TPosReply{std::int64_t{value}}; };
        FMethods = common();
        FMethods.insert(
            {{QStringLiteral("LibraryVersion"), [] { return TPosReply{u"SIM 1"}; }},
             {QStringLiteral("useLogging"), other},
             {QStringLiteral("SetErrorLang"), other},
             {QStringLiteral("Ping"), other},
             {QStringLiteral("TerminalInfo"), [] { return TPosReply{u"simulated terminal 1"}; }},
             {QStringLiteral("Purchase"), [this] { return begin(TKind::Payment); }},
             {QStringLiteral("Confirm"), [this] { return confirm(); }},
             {QStringLiteral("StartScenario"), [this] { return scenario(); }},
             {QStringLiteral("PurchaseReturn"), [this] { return refund(); }},
             {QStringLiteral("LastResult"), [this] { return result(); }},
             {QStringLiteral("LastStatMsgCode"), [this] { return TPosReply{machine.step() + 1}; }},
             {QStringLiteral("LastStatMsgDescription"),
              [this] { return TPosReply{wide(TPosMachine::shown(machine.step()))}; }},
             {QStringLiteral("RRN"), [this] { return TPosReply{wide(machine.rrn())}; }},
             {QStringLiteral("AuthCode"), [this] { return TPosReply{wide(machine.authCode())}; }},
             {QStringLiteral("PAN"), [] { return TPosReply{u"411111******1111"}; }},
             {QStringLiteral("IssuerName"), [] { return TPosReply{u"VISA"}; }},
             {QStringLiteral("MerchantID"), [] { return TPosReply{u"M0001"}; }},
             {QStringLiteral("TerminalID"), [] { return TPosReply{u"T0001"}; }},
             {QStringLiteral("GetBatchTotals"), other},
             {QStringLiteral("PrintBatchTotals"), other},
             {QStringLiteral("ReqCurrReceipt"), other},
             {QStringLiteral("Settlement"), [this] { return settle(); }},
             {QStringLiteral("TotalsDebitAmt"), [=, this] { return number(machine.debit().amount); }},
             {QStringLiteral("TotalsDebitNum"), [=, this] { return number(machine.debit().number); }},
             {QStringLiteral("TotalsCreditAmt"), [=, this] { return number(machine.credit().amount); }},
             {QStringLiteral("TotalsCreditNum"), [=, this] { return number(machine.credit().number); }},
             {QStringLiteral("TotalsCancelledAmt"), [=, this] { return number(machine.cancelled().amount); }},
             {QStringLiteral("TotalsCancelledNum"),
              [=, this] { return number(machine.cancelled().number); }}});
        return FMethods;
    }

    bool FSecond;
    bool FConfirming = false;
    QVariantList FArguments;
    TMethods FMethods;
};

} // namespace

std::unique_ptr<TSimulatedPos> makePolledPos(bool second, const TPosScenario& scenario)
{
    return std::make_unique<TPolledPos>(second, scenario);
}

} // namespace tnv5::sim
