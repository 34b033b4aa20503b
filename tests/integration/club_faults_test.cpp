// What must not end a club that is left alone, or lose what it has done: broken outputs, closed terminals,
// full disks, locked books, kills, and lines gone mad. On the real program.

#include "integration/club_site.h"
#include "support/sanitized.h"
#include "support/text_printers.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <random>
#include <sys/resource.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace tnv5::integration {
namespace {

using host::TEnding;

/// More of everything, for nights: TNV5_LONG=1 or more.
int patience()
{
    return qEnvironmentVariableIntValue("TNV5_LONG");
}

const QString kIn = QStringLiteral("01A");
const QString kOut = QStringLiteral("03A");
const QString kAnna = QStringLiteral("M1");

class TClubFaults : public TClubSite
{
protected:
    /// Starts the program by a line of the shell; "$RUN" in it is the program with its arguments.
    std::unique_ptr<TProgramRun> startBy(const QString& shell)
    {
        QStringList words = {QStringLiteral(TNV5_PROGRAM)};
        words += arguments();
        const QString run = QStringLiteral("'%1'").arg(words.join(QStringLiteral("' '")));
        auto program = std::make_unique<TProgramRun>(
            QStringLiteral("bash"),
            QStringList({QStringLiteral("-c"), QString(shell).replace(QStringLiteral("$RUN"), run)}));
        EXPECT_TRUE(works()) << qUtf8Printable(program->output() + program->complaints());
        return program;
    }

    void goThroughAndBack(int times)
    {
        for (int i = 0; i < times; ++i) {
            EXPECT_TRUE(getsThrough(kIn, kAnna));
            EXPECT_TRUE(getsThrough(kOut, kAnna));
        }
    }

    void endsWell(TProgramRun& run)
    {
        run.stop();
        EXPECT_EQ(run.exitCode(), 0) << qUtf8Printable(run.complaints());
    }
};

TEST_F(TClubFaults, StandardOutputThatNobodyReadsAnyMore)
{
    const auto run = startBy(QStringLiteral("exec $RUN > >(head -n 1 >/dev/null)"));
    goThroughAndBack(2);
    EXPECT_TRUE(run->running());
    EXPECT_TRUE(eventually([&] { return state().value(u"troubles").toArray().size() == 1; }));
    EXPECT_TRUE(state()
                    .value(u"troubles")
                    .toArray()
                    .at(0)
                    .toString()
                    .startsWith(QStringLiteral("the log cannot be written: ")));
    journal(4);
    endsWell(*run);
}

TEST_F(TClubFaults, WithoutStandardStreams)
{
    const auto run = startBy(QStringLiteral("exec $RUN <&- >&- 2>&-"));
    goThroughAndBack(2);
    EXPECT_EQ(journal(4).size(), 4) << "nothing that was printed went into the database";
    endsWell(*run);
    QFile books(database);
    ASSERT_TRUE(books.open(QIODevice::ReadOnly));
    EXPECT_TRUE(books.read(16).startsWith("SQLite format 3"));
}

TEST_F(TClubFaults, AClosedTerminal)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(grantpt(terminal), 0);
    ASSERT_EQ(unlockpt(terminal), 0);
    const QString name = QString::fromLatin1(ptsname(terminal)); // NOLINT(concurrency-mt-unsafe): one thread
    const auto run = startBy(QStringLiteral("exec setsid -c $RUN <>%1 >%1 2>&1").arg(name));
    goThroughAndBack(1);
    close(terminal); // SIGHUP, and whatever is written fails from now on
    goThroughAndBack(1);
    EXPECT_TRUE(run->running());
    journal(4);
    endsWell(*run);
}

TEST_F(TClubFaults, ALogThatIsRenamedAndAFullDiskForIt)
{
    const QString log = folder.filePath(QStringLiteral("club.log"));
    writeFile("log = \"club.log\"\n");
    const auto run = start();
    goThroughAndBack(1);
    ASSERT_TRUE(QFile::rename(log, log + QStringLiteral(".1")));
    run->hangUp();
    EXPECT_TRUE(eventually([&] { return QFileInfo(log).size() > 0; }));
    writeFile("log = \"/dev/full\"\n");
    run->hangUp();
    EXPECT_TRUE(eventually([&] { return state().value(u"troubles").toArray().size() == 1; }));
    goThroughAndBack(1);
    writeFile("log = \"club.log\"\n");
    run->hangUp();
    EXPECT_TRUE(eventually([&] { return state().value(u"troubles").toArray().isEmpty(); }));
    QFile text(log);
    ASSERT_TRUE(text.open(QIODevice::ReadOnly));
    EXPECT_TRUE(QString::fromUtf8(text.readAll()).contains(QStringLiteral(" lines are missing here\n")));
    journal(4);
    endsWell(*run);
}

