#pragma once

#include "tnv5/host/books/connection.h"
#include "tnv5/host/card_payment.h"
#include "tnv5/host/club.h"

namespace tnv5::host {

/// The club's database: one SQLite file, brought up to date when it is older.
///
/// Reading never waits for another program that writes (write-ahead log). A write that finds the file locked
/// waits `kBusyMs` at most, because a person may be standing at a gate meanwhile, and then raises.
/// A crash of the program loses nothing that was written; a power cut may lose the last moments.
///
///     TDatabase club("club.sqlite");
///     const qint64 anna = club.addMember("Anna Berg");
///     club.addCard("12345678", anna);
///     club.addMembership(anna, {QDate(2026, 1, 1), QDate(2026, 12, 31), {"hall"}});
///     club.setGate({"01A", "hall", TDirection::In});
class TDatabase
{
public:
    static constexpr int kBusyMs = 50;
    static constexpr int kStartMs = 2'000; ///< the same when a host starts: no gate waits yet
    static constexpr int kCloseMs = 3'000; ///< and when it ends: none waits any more

    /// @param file path of the file; ":memory:" keeps everything in memory
    /// @param opening whether a file that is not there is made. @throws EDatabase
    explicit TDatabase(const QString& file, TOpening opening = TOpening::Make);
    ~TDatabase();
    TDatabase(const TDatabase&) = delete;
    TDatabase& operator=(const TDatabase&) = delete;

    // All of these throw EDatabase when the database fails or forbids what is asked.

    qint64 addMember(const QString& name);
    void setSuspended(qint64 member, bool suspended);
    void setInside(qint64 member, bool inside);
    /// @param cents what the member's account holds
    void setBalance(qint64 member, qint64 cents);
    void addCard(const QString& card, qint64 member);
    /// Zones that are not there yet are made.
    void addMembership(qint64 member, const TMembership& membership);
    /// Adds a gate or changes the one at its address; the zone is made when it is not there yet.
    void setGate(const TGate& gate);

    std::optional<THolder> holderOf(const QString& card);
    std::optional<TGate> gateAt(const QString& address);
    QList<TGate> gates();

    /// Writes passes in one transaction: new ones are added and get their `id`, the others changed. A pass
    /// that was made puts its member inside or outside in the same transaction.
    void writePasses(const QList<PPass>& passes);
    /// Passes of the journal after a row, oldest first, `limit` at most.
    QList<TPass> passesAfter(qint64 id, int limit);
    /// The last row of the journal, 0 when it is empty.
    qint64 lastPass();

    /// Ends the passes that a killed host left open, as abandoned, and its outages. A host calls it once when
    /// it starts. Other hosts that run on this database keep theirs: each has a number, written with its
    /// passes, and holds a lock as long as it lives (`THostLocks`); it becomes one by this call or by its
    /// first pass.
    /// @param patienceMs how long it waits for another program
    /// @return how many passes
    int closeAbandoned(int patienceMs = kStartMs);

    /// Writes outages in one transaction: new ones are added and get their `id`, the others get their end.
    void writeOutages(const QList<POutage>& outages);
    /// Outages after a row, oldest first, `limit` at most.
    QList<TOutage> outagesAfter(qint64 id, int limit);
    /// The last row of the outages, 0 when there is none.
    qint64 lastOutage();

    /// Adds what is sold by weight, or changes its price. @param centsPerKg 0 to 1,000,000,000
    void setProduct(const QString& name, qint64 centsPerKg);
    /// Price of a kilogram in cents; nothing when it is not sold.
    std::optional<qint64> priceOf(const QString& product);
    /// Writes a sale and takes its price from the member's account, which may go below 0: both or neither.
    /// The sale gets its `id`.
    void sell(TSale& sale);
    /// Sales after a row, oldest first, `limit` at most.
    QList<TSale> salesAfter(qint64 id, int limit);
    /// The last row of the sales, 0 when there is none.
    qint64 lastSale();

    /// Writes a card payment: a new one is added and gets its `id`, any other changed.
    void writePayment(TPayment& payment);
    /// Payments after a row, oldest first, `limit` at most.
    QList<TPayment> paymentsAfter(qint64 id, int limit);
    /// Payments that are still under way, oldest first.
    QList<TPayment> paymentsUnderWay();
    /// The last row of the payments, 0 when there is none.
    qint64 lastPayment();

    /// The connection, for statements about tables of a part's own.
    const QSqlDatabase& connection() const;

    /// Path of the file, as it was given.
    QString fileName() const;
    /// What has become of the file since it was opened: empty when it is in its place, or else a sentence
    /// that says it was deleted, replaced or overwritten, so that what is written is lost. A host
    /// (`closeAbandoned`) also notices a file that was copied over it, unless that has changed more often.
    QString misplaced() const;
    /// Copies the database as this program still has it beside its place, "club.sqlite.rescued", for a
    /// misplaced one. @return name of the copy, which was not there before @throws EDatabase
    QString rescue();

    /// Number of this program among the hosts of the database; 0: it is none yet.
    qint64 host() const;

    /// How long a write waits for another program, in milliseconds.
    void setBusyTimeout(int ms);

private:
    struct TParts;
    void writePass(const TPass& pass, qint64& id);
    void becomeHost();
    void markFile();

    std::unique_ptr<TParts> F;
};

} // namespace tnv5::host
