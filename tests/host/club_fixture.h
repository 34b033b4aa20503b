#pragma once

#include "support/text_printers.h"
#include "tnv5/host/books/database.h"

#include <QFile>
#include <QSqlDatabase>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace tnv5::host {

inline const QDate kToday(2026, 1, 5); // the day of the manual clock

/// What a database says when `body` fails; empty when it does not.
template <class Body>
inline QString failureOf(Body&& body)
{
    try {
        body();
    } catch (const EDatabase& error) {
        return error.message();
    }
    return {};
}

/// A club in a file of its own: gates 01A (in), 02A (out), 03D (inner) of the hall.
class TClubFixture : public ::testing::Test
{
protected:
    TClubFixture() : FFile(FDirectory.filePath(QStringLiteral("club.sqlite"))), club(FFile)
    {
        club.setGate({QStringLiteral("01A"), QStringLiteral("hall"), TDirection::In});
        club.setGate({QStringLiteral("02A"), QStringLiteral("hall"), TDirection::Out});
        club.setGate({QStringLiteral("03D"), QStringLiteral("hall"), TDirection::Inner});
        club.setGate({QStringLiteral("04A"), QStringLiteral("hall"), TDirection::In});
    }

    qint64 addMember(const QString& name, const QString& card)
    {
        const qint64 id = club.addMember(name);
        club.addCard(card, id);
        club.addMembership(id, {kToday.addDays(-1), kToday.addDays(1), {QStringLiteral("hall")}});
        return id;
    }

    QList<TPass> journal() { return club.passesAfter(0, 1000); }

    /// Runs `body` while another program holds the lock for writing.
    template <class Body>
    void whileLocked(Body&& body)
    {
        elsewhere([&](QSqlDatabase& other) {
            execute(other, QStringLiteral("BEGIN IMMEDIATE"));
            body();
            execute(other, QStringLiteral("ROLLBACK"));
        });
    }

    /// Runs one statement as another program would.
    void elsewhere(const QString& sql)
    {
        elsewhere([&](QSqlDatabase& other) { execute(other, sql); });
    }

    /// Runs `body` with a connection such as another program has.
    template <class Body>
    requires std::is_invocable_v<Body, QSqlDatabase&>
    void elsewhere(const Body& body)
    {
        {
            QSqlDatabase other =
                QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("other"));
            other.setDatabaseName(FFile);
            ASSERT_TRUE(other.open());
            body(other);
        }
        QSqlDatabase::removeDatabase(QStringLiteral("other"));
    }

    QTemporaryDir FDirectory;
    QString FFile;
    TDatabase club;
};

} // namespace tnv5::host