TEST_F(TClubFaults, TheLogOfAService)
{
    const auto run =
        startBy(QStringLiteral("export JOURNAL_STREAM=$(stat -Lc %d:%i /proc/$$/fd/1); exec $RUN"));
    linePty.unplug();
    EXPECT_TRUE(run->says(QStringLiteral(" error entrance: ")));
    static const QRegularExpression kLine(
        QStringLiteral("^<(6|4|3)>\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}(Z|[+-]\\d\\d:\\d\\d) "
                       "(info|warning|error) "));
    const QStringList lines = run->output().split(u'\n', Qt::SkipEmptyParts);
    for (const QString& text : lines) {
        EXPECT_TRUE(kLine.match(text).hasMatch()) << qUtf8Printable(text);
        EXPECT_EQ(text.startsWith(QStringLiteral("<3>")), text.contains(QStringLiteral(" error ")));
    }
    EXPECT_GT(lines.size(), 3);
}

TEST_F(TClubFaults, AFullDiskForTheJournal)
{
    const auto run = start();
    goThroughAndBack(1);
    journal(2);
    const rlimit nothing = {4'096, RLIM_INFINITY};
    ASSERT_EQ(prlimit(pid_t(run->pid()), RLIMIT_FSIZE, &nothing, nullptr), 0);
    goThroughAndBack(2);
    EXPECT_TRUE(run->says(QStringLiteral("the journal cannot be written, it will be tried again")));
    EXPECT_TRUE(eventually([&] { return state().value(u"journalWaiting").toInteger() == 4; }));
    EXPECT_EQ(state().value(u"troubles").toArray().size(), 1);
    goThroughAndBack(1);
    const rlimit all = {RLIM_INFINITY, RLIM_INFINITY};
    ASSERT_EQ(prlimit(pid_t(run->pid()), RLIMIT_FSIZE, &all, nullptr), 0);
    EXPECT_TRUE(run->says(QStringLiteral("the journal is written again, nothing is missing")));
    EXPECT_EQ(journal(8).size(), 8);
    EXPECT_TRUE(state().value(u"troubles").toArray().isEmpty());
    endsWell(*run);
}

TEST_F(TClubFaults, LockedBooks)
{
    const auto run = start();
    host::TDatabase other(database);
    {
        host::TWriteTransaction lock(other.connection());
        goThroughAndBack(1);
        EXPECT_TRUE(run->says(QStringLiteral("the journal cannot be written")));
    }
    EXPECT_TRUE(run->says(QStringLiteral("the journal is written again, nothing is missing")));
    EXPECT_EQ(journal(2).size(), 2);
    endsWell(*run);
}

TEST_F(TClubFaults, BooksThatAreLockedForAMomentAtTheStart)
{
    host::TDatabase other(database);
    std::optional<host::TWriteTransaction> lock(other.connection());
    TProgramRun run(QStringLiteral(TNV5_PROGRAM), arguments());
    EXPECT_TRUE(eventually([&] { return QFile::exists(socket); })); // just before
    const QDeadlineTimer moment(500);
    eventually([&] { return moment.hasExpired(); });
    EXPECT_FALSE(linePty.opened());
    lock.reset();
    EXPECT_TRUE(works()) << qUtf8Printable(run.complaints());
    goThroughAndBack(1);
    endsWell(run);
}

TEST_F(TClubFaults, EndingWithWhatCannotBeWritten)
{
    const auto run = start();
    host::TDatabase other(database);
    host::TWriteTransaction lock(other.connection());
    goThroughAndBack(1);
    run->stop();
    EXPECT_EQ(run->exitCode(), 6);
    const QString log = run->output();
    EXPECT_EQ(log.count(QStringLiteral("NOT IN THE JOURNAL: ")), 2) << qUtf8Printable(log);
    EXPECT_TRUE(log.contains(QStringLiteral("01A  Member 1 (M1)  passed")));
    EXPECT_TRUE(run->complaints().contains(QStringLiteral("2 entries are NOT in the journal")));
}

TEST_F(TClubFaults, KilledInMidTraffic)
{
    const QStringList gates = {kIn, QStringLiteral("02A"), kOut};
    const int rounds = patience() > 0 ? 50 * patience() : 5;
    std::mt19937 dice(1); // NOLINT(cert-msc51-cpp): the same each time
    for (int round = 0; round < rounds; ++round) {
        const auto run = start();
        line.Delays.ProgressMs = dice() % 2 == 0 ? 400 : 20; // how long people are in the gates
        line.Delays.PassageMs = round == 0 ? 60'000 : 0;
        for (int i = 0; i < gates.size(); ++i) {
            line.readCard(gates[i], QStringLiteral("M%1").arg(1 + dice() % 9));
            const QDeadlineTimer pause(int(dice() % 50));
            eventually([&] { return pause.hasExpired(); });
        }
        if (round == 0) { // somebody is in a gate, and the journal has it
            host::TDatabase books(database);
            EXPECT_TRUE(eventually([&] {
                const QList<host::TPass> passes = books.passesAfter(0, 10);
                return std::any_of(passes.begin(), passes.end(),
                                   [](const auto& pass) { return pass.underWay(); });
            }));
        }
        const QDeadlineTimer pause(int(dice() % 250)); // before, while and after it is written
        eventually([&] { return round == 0 || pause.hasExpired(); });
        ASSERT_EQ(kill(pid_t(run->pid()), SIGKILL), 0);
        EXPECT_EQ(run->exitCode(), -1);
        EXPECT_TRUE(eventually([&] { return !linePty.opened() && !busPty.opened() && !scalePty.opened(); }));
    }
    const auto run = start();
    EXPECT_TRUE(run->says(QStringLiteral("process")));
    endsWell(*run);
    int abandoned = 0;
    const QList<host::TPass> passes = journal(0);
    for (const host::TPass& pass : passes) {
        EXPECT_FALSE(pass.underWay()) << pass.id;
        abandoned += pass.ending == TEnding::Abandoned ? 1 : 0;
    }
    std::printf("[ killed ] %d times, %lld passes, %d of them abandoned\n", rounds, passes.size(), abandoned);
    EXPECT_GE(abandoned, 1);
}

// ---- lines gone mad

/// A serial port's other end, which says as much as the program takes.
class TMadLine
{
public:
    TMadLine()
    {
        FMaster = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        EXPECT_EQ(grantpt(FMaster), 0);
        EXPECT_EQ(unlockpt(FMaster), 0);
        path = QString::fromLatin1(ptsname(FMaster)); // NOLINT(concurrency-mt-unsafe): one thread
        FSlave = open(qPrintable(path),
                      O_RDWR | O_NOCTTY | O_CLOEXEC); // it stays while the program comes and goes
        termios settings = {};
        tcgetattr(FSlave, &settings);
        cfmakeraw(&settings);
        tcsetattr(FSlave, TCSANOW, &settings);
        fcntl(FMaster, F_SETFL, O_NONBLOCK);
    }
    ~TMadLine()
    {
        close(FSlave);
        close(FMaster);
    }
    TMadLine(const TMadLine&) = delete;
    TMadLine& operator=(const TMadLine&) = delete;

    /// Says it, and listens meanwhile. @return whether the program has taken it
    bool say(const QByteArray& bytes)
    {
        qsizetype done = 0;
        QDeadlineTimer patience(60'000);
        while (done < bytes.size()) {
            pollfd state = {FMaster, POLLIN | POLLOUT, 0};
            if (poll(&state, 1, 1'000) < 0 || patience.hasExpired()) {
                return false;
            }
            listen();
            const ssize_t written =
                write(FMaster, bytes.constData() + done, std::size_t(bytes.size() - done));
            done += std::max<ssize_t>(written, 0);
        }
        return true;
    }

    void forget() { FHeard.clear(); }
    /// Waits until the program has said something since then.
    bool hears(const QByteArray& what)
    {
        return eventually([&] {
            listen();
            return FHeard.contains(what);
        });
    }

    QString path;

private:
    void listen()
    {
        char buffer[4'096];
        ssize_t count = 0;
        while ((count = read(FMaster, buffer, sizeof buffer)) > 0) {
            FHeard.append(buffer, count);
            FHeard = FHeard.right(65'536);
        }
    }

    QByteArray FHeard;
    int FMaster;
    int FSlave;
};

QByteArray randomBytes(std::mt19937& dice, qsizetype count)
{
    QByteArray bytes(count, '\0');
    for (char& byte : bytes) {
        byte = char(dice());
    }
    return bytes;
}

/// Lines as controllers and boards say them, of addresses, cards and events of all kinds, and too long ones.
QByteArray hostileLines(std::mt19937& dice, qsizetype count)
{
    static const QList<QByteArray> kEvents = {"RM1",
                                              "R999",
                                              "P",
                                              "G",
                                              "F",
                                              "R-1-1-1-1-1",
                                              "R-2-2-2-2-2",
                                              "000900",
                                              "RQM2FF",
                                              "PRFF",
                                              "GRFF",
                                              "PING",
                                              "Btn-Activ",
                                              "HardReset",
                                              "Relay 1",
                                              "BTXX",
                                              "HWGX=n020x4/GR=NY/"};
    QByteArray lines;
    while (lines.size() < count) {
        lines += dice() % 2 == 0 ? '$' : '#';
        lines += dice() % 4 == 0 ? QByteArray("01A")
                                 : QByteArray::number(10 + int(dice() % 90)) + char('A' + dice() % 26);
        lines += kEvents[int(dice() % std::size_t(kEvents.size()))];
        lines += dice() % 500 == 0 ? QByteArray(100'000, 'x') : QByteArray();
        lines += dice() % 50 == 0 ? "" : "\r";
    }
    return lines;
}

qint64 memoryOf(qint64 pid)
{
    QFile file(QStringLiteral("/proc/%1/statm").arg(pid));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

class TClubNoise : public TClubSite
{
protected:
    TClubNoise()
    {
        writeText("[club]\nname = \"riverside\"\ndatabase = \"club.sqlite\"\nlog = \"club.log\"\n"
                  "[[line]]\nname = \"entrance\"\nport = \"" +
                  gates.path.toUtf8() + "\"\n[[bus]]\nname = \"hall\"\nport = \"" + boards.path.toUtf8() +
                  "\"\n[[scale]]\nname = \"fruit\"\nport = \"" + weights.path.toUtf8() + "\"\ntype = 2\n" +
                  gateText("entrance", "01A", "hall", "in") + gateText("hall", "101T", "gym", "in"));
    }

    void flood(QByteArray (*make)(std::mt19937&, qsizetype))
    {
        constexpr qsizetype kPiece = 64 << 10;
        const qsizetype size = qsizetype(patience() > 0 ? 100 * patience() : 3)
                               << 20; // on all lines together
        TProgramRun run(QStringLiteral(TNV5_PROGRAM), arguments());
        EXPECT_TRUE(eventually([this] { return QFile::exists(socket); }));
        std::mt19937 dice(7); // NOLINT(cert-msc51-cpp): the same each time
        qint64 early = 0;
        for (qsizetype done = 0; done < size; done += kPiece) {
            TMadLine& mad = done / kPiece % 4 < 2 ? gates : done / kPiece % 4 == 2 ? boards : weights;
            ASSERT_TRUE(mad.say(make(dice, kPiece))) << done;
            if (done >= size / 3 && early == 0) {
                early = memoryOf(run.pid());
            }
        }
        EXPECT_TRUE(opensAgain());
        if (!tests::kSanitized) { // a sanitizer keeps what is freed
            EXPECT_LT(memoryOf(run.pid()) - early, 16 << 20);
        }
        std::printf("[ memory ] %lld KiB, then %lld KiB; log %lld bytes\n", early >> 10,
                    memoryOf(run.pid()) >> 10, QFileInfo(folder.filePath(QStringLiteral("club.log"))).size());
        EXPECT_LT(QFileInfo(folder.filePath(QStringLiteral("club.log"))).size(), 1'000'000);
        run.stop();
        EXPECT_EQ(run.exitCode(), 0);
    }

    /// A card opens its gate, once the passes that noise has begun there are over.
    bool opensAgain()
    {
        host::TDatabase books(database);
        host::TStatement opened(
            books.connection(),
            QStringLiteral("SELECT count(*) FROM pass WHERE card = 'M9' AND result = 'opened'"));
        const QDeadlineTimer patience(60'000);
        gates.forget();
        while (opened.run().number() == 0) {
            if (patience.hasExpired() || !gates.say("\r$01ARM9\r")) {
                return false;
            }
            const QDeadlineTimer pause(200);
            eventually([&] { return pause.hasExpired(); });
        }
        return gates.hears("$01A103");
    }

    TMadLine gates;
    TMadLine boards;
    TMadLine weights;
};

TEST_F(TClubNoise, RandomBytes)
{
    flood(randomBytes);
}

TEST_F(TClubNoise, HostileLines)
{
    flood(hostileLines);
}

} // namespace
} // namespace tnv5::integration
