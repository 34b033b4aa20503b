#include "books_fixture.h"
#include "tnv5/host/books/books_care.h"

#include <QFileInfo>
#include <QScopeGuard>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

static std::atomic<bool> knowsNoReplace = true; // whether the file system has RENAME_NOREPLACE

// Stands before the C library's: some file systems do not know all of it.
extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned int flags) noexcept
{
    if (flags != 0 && !knowsNoReplace) {
        errno = EINVAL;
        return -1;
    }
    return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

#include <QProcess>

namespace tnv5::host {
namespace {

class TBooksCareTest : public TBooksFixture
{
protected:
    void fill()
    {
        elsewhere([&](QSqlDatabase& other) {
            for (const char* sql :
                 {"INSERT INTO member (id, name, inside) VALUES (1, 'Anna', 1), (2, 'Boris', 0)",
                  "INSERT INTO pass (began, ended, card, member, gate, result, ending) VALUES"
                  " ('2020-01-01 10:00:00.000', 'x', '1', 1, '01A', 'opened', 'passed'),"
                  " ('2020-01-02 10:00:00.000', 'x', '1', 1, '01A', 'opened', 'passed')," // she came in by
                                                                                          // this one
                  " ('2020-01-03 10:00:00.000', 'x', '2', 2, '01A', 'opened', 'passed'),"
                  " ('2020-01-04 10:00:00.000', '', '2', 2, '01A', 'opened', ''),"
                  " ('2020-01-05 10:00:00.000', '', '2', 2, '01A', 'refused', ''),"
                  " ('2026-01-05 10:00:00.000', 'x', '2', 2, '01A', 'opened', 'passed'),"
                  " ('2020-01-06 10:00:00.000', 'x', '2', 2, '01A', 'opened', 'passed')",
                  "INSERT INTO outage (line, began, ended) VALUES ('n', '2020', '2020'), ('n', '2020', ''),"
                  " ('n', '2020', '2020')",
                  "INSERT INTO sale (sold, card, member, product, cents_per_kg, grams, cents) VALUES"
                  " ('2020', '1', 1, 'tea', 1, 1, 1), ('2026', '1', 1, 'tea', 1, 1, 1)",
                  "INSERT INTO lamp_time (ordered, lamp, card, minutes, cents, ending) VALUES"
                  " ('2020', 'S', '1', 1, 1, 'over'), ('2020', 'S', '1', 1, 1, ''), ('2026', 'S', '1', 1, 1, "
                  "'over')",
                  "INSERT INTO payment (began, cents, outcome) VALUES ('2020', 1, 'approved'), ('2020', 1, "
                  "''),"
                  " ('2026', 1, 'unknown')"}) {
                execute(other, QString::fromLatin1(sql));
            }
        });
    }

    QStringList ids(const char* table)
    {
        TStatement statement(club.connection(),
                             QStringLiteral("SELECT id FROM %1 ORDER BY id").arg(QLatin1String(table)));
        return statement.run().all([](const TRows& row) { return row.value(0).toString(); });
    }

    const platform::TDateTime before = toDateTime(QStringLiteral("2023-01-05 12:00:00.000"));
    const QString target = FDirectory.filePath(QStringLiteral("backup.sqlite"));
};

TEST_F(TBooksCareTest, OldRowsGoAndWhatMattersStays)
{
    fill();
    struct TCase
    {
        TPruned what;
        const char* table;
        int goes;
        QString stay;
    };
    for (const TCase& each : {TCase{TPruned::Passes, "pass", 3, QStringLiteral("2 4 6 7")},
                              TCase{TPruned::Outages, "outage", 1, QStringLiteral("2 3")},
                              TCase{TPruned::Sales, "sale", 1, QStringLiteral("2")},
                              TCase{TPruned::LampTimes, "lamp_time", 1, QStringLiteral("2 3")},
                              TCase{TPruned::Payments, "payment", 1, QStringLiteral("2 3")}}) {
        EXPECT_EQ(countPrunable(club, each.what, before), each.goes) << each.table;
        EXPECT_EQ(prune(club, each.what, before, 1), 1) << each.table;
        EXPECT_EQ(prune(club, each.what, before, 1'000), each.goes - 1) << each.table;
        EXPECT_EQ(prune(club, each.what, before, 1'000), 0) << each.table;
        EXPECT_EQ(ids(each.table).join(u' '), each.stay) << each.table;
        EXPECT_EQ(toPruned(toText(each.what)), each.what);
    }
    EXPECT_EQ(toPruned(QStringLiteral("members")), std::nullopt);
}

TEST_F(TBooksCareTest, ABackupIsAWholeDatabase)
{
    books.addMember({.name = kAnna});
    QFile::setPermissions(FFile, QFile::ReadOwner | QFile::WriteOwner);
    whileLocked([&] { backUp(club, target, false); }); // while another program writes
    TDatabase copy(target, TOpening::Existing);
    EXPECT_EQ(linesOf(TBooks(copy).members()), linesOf(books.members()));
    EXPECT_EQ(QFile::permissions(target), QFile::permissions(FFile));
    EXPECT_EQ(QFileInfo(target).absoluteDir().entryList({QStringLiteral("*part*")}), QStringList());
}

TEST_F(TBooksCareTest, ABackupTakesNobodysPlaceByAccident)
{
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    EXPECT_EQ(refusal([&] { backUp(club, target, false); }),
              target + QStringLiteral(": the file is there already; --force takes its place"));
    EXPECT_EQ(QFile(target).size(), 4);
    backUp(club, target, true);
    EXPECT_EQ(refusal([&] { TDatabase(target, TOpening::Existing); }), QString());
}

TEST_F(TBooksCareTest, AlsoWhereAFileSystemKnowsLess)
{
    knowsNoReplace = false;
    const auto back = qScopeGuard([] { knowsNoReplace = true; });
    EXPECT_EQ(refusal([&] { backUp(club, target, false); }), QString());
    EXPECT_EQ(refusal([&] { TDatabase(target, TOpening::Existing); }), QString());
    EXPECT_EQ(QFileInfo(target).absoluteDir().entryList({QStringLiteral("*part*")}), QStringList());
    EXPECT_EQ(refusal([&] { backUp(club, target, false); }),
              target + QStringLiteral(": the file is there already; --force takes its place"));
    EXPECT_EQ(refusal([&] { backUp(club, target, true); }), QString());
}

// A second program looks on: nobody who may not read the club's file may read the copy while it is made, and
// there are no files of the database beside it.
TEST_F(TBooksCareTest, NobodyElseMayReadTheCopy)
{
    QFile::setPermissions(FFile, QFile::ReadOwner | QFile::WriteOwner);
    const mode_t usual = umask(0);
    const auto back = qScopeGuard([usual] { umask(usual); });
    std::atomic<bool> over = false;
    std::atomic<bool> readable = false;
    std::atomic<bool> beside = false;
    const QByteArray part = QFile::encodeName(target) + ".part-" + QByteArray::number(getpid());
    std::thread watcher([&] {
        while (!over) {
            struct stat state = {};
            readable = readable || (stat(part.constData(), &state) == 0 && (state.st_mode & 077) != 0);
            beside = beside || stat((part + "-wal").constData(), &state) == 0 ||
                     stat((part + "-shm").constData(), &state) == 0;
        }
    });
    for (int count = 0; count < 20; ++count) {
        backUp(club, target, true);
    }
    over = true;
    watcher.join();
    EXPECT_FALSE(readable);
    EXPECT_FALSE(beside);
}

TEST_F(TBooksCareTest, ACopyHasTheRightsOfTheOriginal)
{
    const mode_t usual = umask(077);
    const auto back = qScopeGuard([usual] { umask(usual); });
    ASSERT_EQ(chmod(QFile::encodeName(FFile).constData(), 0664), 0);
    backUp(club, target, false);
    struct stat state = {};
    ASSERT_EQ(stat(QFile::encodeName(target).constData(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777, 0664U);
}

TEST_F(TBooksCareTest, NeverTheDatabaseItself)
{
    const QString link = FDirectory.filePath(QStringLiteral("link.sqlite"));
    ASSERT_TRUE(QFile::link(FFile, link));
    for (const QString& name : {FFile, link}) {
        EXPECT_EQ(refusal([&] { backUp(club, name, true); }),
                  name + QStringLiteral(": this is the database itself"));
    }
}

TEST_F(TBooksCareTest, ABackupThatFailsLeavesNothing)
{
    const QString nowhere = FDirectory.filePath(QStringLiteral("no/such/backup.sqlite"));
    EXPECT_TRUE(refusal([&] { backUp(club, nowhere, false); }).startsWith(nowhere + QStringLiteral(": ")));
    const QDir directory(FDirectory.path());
    EXPECT_FALSE(directory.exists(QStringLiteral("no")));
}

TEST_F(TBooksCareTest, AFileThatIsCopiedOverItsIsNoticedByAHost)
{
    const QString copy = FDirectory.filePath(QStringLiteral("copy.sqlite"));
    for (const bool whole : {false, true}) {
        const QString file = FDirectory.filePath(QStringLiteral("%1.sqlite").arg(whole));
        {
            TDatabase earlier(file);
            for (int i = 0; i < 300; ++i) {
                earlier.addMember(QStringLiteral("Somebody"));
            }
            backUp(earlier, copy, true);
        }
        if (whole) { // as it lies there
            ASSERT_EQ(QProcess::execute(QStringLiteral("cp"), {file, copy}), 0);
        }
        TDatabase host(file);
        host.closeAbandoned();
        EXPECT_EQ(host.misplaced(), QString());
        ASSERT_EQ(QProcess::execute(QStringLiteral("cp"), {copy, file}), 0);
        EXPECT_TRUE(host.misplaced().startsWith(QStringLiteral("the database %1 was overwritten").arg(file)))
            << whole << qUtf8Printable(host.misplaced());
    }
}

TEST_F(TBooksCareTest, ALogThatIsDeletedIsNoticedByAHost)
{
    club.closeAbandoned();
    ASSERT_TRUE(QFile::remove(FFile + QStringLiteral("-wal")));
    EXPECT_TRUE(club.misplaced().startsWith(QStringLiteral("the database %1 was overwritten").arg(FFile)));
}

TEST_F(TBooksCareTest, WhatOthersDoToTheBooksIsNoAlarm)
{
    club.closeAbandoned();
    EXPECT_EQ(club.misplaced(), QString());
    for (int i = 0; i < 5; ++i) {
        for (const char* const order :
             {"PRAGMA wal_checkpoint(TRUNCATE)", "VACUUM", "PRAGMA wal_checkpoint(PASSIVE)",
              "CREATE TABLE more AS SELECT * FROM member", "PRAGMA wal_checkpoint(RESTART)",
              "DROP TABLE more"}) {
            elsewhere(QString::fromLatin1(order));
            EXPECT_EQ(club.misplaced(), QString()) << order;
            club.addMember(QStringLiteral("Somebody"));
            EXPECT_EQ(club.misplaced(), QString()) << order;
        }
        TDatabase other(FFile);
        other.closeAbandoned();
        EXPECT_EQ(other.misplaced() + club.misplaced(), QString());
    }
}

TEST_F(TBooksCareTest, LooksDoNotGiveUpTheLocks)
{
    club.closeAbandoned();
    EXPECT_EQ(club.misplaced(), QString());
    // the last one who leaves takes the log away: another program must not think that it is that
    ASSERT_EQ(
        QProcess::execute(QStringLiteral("python3"),
                          {QStringLiteral("-c"),
                           QStringLiteral("import sqlite3, sys; c = sqlite3.connect(sys.argv[1]); "
                                          "c.execute('SELECT count(*) FROM member').fetchall(); c.close()"),
                           FFile}),
        0);
    EXPECT_TRUE(QFile::exists(FFile + QStringLiteral("-wal")));
}

TEST_F(TBooksCareTest, ADeletedDatabaseIsRescued)
{
    addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
    ASSERT_TRUE(QFile::remove(FFile));
    addMember(QStringLiteral("Ben Ort"), QStringLiteral("2"));
    const QString first = FFile + QStringLiteral(".rescued");
    EXPECT_EQ(club.rescue(), first);
    EXPECT_EQ(club.rescue(), first + QStringLiteral("-2")) << "never over another one";
    TDatabase copy(first, TOpening::Existing);
    EXPECT_EQ(copy.holderOf(QStringLiteral("2"))->member.name, QStringLiteral("Ben Ort"));
}

TEST_F(TBooksCareTest, AFileThatIsReplacedIsNoticed)
{
    EXPECT_EQ(club.misplaced(), QString());
    const QString away = FFile + QStringLiteral(".away");
    ASSERT_TRUE(QFile::rename(FFile, away));
    EXPECT_TRUE(club.misplaced().startsWith(QStringLiteral("the database %1 was deleted").arg(FFile)));
    ASSERT_TRUE(QFile::copy(away, FFile));
    EXPECT_TRUE(club.misplaced().startsWith(QStringLiteral("the database %1 was replaced").arg(FFile)));
    ASSERT_TRUE(QFile::remove(FFile));
    ASSERT_TRUE(QFile::rename(away, FFile));
    EXPECT_EQ(club.misplaced(), QString());
    EXPECT_EQ(TDatabase(QStringLiteral(":memory:")).misplaced(), QString());
}

} // namespace
} // namespace tnv5::host
