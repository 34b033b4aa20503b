// docs/first-club.md as an installer plays it: its commands in a shell, its people and goods in a simulation,
// and what is printed compared with the page. With TNV5_WRITE=1 what is printed is written into the page
// instead.

#include "integration/program_run.h"
#include "sim/board_bus.h"
#include "sim/classic_line.h"
#include "sim/pty.h"
#include "sim/scales.h"
#include "tnv5/host/books/database.h"
#include "tnv5/host/local/local_client.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <algorithm>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

namespace tnv5::integration {
namespace {

const QString kPrompt = QStringLiteral("$ ");
const QString kFence = QStringLiteral("```");

/// A shell that is told one command after another, as at a terminal. What it has started in the background
/// ends with it.
class TShell
{
public:
    explicit TShell(const QString& home)
    {
        QProcessEnvironment environment;
        environment.insert(QStringLiteral("PATH"), QFileInfo(QStringLiteral(TNV5_PROGRAM)).path() +
                                                       QStringLiteral(":/usr/local/bin:/usr/bin:/bin"));
        for (const char* const name : {"HOME", "TMPDIR", "XDG_RUNTIME_DIR"}) {
            environment.insert(QLatin1String(name), home);
        }
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        for (const QString& name : QProcessEnvironment::systemEnvironment().keys()) {
            if (name.endsWith(QStringLiteral("SAN_OPTIONS"))) {
                environment.insert(name, qEnvironmentVariable(name.toUtf8().constData()));
            }
        }
        FShell.setProcessEnvironment(environment);
        FShell.setProcessChannelMode(QProcess::MergedChannels);
        FShell.start(QStringLiteral("bash"), {QStringLiteral("--norc"), QStringLiteral("--noprofile")});
        FShell.write("trap 'kill -9 $(jobs -p) 2>/dev/null' EXIT\n");
    }
    ~TShell()
    {
        FShell.closeWriteChannel();
        if (!eventually([this] { return FShell.state() == QProcess::NotRunning; })) {
            FShell.kill();
            FShell.waitForFinished();
        }
    }
    TShell(const TShell&) = delete;
    TShell& operator=(const TShell&) = delete;

    /// Plays a command to its end. @return what it has printed, with the exit code when that is not 0
    QString play(const QString& command)
    {
        FShell.write("{\n" + command.toUtf8() + "\n} </dev/null\nprintf '\\001%d\\n' $?\n");
        static const QRegularExpression end(QStringLiteral("\\x01(\\d+)\\n"));
        QRegularExpressionMatch match;
        const bool ended = eventually([&] {
            FOutput += FShell.readAll();
            match = end.match(QString::fromUtf8(FOutput));
            return match.hasMatch();
        });
        EXPECT_TRUE(ended) << qUtf8Printable(command) << "\n" << FOutput.toStdString();
        QString said = QString::fromUtf8(FOutput).left(match.capturedStart());
        FOutput.clear();
        if (!said.isEmpty() && !said.endsWith(u'\n')) {
            said += u'\n';
        }
        return match.captured(1) == u"0" ? said
                                         : said + QStringLiteral("[exit code %1]\n").arg(match.captured(1));
    }

private:
    QProcess FShell;
    QByteArray FOutput;
};

/// The equipment of the page's club and the people at it. Its devices and its folder have the page's names
/// below a temporary folder.
class FirstClub : public ::testing::Test
{
protected:
    FirstClub()
    {
        entrance.addController(QStringLiteral("01A"));
        entrance.addController(QStringLiteral("02A"));
        pool.addController(QStringLiteral("11A"));
        for (sim::TClassicLine* const line : {&entrance, &pool}) {
            line->Delays.ProgressMs = 0;
            line->Delays.PassageMs = 0;
            line->Delays.AnswerLimitMs = 60'000; // a busy machine
            line->Guest = sim::TBehaviour::PassesThrough;
        }
        bus.addBoard(QStringLiteral("101T"));
        bus.addPair(QStringLiteral("201"));
        bus.Delays.ProgressMs = 0;
        bus.Delays.PassageMs = 0;
        bus.setPingInterval(200);
        QDir(folder.path()).mkdir(QStringLiteral("dev"));
        QDir(folder.path()).mkdir(QStringLiteral("srv"));
        for (const auto& [name, pty] : devices()) {
            EXPECT_TRUE(QFile::link(pty->path(), real(name)));
        }
    }

    QList<std::pair<QString, const sim::TPty*>> devices() const
    {
        return {{QStringLiteral("/dev/tnv5-entrance"), &entrancePty},
                {QStringLiteral("/dev/tnv5-pool"), &poolPty},
                {QStringLiteral("/dev/tnv5-hall"), &busPty},
                {QStringLiteral("/dev/tnv5-fruit"), &scalePty}};
    }

