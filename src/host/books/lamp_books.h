#pragma once

#include "tnv5/host/books/database.h"
#include "tnv5/host/lamp.h"

namespace tnv5::host {

/// The part of the club's database that is about lamps and the time sold on them.
///
///     TDatabase club("club.sqlite");
///     TLampBooks books(club);
///     books.setLamp({"Sun 1", "100A", "1", 50});
///
/// The database must outlive the books. All methods throw EDatabase when the database fails or forbids what
/// is asked.
class TLampBooks
{
public:
    static constexpr int kMaxMinutes = 1'440; ///< of one sale

    explicit TLampBooks(TDatabase& database);
    ~TLampBooks();
    TLampBooks(const TLampBooks&) = delete;
    TLampBooks& operator=(const TLampBooks&) = delete;

    /// Adds a lamp, or changes the one of its name. No two are on one relay, and the relay must be one of its
    /// board. @param lamp its price is 0 to 1,000,000 cents a minute
    void setLamp(const TLamp& lamp);
    QList<TLamp> lamps();

    /// Writes an order; it gets its `id`. @param time `minutes` is 1 to `kMaxMinutes`
    void order(TLampTime& time);
    /// Time begins: the order gets its `began` and `until`, and its price is taken from the member's account,
    /// which may go below 0; all or nothing.
    /// @return false when the order is not open any more, or its member is suspended or gone; nothing is
    /// written then
    bool begin(TLampTime& time, platform::TDateTime now, platform::TDateTime until);
    /// Time has ended, or never begins; what has ended already stays as it is.
    void end(TLampTime& time, platform::TDateTime now, TLampEnding ending);

    /// What has not ended, oldest first.
    QList<TLampTime> open();
    /// All after a row, oldest first, `limit` at most.
    QList<TLampTime> timesAfter(qint64 id, int limit);

private:
    struct TParts;
    std::unique_ptr<TParts> F;
};

} // namespace tnv5::host
