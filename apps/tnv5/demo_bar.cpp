#include "apps/tnv5/demo_bar.h"

#include "apps/tnv5/console.h"
#include "apps/tnv5/demo_report.h"
#include "tnv5/host/club.h"

#include <limits>

namespace tnv5::cli {

using host::TOutcome;
using sim::TBankFate;

namespace {

constexpr int kVersion = 2;
constexpr int kEnglish = 2;
constexpr int kLookMs = 50;
constexpr int kWalkMs = 300;       // between two who buy
constexpr int kCardMs = 250;       // until the card is shown, and until the bank answers
constexpr int kPatienceMs = 3'000; // of the terminal, on a busy machine

QList<TDrink> drinks()
{
    sim::TBankScenario good;
    sim::TBankScenario poor;
    poor.Card = "5500005555555559";
    poor.Code = "51";
    poor.BankApproves = false;
    sim::TBankScenario noisy; // frames are damaged and repeated
    noisy.Card = "340000000000009";
    noisy.DamagedCards = 1;
    noisy.DamagedAmounts = 1;
    sim::TBankScenario hasty;
    hasty.CustomerLeaves = true;
    sim::TBankScenario strange;
    strange.Code = "Z9";
    return {
        {QStringLiteral("a juice"), 450, good, TOutcome::Approved},
        {QStringLiteral("a shake"), 720, poor, TOutcome::Declined},
        {QStringLiteral("a water"), 250, noisy, TOutcome::Approved},
        {QStringLiteral("a tea"), 310, hasty, TOutcome::Cancelled},
        {QStringLiteral("a cocktail"), 1'290, strange, TOutcome::Unknown},
    };
}

/// What the terminal's own book may say beside an outcome.
bool agree(TOutcome outcome, TBankFate fate)
{
    switch (outcome) {
    case TOutcome::Approved:
        return fate == TBankFate::Approved;
    case TOutcome::Declined:
        return fate == TBankFate::Declined;
    case TOutcome::Cancelled:
        return fate == TBankFate::Cancelled;
    case TOutcome::Unknown:
        return true;
    case TOutcome::UnderWay:
        break;
    }
    return false;
}

} // namespace

TDemoBar::TDemoBar(host::TDatabase& club, sim::TLines& lines)
    : FClub(club),
      FDrinks(drinks()),
      FFirstPayment(club.lastPayment()),
      FPty(QStringLiteral("bank")),
      FTerminal(FPty, kVersion),
      FCounter(FPos, club)
{
    FTerminal.CardMs = kCardMs;
    FTerminal.BankMs = kCardMs;
    FTerminal.AckMs = kPatienceMs;
    lines.add(FPty);
    lines.add(FPort);
    FPort.SetPort(FPty.path());
    FPos.SetIDLang(kEnglish);
    FPos.SetComport(&FPort);
    FPos.SetPosType(kVersion);
    FPos.SetCodeOk(host::kUsualCodesOk);
    FPos.SetCodeError(host::kUsualCodesError);
    FCounter.OnOutcome = [this](const host::TPayment& payment) {
        print(host::logLine(payment) + QStringLiteral("  (%1)").arg(current().name));
        if (OnPayment) {
            OnPayment(payment);
        }
    };
    FCounter.OnStep = [this](const QString& text) { FStage = text; };
    FCounter.OnTrouble = [](const QString& text) { print(QStringLiteral("--- bank terminal: ") + text); };
    FTimer.SetInterval(kLookMs);
    FTimer.OnTimer = [this](platform::TTimer*) { look(); };
}

void TDemoBar::open()
{
    if (!FPos.SetConnection(true)) {
        throw platform::Exception(QStringLiteral("The simulated bank terminal cannot be opened"));
    }
    FTimer.SetEnabled(true);
}

void TDemoBar::look()
{
    if (FServing && FTerminal.idle()) {
        FDone.append(&current());
        FNext = (FNext + 1) % FDrinks.size();
        FServing = false;
        FSinceMs = 0;
    }
    FSinceMs += kLookMs;
    if (!FServing && !FClosed && FSinceMs >= kWalkMs * Leisure && FCounter.order(current().cents)) {
        FStage = QStringLiteral("waits for the terminal");
        FServing = FTerminal.begin(current().scenario);
    }
}

QJsonObject TDemoBar::state() const
{
    return {{QStringLiteral("name"), QStringLiteral("bar")},
            {QStringLiteral("line"), QStringLiteral("bar")},
            {QStringLiteral("cents"), FServing ? current().cents : 0},
            {QStringLiteral("stage"), FServing ? FStage : QString()}};
}

QStringList TDemoBar::compare() const
{
    QStringList wrong;
    QList<host::TPayment> payments = FClub.paymentsAfter(FFirstPayment, std::numeric_limits<int>::max());
    const auto& book = FTerminal.book();
    const qsizetype forgotten = FDone.size() - static_cast<qsizetype>(book.size());
    for (qsizetype index = 0; index < FDone.size(); ++index) {
        const TDrink& drink = *FDone[index];
        const QString who = QStringLiteral("%1 for %2 must be %3; ")
                                .arg(drink.name, host::amountText(drink.cents), toText(drink.outcome));
        if (payments.isEmpty()) {
            wrong << who + QStringLiteral("the payments: nothing");
            continue;
        }
        const host::TPayment payment = payments.takeFirst();
        const QString line = host::logLine(payment);
        if (payment.cents != drink.cents || payment.outcome != drink.outcome) {
            wrong << who + QStringLiteral("the payments: ") + line;
        }
        if (index < forgotten) {
            continue;
        }
        const sim::TBankRecord& record =
            book[static_cast<std::size_t>(index - std::max<qsizetype>(forgotten, 0))];
        if (record.Amount.Amount != payment.cents || !agree(payment.outcome, record.Fate)) {
            wrong << who + QStringLiteral("the terminal's book says otherwise: ") + line;
        }
    }
    for (const host::TPayment& payment : payments) {
        wrong << QStringLiteral("in the payments, but nobody bought it: ") + host::logLine(payment);
    }
    return wrong;
}

QStringList TDemoBar::closingRows() const
{
    qint64 cents = 0;
    qsizetype approved = 0;
    for (const TDrink* drink : FDone) {
        if (drink->outcome == TOutcome::Approved) {
            ++approved;
            cents += drink->cents;
        }
    }
    return {closingRow(QStringLiteral("drinks by card, tries"), QString::number(FDone.size())),
            closingRow(QStringLiteral("  approved"), QString::number(approved)),
            closingRow(QStringLiteral("  paid"), host::amountText(cents))};
}

} // namespace tnv5::cli
