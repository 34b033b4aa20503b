// Nobody reads what a running club writes, and it must not stop a gate. On the real program.

#include "integration/club_site.h"
#include "support/text_printers.h"

#include <QJsonDocument>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace tnv5::integration {
namespace {

const QString kGate = QStringLiteral("01A");
const QString kCard = QStringLiteral("M1");

/// A terminal; the program is at its other end.
class TTerminal
{
public:
    TTerminal() : FMaster(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        EXPECT_EQ(grantpt(FMaster), 0);
        EXPECT_EQ(unlockpt(FMaster), 0);
        path = QString::fromLatin1(ptsname(FMaster)); // NOLINT(concurrency-mt-unsafe): one thread
        FSlave = open(qPrintable(path), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    ~TTerminal()
    {
        close(FSlave);
        close(FMaster);
    }
    TTerminal(const TTerminal&) = delete;
    TTerminal& operator=(const TTerminal&) = delete;

    /// Reads what is there.
    QString read() const
    {
        QByteArray text;
        char buffer[4'096];
        pollfd state = {FMaster, POLLIN, 0};
        ssize_t count = 0;
        while (poll(&state, 1, 0) == 1 && (count = ::read(FMaster, buffer, sizeof buffer)) > 0) {
            text.append(buffer, count);
        }
        return QString::fromUtf8(text);
    }

    bool waits() const { return (fcntl(FSlave, F_GETFL) & O_NONBLOCK) == 0; }

    QString path;

private:
    int FMaster;
    int FSlave;
};

class TClubOutput : public TClubSite
{
protected:
    /// Starts the program with its output somewhere else.
    std::unique_ptr<TProgramRun> startInto(const QString& redirection, const QString& before = {})
    {
        const QString run = QStringLiteral("'%1' '%2'")
                                .arg(QStringLiteral(TNV5_PROGRAM), arguments().join(QStringLiteral("' '")));
        auto program = std::make_unique<TProgramRun>(
            QStringLiteral("bash"),
            QStringList(
                {QStringLiteral("-c"), before + QStringLiteral(" exec %1 %2").arg(run, redirection)}));
        EXPECT_TRUE(works()) << qUtf8Printable(program->output() + program->complaints());
        return program;
    }

    /// Somebody opens the gate by hand, for a reason that is as long as can be and each time another: what
    /// differs in figures alone is not written again.
    void openByHand()
    {
        const qint64 before = line.counts(kGate).Passed;
        const QString reason(1'900, QChar(u'A' + int(before)));
        ASSERT_TRUE(eventually([&] { // the one before may still be on his way
            return ask({{"do", "open"}, {"gate", kGate}, {"reason", reason}}).value(u"ok").toBool();
        }));
        ASSERT_TRUE(eventually([&] { return line.counts(kGate).Passed == before + 1; }));
    }

    /// Much more than a terminal or pipe takes, and everything goes on.
    void goesOnUnread(TProgramRun& run)
    {
        line.Guest = sim::TBehaviour::PassesThrough;
        for (int i = 0; i < 40 && !HasFatalFailure(); ++i) {
            openByHand();
        }
        EXPECT_EQ(journal(40).size(), 40);
        EXPECT_TRUE(getsThrough(kGate, kCard));
        EXPECT_EQ(journal(41).size(), 41);
        EXPECT_TRUE(eventually([&] {
            return state().value(u"troubles").toArray() ==
                   QJsonArray({QStringLiteral("the log cannot be written: nobody takes what is written, "
                                              "lines are left out")});
        })) << QJsonDocument(state()).toJson().constData();
        EXPECT_TRUE(run.running());
    }

    void endsWell(TProgramRun& run)
    {
        run.stop();
        EXPECT_EQ(run.exitCode(), 0) << qUtf8Printable(run.complaints());
    }
};

TEST_F(TClubOutput, ATerminalThatNobodyReads)
{
    const TTerminal terminal;
    const auto run = startInto(QStringLiteral("<%1 >%1 2>&1").arg(terminal.path));
    goesOnUnread(*run);
    EXPECT_TRUE(terminal.waits()) << "it is the shell's, too";
    endsWell(*run);
}

TEST_F(TClubOutput, ATerminalThatIsReadAgain)
{
    const TTerminal terminal;
    const auto run = startInto(QStringLiteral("<%1 >%1 2>&1").arg(terminal.path));
    goesOnUnread(*run);
    QString text = terminal.read();
    getsThrough(kGate, QStringLiteral("M2"));
    EXPECT_TRUE(eventually([&] {
        text += terminal.read();
        return text.contains(QStringLiteral("Member 2 (M2)  passed"));
    }));
    EXPECT_TRUE(text.contains(QStringLiteral(" lines are missing here\r\n")));
    for (const QString& each : text.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts)) {
        EXPECT_EQ(each.mid(4, 1), "-") << "half a line: " << qUtf8Printable(each);
    }
    EXPECT_EQ(state().value(u"troubles").toArray(), QJsonArray());
    run->stop();
    EXPECT_TRUE(eventually([&] {
        terminal.read();
        return !run->running();
    }));
    EXPECT_EQ(run->exitCode(), 0);
}

TEST_F(TClubOutput, APipeThatNobodyReads)
{
    const QByteArray pipe = QFile::encodeName(folder.filePath(QStringLiteral("pipe")));
    ASSERT_EQ(mkfifo(pipe.constData(), S_IRUSR | S_IWUSR), 0);
    const int reader = open(pipe.constData(), O_RDWR | O_CLOEXEC);
    EXPECT_EQ(fcntl(reader, F_SETPIPE_SZ, 4'096), 4'096);
    const auto run = startInto(QStringLiteral("> '%1' 2>&1").arg(QFile::decodeName(pipe)));
    goesOnUnread(*run);
    endsWell(*run);
    close(reader);
}

TEST_F(TClubOutput, OnlyTheJournalOfTheSystemGetsLevelsInFront)
{
    const auto run = startInto({}, QStringLiteral("JOURNAL_STREAM=9:1"));
    EXPECT_TRUE(run->says(QStringLiteral(" info entrance: ")));
    EXPECT_FALSE(run->output().contains(u'<')) << qUtf8Printable(run->output());
    endsWell(*run);
}

TEST_F(TClubOutput, ADatabaseThatIsDeletedIsATroubleAndIsRescued)
{
    const auto run = start();
    EXPECT_TRUE(getsThrough(kGate, kCard));
    EXPECT_EQ(journal(1).size(), 1);
    ASSERT_TRUE(QFile::remove(database));
    QFile other(database + QStringLiteral(".rescued"));
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    EXPECT_TRUE(getsThrough(kGate, QStringLiteral("M2"))) << qUtf8Printable(run->output());
    EXPECT_TRUE(eventually([&] {
        return state()
            .value(u"troubles")
            .toArray()
            .at(0)
            .toString()
            .startsWith(QStringLiteral("the database %1 was deleted while the program runs").arg(database));
    }));
    run->stop();
    EXPECT_EQ(run->exitCode(), 6);
    const QString copy = database + QStringLiteral(".rescued-2");
    EXPECT_TRUE(run->complaints().contains(
        QStringLiteral("a copy of the books as this program had them is %1\n").arg(copy)))
        << qUtf8Printable(run->complaints());
    EXPECT_EQ(host::TDatabase(copy, host::TOpening::Existing).passesAfter(0, 10).size(), 2);
    EXPECT_EQ(QFile::permissions(copy) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    EXPECT_EQ(other.size(), 0);
}

} // namespace
} // namespace tnv5::integration
