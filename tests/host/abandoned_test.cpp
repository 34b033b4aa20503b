#include "club_fixture.h"
#include "tnv5/host/books/host_locks.h"
#include "tnv5/testing/manual_clock.h"

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tnv5::host {
namespace {

PPass openPass(const char* card)
{
    auto pass = std::make_shared<TPass>();
    pass->began = platform::Now();
    pass->card = QString::fromLatin1(card);
    pass->gate = QStringLiteral("01A");
    return pass;
}

class TAbandonedTest : public TClubFixture
{
protected:
    QStringList endings()
    {
        QStringList words;
        for (const TPass& pass : journal()) {
            words.append(pass.opened() ? toText(pass.ending) : toText(pass.refusal));
        }
        return words;
    }

    testkit::TManualClock clock;
};

TEST_F(TAbandonedTest, AHostThatIsGoneLeavesPassesThatAreClosed)
{
    {
        TDatabase killed(FFile); // gone without an ending, as after kill -9
        const PPass refused = openPass("3");
        refused->refusal = TRefusal::UnknownCard;
        const PPass passed = openPass("2");
        passed->ending = TEnding::Passed;
        killed.writePasses({openPass("1"), passed, refused});
    }
    clock.advance(60'000);
    EXPECT_EQ(club.closeAbandoned(), 1);
    EXPECT_EQ(endings(), QStringList({QStringLiteral("abandoned"), QStringLiteral("passed"),
                                      QStringLiteral("unknown card")}));
    EXPECT_EQ(toText(journal()[0].ended), QStringLiteral("2026-01-05 12:01:00.000"));
    EXPECT_EQ(club.closeAbandoned(), 0);
}

TEST_F(TAbandonedTest, AnotherHostThatRunsKeepsItsPasses)
{
    TDatabase other(FFile);
    const PPass pass = openPass("1");
    other.writePasses({pass});
    EXPECT_EQ(club.closeAbandoned(), 0);
    EXPECT_EQ(endings(), QStringList({QString()}));
    pass->ending = TEnding::Passed;
    other.writePasses({pass});
    EXPECT_EQ(endings(), QStringList({QStringLiteral("passed")}));
}

TEST_F(TAbandonedTest, ItsOwnPassesStayOpen)
{
    club.writePasses({openPass("1")});
    EXPECT_EQ(club.closeAbandoned(), 0);
    EXPECT_EQ(endings(), QStringList({QString()}));
}

TEST_F(TAbandonedTest, TheHostWasKilled)
{
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        {
            TDatabase host(FFile);
            host.writePasses({openPass("1")});
            const char byte = 1;
            [[maybe_unused]] const auto written = write(ready[1], &byte, 1);
            pause();
        }
        _exit(0);
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_EQ(club.closeAbandoned(), 0) << "it still runs";
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(club.closeAbandoned(), 1);
    close(ready[0]);
    close(ready[1]);
}

TEST_F(TAbandonedTest, PassesOfAnOlderProgramThatHadNoNumber)
{
    elsewhere(
        QStringLiteral("INSERT INTO pass (began, card, gate, result) VALUES ('x', '1', '01A', 'opened')"));
    EXPECT_EQ(club.closeAbandoned(), 1);
}

TEST_F(TAbandonedTest, ALockedDatabaseIsAnError)
{
    whileLocked([&] { EXPECT_THROW(club.closeAbandoned(), EDatabase); });
    EXPECT_EQ(club.closeAbandoned(), 0);
}

TEST(AbandonedInMemory, NoFileBesideIsMade)
{
    const testkit::TManualClock clock;
    TDatabase club(QStringLiteral(":memory:"));
    club.writePasses({openPass("1")});
    EXPECT_EQ(club.closeAbandoned(), 0);
    EXPECT_FALSE(QFile::exists(QStringLiteral(":memory:-hosts")));
}

TEST(HostLocks, TheFileHasTheRightsOfTheDatabase)
{
    const QTemporaryDir folder;
    const QString database = folder.filePath(QStringLiteral("club.sqlite"));
    QFile file(database);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(chmod(qPrintable(database), 0664), 0);
    const mode_t before = umask(0077);
    THostLocks locks(database);
    locks.take(5);
    umask(before);
    struct stat hosts = {};
    ASSERT_EQ(stat(qPrintable(database + QStringLiteral("-hosts")), &hosts), 0);
    EXPECT_EQ(hosts.st_mode & 0777U, 0664U) << "whatever the mask of who was first";
    THostLocks other(database);
    EXPECT_TRUE(other.alive(5));
    EXPECT_FALSE(other.alive(6));
    EXPECT_FALSE(locks.alive(5)) << "its own";
}

TEST_F(TAbandonedTest, OutagesAreWrittenAndEnded)
{
    const auto outage = std::make_shared<TOutage>();
    outage->line = QStringLiteral("north");
    outage->why = QStringLiteral("unplugged");
    outage->began = platform::Now();
    club.writeOutages({outage});
    EXPECT_EQ(outage->id, club.lastOutage());
    EXPECT_EQ(club.outagesAfter(0, 10)[0].ended, 0);

    clock.advance(5'000);
    outage->ended = platform::Now();
    club.writeOutages({outage});
    const QList<TOutage> rows = club.outagesAfter(0, 10);
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows[0].line, QStringLiteral("north"));
    EXPECT_EQ(rows[0].why, QStringLiteral("unplugged"));
    EXPECT_EQ(toText(rows[0].began), QStringLiteral("2026-01-05 12:00:00.000"));
    EXPECT_EQ(toText(rows[0].ended), QStringLiteral("2026-01-05 12:00:05.000"));
}

TEST_F(TAbandonedTest, AnOutageOfAKilledHostEnds)
{
    {
        TDatabase killed(FFile);
        const auto outage = std::make_shared<TOutage>();
        outage->line = QStringLiteral("north");
        outage->began = platform::Now();
        killed.writeOutages({outage});
    }
    EXPECT_EQ(club.closeAbandoned(), 0) << "no pass";
    EXPECT_NE(club.outagesAfter(0, 10)[0].ended, 0);
}

} // namespace
} // namespace tnv5::host