    QString real(const QString& name) const { return folder.path() + name; }

    /// A command of the page as it can be played here.
    QString playable(QString command) const
    {
        command.replace(QStringLiteral("/dev/tnv5"), real(QStringLiteral("/dev/tnv5")));
        return command.replace(QStringLiteral("/srv/"), real(QStringLiteral("/srv/")));
    }

    /// What was printed as the page has it: with its names, and without what is different each time.
    QString settled(QString text) const
    {
        for (const auto& [name, pty] : devices()) {
            text.replace(QFileInfo(pty->path()).canonicalFilePath(), name);
            text.replace(pty->path(), name);
        }
        text.remove(folder.path());
        const passwd* const user = ::getpwuid(::geteuid());
        if (user != nullptr) {
            text.replace(QStringLiteral("(%1)").arg(QString::fromLocal8Bit(user->pw_name)),
                         QStringLiteral("(olga)"));
        }
        const auto replace = [&text](const char* what, const char* with) {
            text.replace(QRegularExpression(QLatin1String(what)), QLatin1String(with));
        };
        replace("\\d{4}-\\d\\d-\\d\\d(?=[ T]\\d\\d:\\d\\d:\\d\\d)", "2026-01-05");
        replace("(?<=2026-01-05[ T])\\d\\d:\\d\\d:\\d\\d", "09:00:00");
        replace("(?<=09:00:00)[.]\\d{3}", ".000");
        replace("(?<=09:00:00)([.]000)?( ?)(?:Z|[+-]\\d\\d:\\d\\d)", "\\1\\2+01:00");
        replace("process \\d+", "process 4711");
        replace("version [0-9][^ ,\\n]*", "version 1.2.3");
        replace("\\d+ bytes", "200704 bytes");
        return text;
    }

    QJsonObject state()
    {
        host::TLocalClient client(real(QStringLiteral("/srv/riverside/club.socket")));
        QJsonObject answer;
        client.OnConnected = [&] {
            client.ask({{"do", "status"}}, [&](const QJsonObject& object) { answer = object; });
        };
        client.start();
        eventually([&] { return !answer.isEmpty(); });
        return answer.value(u"state").toObject();
    }

    static bool all(const QJsonValue& list, QLatin1String key)
    {
        const QJsonArray things = list.toArray();
        return !things.isEmpty() && std::all_of(things.begin(), things.end(), [key](const QJsonValue& thing) {
            const QJsonValue value = thing.toObject().value(key);
            return value.isNull() || value.toBool();
        });
    }

    bool everythingAnswers()
    {
        return eventually([this] {
            const QJsonObject now = state();
            const QJsonArray gates = now.value(u"gates").toArray();
            const bool networked = std::any_of(gates.begin(), gates.end(), [&](const QJsonValue& gate) {
                return gate[u"address"].toString() == u"101T" && gate[u"answering"].toBool();
            });
            const bool weighed = !now.value(u"scales")[0][u"grams"].isNull();
            return networked && weighed && all(now.value(u"lines"), QLatin1String("open")) &&
                   all(now.value(u"gates"), QLatin1String("answering")) &&
                   all(now.value(u"boards"), QLatin1String("answering"));
        });
    }

