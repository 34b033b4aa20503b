#include "apps/tnv5/demo_counter.h"

#include "apps/tnv5/console.h"
#include "apps/tnv5/demo_report.h"

namespace tnv5::cli {

namespace {

constexpr int kFamily = 2; // a dialogue with states: at rest, moving, overloaded
constexpr int kEnglish = 2;
constexpr int kCapacity = 15'000;
constexpr int kLookMs = 50;
constexpr int kWalkMs = 400;   // between two who buy
constexpr int kSettleMs = 200; // the scale moves that long
constexpr int kFillMs = 700;   // until one thinks better of it

} // namespace

TDemoCounter::TDemoCounter(host::TDatabase& club, sim::TLines& lines)
    : FClub(club),
      FPurchases(demoPurchases()),
      FFirstSale(club.lastSale()),
      FPty(QStringLiteral("scale")),
      FScale(FPty, kFamily),
      FCounter(FScales, club)
{
    for (const TPurchase& purchase : FPurchases) {
        FBalances[purchase.card] = club.holderOf(purchase.card)->member.balance;
    }
    lines.add(FPty);
    lines.add(FPort);
    FScale.setCapacity(kCapacity);
    FPort.SetPort(FPty.path());
    FScales.SetIDLang(kEnglish);
    FScales.SetComport(&FPort);
    FScales.SetScalesType(kFamily);
    FScales.SetUpComport();
    FCounter.OnSold = [this](const host::TSale& sale) { onSold(sale); };
    FCounter.OnTrouble = [](const QString& text) { print(QStringLiteral("--- scale: ") + text); };
    FTimer.SetInterval(kLookMs);
    FTimer.OnTimer = [this](platform::TTimer*) { look(); };
}

void TDemoCounter::open()
{
    if (!FScales.SetConnection(true)) {
        throw platform::Exception(QStringLiteral("The simulated scale cannot be opened"));
    }
    FCounter.open();
    FTimer.SetEnabled(true);
}

QJsonObject TDemoCounter::state() const
{
    const bool known = FPort.Connected();
    return {{QStringLiteral("name"), QStringLiteral("fruit")},
            {QStringLiteral("line"), QStringLiteral("fruit")},
            {QStringLiteral("grams"), known ? QJsonValue(FReading) : QJsonValue(QJsonValue::Null)},
            {QStringLiteral("steady"), known && FAlikeMs >= kSettleMs}};
}

void TDemoCounter::look()
{
    const int reading = FCounter.empty() ? 0 : FScales.LastWeight();
    FAlikeMs = std::exchange(FReading, reading) == reading ? FAlikeMs + kLookMs : 0;
    FSinceMs += kLookMs;
    switch (FState) {
    case TState::Nobody:
        if (!FClosed && FSinceMs >= kWalkMs * Leisure) {
            stepUp();
        }
        break;
    case TState::Filling:
        if (FPut < current().loads.size() && FSinceMs >= kFillMs) {
            put(current().loads[FPut++]);
        }
        break;
    case TState::Leaving:
        if (FCounter.empty()) {
            FState = TState::Nobody;
            FSinceMs = 0;
            FNext = (FNext + 1) % FPurchases.size();
        }
        break;
    }
}

void TDemoCounter::stepUp()
{
    FCounter.sell(current().card, current().product);
    FState = TState::Filling;
    FPut = 1;
    put(current().loads.first());
}

void TDemoCounter::put(int load)
{
    FScale.put(load, kSettleMs);
    FSinceMs = 0;
}

void TDemoCounter::onSold(const host::TSale& sale)
{
    print(host::logLine(sale));
    if (OnSale) {
        OnSale(sale);
    }
    FDone.append(&current());
    FState = TState::Leaving;
    put(0);
}

QStringList TDemoCounter::compare() const
{
    QStringList wrong;
    QList<host::TSale> sales = FClub.salesAfter(FFirstSale, std::numeric_limits<int>::max());
    std::map<QString, qint64> balances = FBalances;
    for (const TPurchase* purchase : FDone) {
        const QString who = QStringLiteral("%1 (%2) must pay %3 for %4 g %5; ")
                                .arg(purchase->name, purchase->card, host::amountText(purchase->cents))
                                .arg(purchase->loads.last())
                                .arg(purchase->product);
        balances[purchase->card] -= purchase->cents;
        if (sales.isEmpty()) {
            wrong << who + QStringLiteral("the sales: nothing");
            continue;
        }
        const host::TSale sale = sales.takeFirst();
        if (sale.card != purchase->card || sale.product != purchase->product ||
            sale.grams != purchase->loads.last() || sale.cents != purchase->cents) {
            wrong << who + QStringLiteral("the sales: ") + host::logLine(sale);
        }
    }
    for (const host::TSale& sale : sales) {
        wrong << QStringLiteral("in the sales, but nobody bought it: ") + host::logLine(sale);
    }
    for (const auto& [card, balance] : balances) {
        const qint64 found = FClub.holderOf(card)->member.balance;
        if (found != balance) {
            wrong << QStringLiteral("the account of card %1 must hold %2, it holds %3")
                         .arg(card, host::amountText(balance), host::amountText(found));
        }
    }
    return wrong;
}

QStringList TDemoCounter::closingRows() const
{
    qint64 cents = 0;
    int grams = 0;
    for (const TPurchase* purchase : FDone) {
        cents += purchase->cents;
        grams += purchase->loads.last();
    }
    return {closingRow(QStringLiteral("fruit sold, times"), QString::number(FDone.size())),
            closingRow(QStringLiteral("  grams"), QString::number(grams)),
            closingRow(QStringLiteral("  charged"), host::amountText(cents))};
}

} // namespace tnv5::cli
