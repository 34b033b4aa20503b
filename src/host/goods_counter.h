#pragma once

#include "tnv5/host/books/database.h"
#include "tnv5/host/scale_reader.h"

namespace tnv5::host {

/// Sells goods by weight: a scale, a card, an account.
///
///     TGoodsCounter counter(scales, club);
///     counter.OnSold = [](const TSale& sale) { print(logLine(sale)); };
///     counter.open();
///     counter.sell("10000001", "apples"); // as soon as what is on the platform has come to rest
///
/// The same goods are never sold twice: after a sale the platform must have been empty before the next one,
/// for `TScaleReader::kSteadyReadings` questions in a row, because a single answer without a weight may be
/// noise, or goods that are moved. A sale that cannot be written is told and tried again with the next steady
/// weight; nothing is charged that is not in the books, because both are written in one transaction.
///
/// It takes the scale's `OnError`. Scale and database must outlive the counter; the hooks must not destroy
/// it.
class TGoodsCounter
{
public:
    TGoodsCounter(scales::TScalesDevice& scales, TDatabase& database);
    ~TGoodsCounter();
    TGoodsCounter(const TGoodsCounter&) = delete;
    TGoodsCounter& operator=(const TGoodsCounter&) = delete;

    /// Begins to read the scale. @throws platform::EComPort
    void open() { FReader.start(); }
    /// Reads no more; an order that waits is forgotten, and that is told.
    void close();

    /// The holder of this card takes what is on the platform.
    /// @return false, told through `OnTrouble`, when another order waits (`cancel` it first), nobody has the
    /// card or nothing of that name is sold.
    /// @throws EDatabase
    bool sell(const QString& card, const QString& product);
    /// Forgets an order that still waits.
    void cancel() { FOrder.reset(); }
    /// An order waits for a steady weight.
    bool waiting() const { return FOrder.has_value(); }
    /// Nothing is on the platform, as far as the scale has said, and said again.
    bool empty() const { return FEmptyReadings >= TScaleReader::kSteadyReadings; }
    /// What the scale said last: 0 for an empty platform, for what moves and what is out of range; nothing
    /// before its first answer and while it does not answer.
    std::optional<int> grams() const { return FGrams; }
    /// It has come to rest.
    bool steady() const { return FSteady; }

    /// A sale is in the books.
    std::function<void(const TSale& sale)> OnSold;
    /// One line for the person at the desk. What stays wrong is told once.
    std::function<void(const QString& text)> OnTrouble;

private:
    void onReading(int weight);
    void onSteady(int grams);
    void tell(const QString& text);
    void tellOnce(QString& told, const QString& text);

    scales::TScalesDevice& FScales;
    TDatabase& FDatabase;
    TScaleReader FReader;
    std::optional<TSale> FOrder; // without weight and price
    std::optional<int> FGrams;
    bool FSteady = false;
    int FEmptyReadings = 0; // in a row
    bool FSold = false;     // what is on the platform has been sold
    bool FFault = false;    // the scale reported one since its last reading
    QString FScaleTrouble;  // told, and not over yet
    QString FBooksTrouble;  // the same
};

} // namespace tnv5::host
