#include "tnv5/host/goods_counter.h"

#include <algorithm>

namespace tnv5::host {

TGoodsCounter::TGoodsCounter(scales::TScalesDevice& scales, TDatabase& database)
    : FScales(scales), FDatabase(database), FReader(scales)
{
    FScales.SetOnError([this](platform::TComponent*, const QString& text) {
        FFault = true;
        tellOnce(FScaleTrouble, text);
    });
    FReader.OnReading = [this](int weight) { onReading(weight); };
    FReader.OnSteady = [this](int weight) { onSteady(weight); };
    FReader.OnSilent = [this] {
        FGrams.reset();
        FSteady = false;
        tellOnce(FScaleTrouble, QStringLiteral("the scale does not answer"));
    };
}

TGoodsCounter::~TGoodsCounter()
{
    OnTrouble = nullptr; // whoever hears it may be going, too
    close();
    FScales.SetOnError(nullptr);
}

void TGoodsCounter::close()
{
    FReader.stop();
    FGrams.reset();
    FSteady = false;
    FEmptyReadings = 0;
    if (const auto order = std::exchange(FOrder, std::nullopt)) {
        tell(QStringLiteral("nothing is weighed any more: the order of %1 for %2 is withdrawn")
                 .arg(order->name, order->product));
    }
}

bool TGoodsCounter::sell(const QString& card, const QString& product)
{
    if (FOrder) { // the goods on the platform are somebody's already
        tell(QStringLiteral("the scale waits for %1 already").arg(FOrder->name));
        return false;
    }
    const std::optional<THolder> holder = FDatabase.holderOf(card);
    if (!holder) {
        tell(QStringLiteral("card %1 is unknown, nothing is sold").arg(card));
        return false;
    }
    const std::optional<qint64> price = FDatabase.priceOf(product);
    if (!price) {
        tell(QStringLiteral("nothing is sold as \"%1\"").arg(product));
        return false;
    }
    FOrder = TSale{};
    FOrder->card = card;
    FOrder->member = holder->member.id;
    FOrder->name = holder->member.name;
    FOrder->product = product;
    FOrder->centsPerKg = *price;
    return true;
}

void TGoodsCounter::onReading(int weight)
{
    const bool fault = std::exchange(FFault, false);
    FGrams = weight;
    FSteady = false;
    const bool nothing = weight == 0 && !fault; // a scale that is overloaded has no weight to tell either
    FEmptyReadings = nothing ? std::min(FEmptyReadings + 1, TScaleReader::kSteadyReadings) : 0;
    if (empty()) {
        FSold = false;
    }
    if (!fault) {
        FScaleTrouble.clear();
    }
}

void TGoodsCounter::onSteady(int grams)
{
    FSteady = true;
    if (!FOrder || FSold) {
        return;
    }
    TSale sale = *FOrder;
    sale.sold = platform::Now();
    sale.grams = grams;
    sale.cents = priceFor(grams, sale.centsPerKg);
    try {
        FDatabase.sell(sale);
    } catch (const EDatabase& error) { // the order stays, and is tried again with the next reading
        tellOnce(FBooksTrouble,
                 QStringLiteral("the sale cannot be written, nothing is charged: ") + error.message());
        return;
    }
    FBooksTrouble.clear();
    FOrder.reset();
    FSold = true;
    if (OnSold) {
        OnSold(sale);
    }
}

void TGoodsCounter::tell(const QString& text)
{
    if (OnTrouble) {
        OnTrouble(text);
    }
}

void TGoodsCounter::tellOnce(QString& told, const QString& text)
{
    if (std::exchange(told, text) != text) {
        tell(text);
    }
}

} // namespace tnv5::host
