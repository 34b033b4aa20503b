// The control and the pad: each call is a whole operation and answers when it is over.

#include "sim/pos_terminal.h"

namespace tnv5::sim {

namespace {

using TKind = TPosMachine::TKind;
using platform::automation::TValue;

/// An operation with a card, and when its answer comes; the machine is at its end then.
TPosReply withCard(TPosMachine& machine, TKind kind, qint64 amount)
{
    TPosReply reply;
    machine.begin(kind, amount);
    const TPosEnd end = machine.scenario().end;
    const bool lost = end == TPosEnd::Crash || end == TPosEnd::Hang;
    reply.end = lost ? end : TPosEnd::Approve;
    reply.afterMs = machine.scenario().stepMs * (lost ? TPosMachine::kBankStep : TPosMachine::kSteps);
    if (!lost) {
        machine.finish();
    }
    return reply;
}

class TControlPos final : public TSimulatedPos
{
public:
    explicit TControlPos(const TPosScenario& scenario) : TSimulatedPos(scenario)
    {
        properties = {{QStringLiteral("TransportType"), 0},
                      {QStringLiteral("PosIP"), u""},
                      {QStringLiteral("PosPort"), 0},
                      {QStringLiteral("DLLVersion"), u"SIM 2"}};
    }

    TPosReply call(const QString& method, const QVariantList& arguments) override
    {
        static const QStringList simple = {QStringLiteral("PathToLogging"), QStringLiteral("LoggingON"),
                                           QStringLiteral("LoggingOFF"),    QStringLiteral("PosOpen"),
                                           QStringLiteral("PosEchoTest"),   QStringLiteral("PosClose"),
                                           QStringLiteral("PosXBalanceMer")};
        if (simple.contains(method)) {
            return {0};
        }
        if (method == u"PosPurchaseMer") {
            return purchase(arguments.value(0).toLongLong());
        }
        if (method == u"PosSettleMer") {
            machine.closeDay();
            return {0};
        }
        if (method == u"TrxRRNp") {
            return {wide(machine.rrn())};
        }
        if (method == u"Receipt") {
            return {machine.invoice()};
        }
        if (method == u"PosGetInfo") {
            return {u"simulated terminal 2"};
        }
        return unknown(method);
    }

private:
    TPosReply purchase(qint64 amount)
    {
        TPosReply reply = withCard(machine, amount < 0 ? TKind::Refund : TKind::Payment, qAbs(amount));
        const int step = machine.scenario().stepMs;
        for (int i = 0; i < TPosMachine::kSteps; ++i) {
            reply.events.push_back({i * step, QStringLiteral("OnMsgReceived"), wide(TPosMachine::shown(i))});
        }
        if (!machine.approved() && reply.end == TPosEnd::Approve) {
            reply.events.push_back(
                {reply.afterMs, QStringLiteral("OnMsgReceived"), wide(machine.errorText())});
        }
        reply.events.push_back(
            {reply.afterMs, QStringLiteral("OnTrxComplete"), machine.approved() ? 0 : machine.errorCode()});
        reply.result = 0;
        return reply;
    }
};

class TPadPos final : public TSimulatedPos
{
public:
    explicit TPadPos(const TPosScenario& scenario) : TSimulatedPos(scenario)
    {
        properties = {{QStringLiteral("SaveLog"), false}, {QStringLiteral("LogFileName"), u""}};
    }

    TPosReply call(const QString& method, const QVariantList& arguments) override
    {
        if (method == u"OpenPort" || method == u"Ping" || method == u"ClosePort") {
            return {0};
        }
        if (method == u"Purchase") {
            return paid(TKind::Payment, arguments, true);
        }
        if (method == u"VoidOfPurchase") {
            return paid(TKind::Refund, arguments, false);
        }
        if (method == u"GetXReport") {
            const auto side = [](const TPosTurnover& first, const TPosTurnover& second) {
                return QStringLiteral("%1 %2 %3 %4")
                    .arg(first.number)
                    .arg(first.amount)
                    .arg(second.number)
                    .arg(second.amount);
            };
            return response(QStringLiteral("R;0;") + side(machine.debit(), machine.credit()) + u';' +
                            side(machine.cancelled(), {}));
        }
        if (method == u"EndOfDay") {
            machine.closeDay();
            return response(QStringLiteral("R;0"));
        }
        if (method == u"TestConnection") {
            return response(QStringLiteral("R;0"));
        }
        if (method == u"GetPinpadInfo") {
            return response(QStringLiteral("simulated terminal 3"));
        }
        return unknown(method);
    }

private:
    static TPosReply response(const QString& text)
    {
        TPosReply reply{0};
        reply.outs = {wide(text)};
        return reply;
    }

    TPosReply paid(TKind kind, const QVariantList& arguments, bool amountByReference)
    {
        const qint64 amount = arguments.value(0).toLongLong();
        TPosReply reply = withCard(machine, kind, amount);
        const QString text = machine.approved() ? QStringLiteral("R;0;%1;-;-;%2;-;%3")
                                                      .arg(machine.rrn(), QString::number(machine.invoice()),
                                                           machine.authCode())
                                                : QStringLiteral("R;%1").arg(machine.errorCode());
        reply.result = 0;
        if (amountByReference) {
            reply.outs.push_back(std::int64_t{amount});
        }
        reply.outs.push_back(wide(text));
        return reply;
    }
};

} // namespace

std::unique_ptr<TSimulatedPos> makeControlPos(const TPosScenario& scenario)
{
    return std::make_unique<TControlPos>(scenario);
}

std::unique_ptr<TSimulatedPos> makePadPos(const TPosScenario& scenario)
{
    return std::make_unique<TPadPos>(scenario);
}

} // namespace tnv5::sim