    /// Waits until all passes so far, and one more, have ended and are in the books and the log.
    bool oneMorePass()
    {
        ++passes;
        host::TDatabase books(real(QStringLiteral("/srv/riverside/club.sqlite")));
        return eventually([&] {
            const auto journal = books.passesAfter(0, 1'000);
            return journal.size() == passes &&
                   std::none_of(journal.begin(), journal.end(),
                                [](const host::TPass& pass) { return pass.underWay(); }) &&
                   logLines(QStringLiteral("  (passed|refused)")) == passes;
        });
    }

    qsizetype logLines(const QString& pattern) const
    {
        QFile log(real(QStringLiteral("/srv/riverside/club.log")));
        return log.open(QIODevice::ReadOnly)
                   ? QString::fromUtf8(log.readAll()).count(QRegularExpression(pattern))
                   : 0;
    }

    bool holdCard(const QString& card, const QString& gate)
    {
        return gate.endsWith(u'T') ? bus.readCard(gate, card)
                                   : (gate.startsWith(u'0') ? entrance : pool).readCard(gate, card) != 0;
    }

    qint64 through(const QString& gate) const
    {
        return bus.counts(gate).Passed + entrance.counts(gate).Passed + pool.counts(gate).Passed;
    }
    qint64 refused(const QString& gate) const
    {
        return bus.counts(gate).Refused + entrance.counts(gate).Refused + pool.counts(gate).Refused;
    }

    /// Does what a line in parentheses says. @return whether it came about
    bool direct(const QString& direction)
    {
        const auto says = [&direction](const char* pattern) {
            return QRegularExpression(QRegularExpression::anchoredPattern(QLatin1String(pattern)))
                .match(direction);
        };
        if (says("\\(everything is switched on\\)").hasMatch()) {
            return everythingAnswers();
        }
        if (const auto match = says("\\(\\w+ holds (\\d+) to (\\w+) and walks through\\)");
            match.hasMatch()) {
            const qint64 before = through(match.captured(2));
            return holdCard(match.captured(1), match.captured(2)) && oneMorePass() &&
                   through(match.captured(2)) == before + 1;
        }
        if (const auto match = says("\\(\\w+ holds (\\d+) to (\\w+), and it stays closed\\)");
            match.hasMatch()) {
            const QString gate = match.captured(2);
            const qint64 before = refused(gate);
            return holdCard(match.captured(1), gate) && oneMorePass() &&
                   eventually([&] { return refused(gate) == before + 1; });
        }
        if (says("\\(the pram is pushed through\\)").hasMatch()) {
            return oneMorePass();
        }
        if (const auto match = says("\\((\\d+) g of apples are put on the scale\\)"); match.hasMatch()) {
            scale.put(match.captured(1).toInt());
            host::TDatabase books(real(QStringLiteral("/srv/riverside/club.sqlite")));
            return eventually(
                [&] { return books.lastSale() == 1 && logLines(QStringLiteral(" g apples")) == 1; });
        }
        ADD_FAILURE() << "nobody knows how to play " << qUtf8Printable(direction);
        return false;
    }

    /// Plays a block of the page. @return what it should be
    QStringList playBlock(const QStringList& block)
    {
        QStringList played;
        for (qsizetype i = 0; i < block.size() && !HasFailure(); ++i) {
            if (block[i].startsWith(u'(')) {
                played.append(block[i]);
                EXPECT_TRUE(direct(block[i])) << qUtf8Printable(block[i]);
            }
            if (!block[i].startsWith(kPrompt)) {
                continue; // what was printed before
            }
            played.append(block[i]);
            QString command = block[i].mid(kPrompt.size());
            const auto document = QRegularExpression(QStringLiteral("<<'(\\w+)'$")).match(command);
            while (document.hasMatch() && block[i] != document.captured(1) && i + 1 < block.size()) {
                played.append(block[++i]);
                command += u'\n' + block[i];
            }
            played += settled(shell.play(playable(command))).split(u'\n');
            played.removeLast(); // behind the last end of line
        }
        return played;
    }

    QString playPage(const QString& page)
    {
        QStringList played;
        QStringList block;
        bool inside = false;
        for (const QString& line : page.split(u'\n')) {
            if (!line.startsWith(kFence)) {
                (inside ? block : played).append(line);
                continue;
            }
            if (inside) {
                played += playBlock(block);
                block.clear();
            }
            inside = !inside;
            played.append(line);
        }
        EXPECT_FALSE(inside) << "a block does not end";
        return played.join(u'\n');
    }

    QTemporaryDir folder;
    sim::TPty entrancePty{QStringLiteral("entrance")};
    sim::TClassicLine entrance{entrancePty};
    sim::TPty poolPty{QStringLiteral("pool")};
    sim::TClassicLine pool{poolPty};
    sim::TPty busPty{QStringLiteral("hall")};
    sim::TBoardBus bus{busPty};
    sim::TPty scalePty{QStringLiteral("fruit")};
    sim::TSimulatedScale scale{scalePty, 2};
    TShell shell{folder.path()};
    qsizetype passes = 0;
};

TEST_F(FirstClub, ThePageIsWhatHappens)
{
    QFile file(QStringLiteral(TNV5_FIRST_CLUB));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(file.readAll());
    file.close();
    const QString played = playPage(page);
    ASSERT_FALSE(HasFailure()) << "the page stays as it is";
    EXPECT_GE(passes, 5);
    if (qEnvironmentVariableIsSet("TNV5_WRITE")) {
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(played.toUtf8());
        return;
    }
    const QStringList said = page.split(u'\n');
    const QStringList happened = played.split(u'\n');
    const auto [one, other] = std::mismatch(said.begin(), said.end(), happened.begin(), happened.end());
    EXPECT_TRUE(page == played) << "docs/first-club.md:" << one - said.begin() + 1
                                << ": it says and what happens:\n"
                                << (one == said.end() ? "" : qUtf8Printable(*one)) << "\n"
                                << (other == happened.end() ? "" : qUtf8Printable(*other))
                                << "\nscripts/first-club.sh writes it anew";
}

} // namespace
} // namespace tnv5::integration
