#pragma once

#include "club_fixture.h"
#include "tnv5/host/books/books.h"
#include "tnv5/testing/manual_clock.h"

namespace tnv5::host {

/// The club's books, at noon of 2026-01-05. Zones hall and pool, gates as in `TClubFixture`.
class TBooksFixture : public TClubFixture
{
protected:
    TBooksFixture() { books.addZone(QStringLiteral("pool")); }

    /// Lines of a table: "number|name|..." first.
    static QStringList linesOf(const TBookTable& table)
    {
        QStringList lines;
        TTableWriter writer(TTableFormat::Csv, table.columns,
                            [&](const QString& line) { lines.append(line); });
        writer.add(table.rows);
        writer.end();
        return lines;
    }
    static QStringList rowsOf(const TBookTable& table) { return linesOf(table).mid(1); }

    /// What the books say to `body`; empty when they do it.
    template <class Body>
    static QString refusal(const Body& body)
    {
        try {
            body();
        } catch (const platform::Exception& error) {
            return error.message();
        }
        return {};
    }

    testkit::TManualClock clock;
    TBooks books{club};
};

inline const QString kAnna = QStringLiteral("Anna Berg");

} // namespace tnv5::host
