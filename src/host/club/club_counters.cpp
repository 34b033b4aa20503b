#include "tnv5/host/club/club_counters.h"

#include "tnv5/host/local/local_events.h"

namespace tnv5::host {

namespace {

constexpr int kEnglish = 2;
constexpr int kTimeOut = 1; // of terminals, in their units

} // namespace

TClubScale::TClubScale(TClubSite& site, const TScalePlan& plan)
    : FSite(site), FPlan(plan), FPort(site, plan.name, plan.port, plan.baud), FCounter(FScales, site.database)
{
    FScales.SetIDLang(kEnglish);
    FScales.SetComport(&FPort.port());
    FScales.SetScalesType(plan.type);
    FScales.SetUpComport();
    FCounter.OnSold = [this](const TSale& sale) {
        FSite.log.info(FPlan.name, logLine(sale));
        FSite.tell(saleEvent(sale));
    };
    FCounter.OnTrouble = [this](const QString& text) {
        FTold = text;
        FSite.log.warning(FPlan.name, text);
    };
    FPort.OnOpened = [this] { begin(); };
    FPort.OnLost = [this](const QString&) { FCounter.close(); };
}

TClubScale::~TClubScale()
{
    FCounter.close();
}

QString TClubScale::inUse() const
{
    return FCounter.waiting() ? QStringLiteral("%1 waits for goods that are ordered").arg(FPlan.name)
                              : QString();
}

void TClubScale::begin()
{
    try {
        FCounter.open();
    } catch (const platform::Exception& error) { // the port goes away again; its keeper tells
        FSite.log.warning(FPlan.name, error.message());
    }
}

QString TClubScale::sell(const QString& card, const QString& product)
{
    if (!FPort.open()) {
        return FPort.whyNot();
    }
    FTold.clear();
    return FCounter.sell(card, product) ? QString() : FTold;
}

QJsonObject TClubScale::state() const
{
    const std::optional<int> grams = FPort.open() ? FCounter.grams() : std::nullopt;
    return {{"name", FPlan.name},
            {"line", FPlan.name},
            {"grams", grams ? QJsonValue(*grams) : QJsonValue(QJsonValue::Null)},
            {"steady", FCounter.steady()},
            {"waiting", FCounter.waiting()}};
}

TClubTerminal::TClubTerminal(TClubSite& site, const TTerminalPlan& plan)
    : FSite(site), FPlan(plan), FPort(site, plan.name, plan.port, 9600), FCounter(FPos, site.database)
{
    FPos.SetIDLang(kEnglish);
    FPos.SetPosType(plan.version);
    FPos.SetTimeOut(kTimeOut);
    FPos.SetCodeOk(kUsualCodesOk);
    FPos.SetCodeError(kUsualCodesError);
    FPos.SetComport(&FPort.port());
    FPos.SetUpComport();
    FCounter.OnOutcome = [this](const TPayment& payment) {
        showStage(toText(payment.outcome));
        FCents = FCounter.waiting() ? FCents : 0;
        if (payment.outcome == TOutcome::Unknown) { // somebody must look at the terminal
            FSite.log.warning(FPlan.name, logLine(payment));
        } else {
            FSite.log.info(FPlan.name, logLine(payment));
        }
        FSite.tell(paymentEvent(payment));
    };
    FCounter.OnStep = [this](const QString& text) {
        showStage(text);
        FSite.log.info(FPlan.name, text);
    };
    FCounter.OnTrouble = [this](const QString& text) {
        FTold = text;
        FSite.log.warning(FPlan.name, text);
    };
    FPort.OnLost = [this](const QString& why) { FCounter.lineLost(why); };
}

TClubTerminal::~TClubTerminal()
{
    end();
}

QString TClubTerminal::cancel()
{
    if (FCounter.waiting()) { // nothing will be told of it
        FCents = 0;
        FStage.clear();
    }
    FCounter.cancel();
    return FCounter.underWay()
               ? QStringLiteral(
                     "the payment at %1 is under way: the next step of the terminal will be refused; "
                     "until it comes, 30 minutes at most, %1 takes no other order")
                     .arg(FPlan.name)
               : QString();
}

QString TClubTerminal::inUse() const
{
    if (FCounter.underWay() || FCounter.waiting()) {
        return QStringLiteral("%1 takes a payment").arg(FPlan.name);
    }
    return unwritten() > 0
               ? QStringLiteral("the outcome of a payment at %1 is not in the books yet").arg(FPlan.name)
               : QString();
}

QString TClubTerminal::pay(qint64 cents)
{
    if (!FPort.open()) {
        return FPort.whyNot();
    }
    FTold.clear();
    if (!FCounter.order(cents)) {
        return FTold;
    }
    FCents = cents;
    FStage = QStringLiteral("waiting until the terminal asks for the amount");
    return {};
}

// A late answer to the payment before is not about the one that waits.
void TClubTerminal::showStage(const QString& text)
{
    if (!FCounter.waiting()) {
        FStage = text;
    }
}

// The amount stays until the outcome is told: between the bank's answer and its acknowledgement, too.
QJsonObject TClubTerminal::state() const
{
    return {{"name", FPlan.name}, {"line", FPlan.name}, {"cents", FCents}, {"stage", FStage}};
}

} // namespace tnv5::host
