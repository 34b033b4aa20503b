// What a club does not end at while it starts, on the real program.

#include "integration/club_site.h"
#include "support/text_printers.h"
#include "tnv5/host/books/lamp_books.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tnv5::integration {
namespace {

using TClubStart = TClubSite;

TEST_F(TClubStart, BooksThatAreLocked)
{
    {
        const auto before = start();
        before->stop();
        EXPECT_EQ(before->exitCode(), 0);
        EXPECT_TRUE(eventually([&] { return !linePty.opened() && !busPty.opened() && !scalePty.opened(); }));
    }
    host::TDatabase books(database);
    host::execute(books.connection(), QStringLiteral("INSERT INTO pass (began, card, gate, result)"
                                                     " VALUES ('x', 'M2', '01A', 'opened')"));
    host::TPayment payment; // of a program that was killed; the file has no terminal any more
    payment.began = platform::Now();
    payment.cents = 1'250;
    books.writePayment(payment);
    writeText(
        text().replace("cents_per_minute = 50", "cents_per_minute = 60") +
        "[[lamp]]\nname = \"Moon\"\nbus = \"hall\"\nboard = \"201A\"\nrelay = 2\ncents_per_minute = 50\n");
    const auto prices = [&] {
        QList<qint64> cents;
        for (const host::TLamp& lamp : host::TLampBooks(books).lamps()) {
            cents << lamp.centsPerMinute;
        }
        return cents;
    };
    std::optional<host::TWriteTransaction> lock(books.connection());

    const auto run = start();
    const QString trouble = QStringLiteral("the books cannot be written, it will be tried again: ");
    EXPECT_TRUE(run->says(trouble));
    EXPECT_TRUE(getsThrough(QStringLiteral("01A"), QStringLiteral("M1")));
    EXPECT_TRUE(bus.readCard(QStringLiteral("101T"), QStringLiteral("M3")));
    EXPECT_TRUE(eventually([&] { return bus.counts(QStringLiteral("101T")).Passed == 1; }));
    EXPECT_EQ(state().value(u"lamps").toArray().size(), 1) << "the one that the books have, at the old price";
    EXPECT_EQ(prices(), QList<qint64>({50}));
    EXPECT_TRUE(state()
                    .value(u"troubles")
                    .toArray()
                    .at(0)
                    .toString()
                    .startsWith(QStringLiteral("the books cannot be written: ")));
    const QDeadlineTimer pause(2'500); // it is tried again meanwhile
    eventually([&] { return pause.hasExpired(); });

    lock.reset();
    EXPECT_TRUE(run->says(QStringLiteral("the books are written now")));
    EXPECT_EQ(run->output().count(trouble), 1);
    EXPECT_EQ(run->output().count(QStringLiteral("1 passes were left open by a host that was killed")), 1);
    EXPECT_TRUE(run->says(QStringLiteral("card payment  12.50  unknown: the program ended meanwhile")));
    EXPECT_EQ(books.paymentsAfter(0, 9).value(0).outcome, host::TOutcome::Unknown);
    EXPECT_EQ(state().value(u"lamps").toArray().size(), 2);
    EXPECT_EQ(prices(), QList<qint64>({50, 60}));
    EXPECT_EQ(journal(3).size(), 3);
    EXPECT_TRUE(eventually([&] { return state().value(u"troubles").toArray().isEmpty(); }));
    run->stop();
    EXPECT_EQ(run->exitCode(), 0) << qUtf8Printable(run->complaints());
}

TEST_F(TClubStart, ALampThatWasTakenOutWhileNobodyRan)
{
    host::TDatabase books(database);
    host::execute(books.connection(),
                  QStringLiteral("INSERT INTO lamp_time (ordered, lamp, card, minutes, cents, began, until)"
                                 " VALUES ('2026-01-05 12:00:00.000', 'Mars', 'M1', 5, 250,"
                                 " '2026-01-05 12:00:00.000', '2026-01-05 12:05:00.000')"));
    const auto run = start();
    EXPECT_TRUE(run->says(QStringLiteral("Mars, which is not in the file any more, was paid for until "
                                         "2026-01-05 12:05:00: look whether it is on")));
    EXPECT_TRUE(host::TLampBooks(books).open().isEmpty());
}

TEST_F(TClubStart, AHostThatTriesAgainIsNotAnotherOne)
{
    host::TDatabase books(database);
    host::execute(books.connection(), QStringLiteral("INSERT INTO pass (began, card, gate, result)"
                                                     " VALUES ('x', 'M2', '01A', 'opened')"));
    host::execute(books.connection(),
                  QStringLiteral("INSERT INTO lamp_time (ordered, lamp, card, minutes, cents, began, until)"
                                 " VALUES ('2026-01-05 12:00:00.000', 'Mars', 'M1', 5, 250,"
                                 " '2026-01-05 12:00:00.000', '2026-01-05 12:05:00.000')"));
    host::execute(books.connection(), QStringLiteral("CREATE TRIGGER fail BEFORE UPDATE ON pass BEGIN"
                                                     " SELECT raise(ABORT, 'no passes today'); END"));
    const auto run = start();
    EXPECT_TRUE(run->says(QStringLiteral("no passes today")));
    host::execute(books.connection(), QStringLiteral("DROP TRIGGER fail"));
    EXPECT_TRUE(run->says(QStringLiteral("the books are written now")));
    EXPECT_TRUE(run->output().contains(QStringLiteral("Mars, which is not in the file any more")))
        << "its lamp is not another host's";
}

TEST_F(TClubStart, ASignalThatComesTooEarly)
{
    const QByteArray description = text();
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_EQ(mkfifo(qPrintable(file), 0600), 0); // the program waits for its file
    TProgramRun run(QStringLiteral(TNV5_PROGRAM), arguments());
    int end = -1;
    ASSERT_TRUE(eventually([&] {
        end = open(qPrintable(file), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        return end >= 0;
    }));
    ASSERT_EQ(kill(pid_t(run.pid()), SIGHUP), 0);
    ASSERT_TRUE(QFile::remove(file));
    writeText(description);
    EXPECT_EQ(write(end, description.constData(), std::size_t(description.size())), description.size());
    close(end);
    EXPECT_TRUE(works()) << qUtf8Printable(run.output() + run.complaints());
    EXPECT_TRUE(run.says(QStringLiteral("club.toml has been read again")));
    run.stop();
    EXPECT_EQ(run.exitCode(), 0);
}

} // namespace
} // namespace tnv5::integration
