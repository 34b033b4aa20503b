#pragma once

#include "tnv5/host/books/database.h"
#include "tnv5/platform/timer.h"

#include <QHash>
#include <QSet>
#include <functional>

namespace tnv5::host {

/// The pass journal on its way into the database.
///
/// Nothing is written while a card waits for its gate: passes queue here, and a short timer writes them, 500
/// at most in one transaction. A write that fails is tried again with growing pauses until it succeeds; the
/// first failure and the recovery are reported, not every try.
class TJournal
{
public:
    static constexpr int kDelayMs = 100;          ///< from the first waiting pass to the write
    static constexpr int kLongestDelayMs = 5'000; ///< between tries while the database fails
    /// Passes that may wait while the database fails. Beyond that the oldest one that waits is given up: it
    /// goes to `OnLost`.
    static constexpr qsizetype kMaxWaiting = 100'000;
    static constexpr qsizetype kMaxOutages =
        1'000; ///< that may wait; the oldest one is given up, to `OnOutageLost`

    explicit TJournal(TDatabase& database);
    ~TJournal();
    TJournal(const TJournal&) = delete;
    TJournal& operator=(const TJournal&) = delete;

    /// A new pass, or one that has changed since it was added.
    void add(const PPass& pass);

    /// A line that cannot be used, or can be used again since it was added.
    void add(const POutage& outage);

    /// Writes everything that waits, now. @return false when it failed; then it keeps waiting.
    bool flush();

    /// Writes everything that waits and waits itself, some seconds, for a database that another program has
    /// locked. What cannot be written all the same goes to `OnLost` and `OnOutageLost`.
    void close();

    qsizetype waiting() const { return FWaiting.size(); }
    /// The last try to write failed.
    bool failing() const { return FFailing; }

    /// Whether a member is inside as far as passes that still wait say so.
    std::optional<bool> insideOf(qint64 member) const;

    /// One line for the person in charge: writing fails, or works again.
    std::function<void(const QString& text)> OnTrouble;
    /// A pass that will not be in the journal.
    std::function<void(const TPass& pass)> OnLost;
    /// An outage, or its end, that will not be in the journal.
    std::function<void(const TOutage& outage)> OnOutageLost;

private:
    bool writePiece();
    void lose(const TPass& pass);
    void lose(const TOutage& outage);
    void failed(const QString& why);
    void succeeded();
    void tell(const QString& text);

    TDatabase& FDatabase;
    platform::TTimer FTimer;
    QList<PPass> FWaiting;
    QList<POutage> FOutages;
    QSet<const TPass*> FQueued;  // the same, to find them
    QHash<qint64, bool> FInside; // what the waiting passes make of their members
    bool FFailing = false;
};

} // namespace tnv5::host
