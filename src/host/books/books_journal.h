#pragma once

#include "tnv5/host/books/books.h"

namespace tnv5::host {

/// Which passes of the journal are wanted; what is empty is not asked for.
struct TJournalQuery
{
    platform::TDateTime since = 0; ///< began at that time or later
    platform::TDateTime until = 0; ///< began at that time or before
    qint64 member = 0;
    QString gate = {};
    QString ending = {}; ///< as `journalEndings` has them
};

/// What can be asked for as an ending: those of passes, "refused", and "open" for passes under way.
QStringList journalEndings();

/// Reads the journal in pieces, so that it may be of any size.
///
///     TJournalReader journal(club, {.gate = "01A"});
///     while (const auto rows = journal.next(1000); !rows.isEmpty()) { ... }
class TJournalReader
{
public:
    /// @throws EBooks when the ending is none
    TJournalReader(TDatabase& database, TJournalQuery query);

    static const QList<TColumn>& columns();
    /// For people: fewer columns, and what happened in one of them.
    static const QList<TColumn>& columnsForPeople();
    /// A row of `columns` as one of `columnsForPeople`.
    static QVariantList forPeople(const QVariantList& row);

    /// Rows of `columns` after those given before, oldest first. @throws EDatabase
    QList<QVariantList> next(int limit);
    /// Passes that were under way when `next` looked at them and have ended since then: those that were
    /// given, and those whose ending is the one asked for.
    QList<QVariantList> ended();

private:
    QVariantList rowFrom(const TRows& row);
    void begin();
    QList<QVariantList> look(qint64 newest, int limit);
    bool wants(const QVariantList& row) const;

    TDatabase& FDatabase;
    TJournalQuery FQuery;
    bool FBegun = false;
    qint64 FLast = 0;    // the newest row looked at
    QList<qint64> FOpen; // those that were under way
};

/// The outages of lines, oldest first.
TBookTable outages(TDatabase& database);

/// Reads a moment: "2026-01-31", "2026-01-31 12:00", "2026-01-31T12:00:00.250+01:00", "today", "yesterday",
/// or a time ago such as "90m", "24h", "7d", "2w". Without a zone it is local.
/// @param end whether a day, or a time without seconds, stands for its end rather than its beginning
/// @throws EBooks
platform::TDateTime readMoment(const QString& text, bool end);

/// Reads an age and gives the moment that long ago: "90d", "8w", "18m" (months), "3y". @throws EBooks
platform::TDateTime readAge(const QString& text);

} // namespace tnv5::host
