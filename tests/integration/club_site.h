#pragma once

#include "integration/program_run.h"
#include "sim/board_bus.h"
#include "sim/classic_line.h"
#include "sim/pty.h"
#include "sim/scales.h"
#include "tnv5/host/books/database.h"
#include "tnv5/host/local/local_client.h"

#include <QFile>
#include <QJsonArray>
#include <csignal>
#include <gtest/gtest.h>

namespace tnv5::integration {

/// A club of a line, a bus and a scale on pseudo-terminals, its books and its file, to be run by the program.
/// Gates 01A and 02A lead into the hall and 03A out of it, 101T into the gym. Cards M1 to M9 may enter both.
class TClubSite : public ::testing::Test
{
protected:
    TClubSite()
    {
        for (const auto* const address : {"01A", "02A", "03A"}) {
            line.addController(QLatin1String(address));
        }
        line.Delays.ProgressMs = 0;
        line.Delays.PassageMs = 0;
        bus.addBoard(QStringLiteral("101T"));
        bus.addPair(QStringLiteral("201"));
        bus.Delays.ProgressMs = 0;
        bus.Delays.PassageMs = 0;
        bus.setPingInterval(200);
        fillBooks();
        writeFile();
    }

    void fillBooks()
    {
        host::TDatabase books(database);
        for (int i = 1; i <= 9; ++i) {
            const qint64 id = books.addMember(QStringLiteral("Member %1").arg(i));
            books.addCard(QStringLiteral("M%1").arg(i), id);
            books.addMembership(
                id, {QDate(2000, 1, 1), QDate(2100, 1, 1), {QStringLiteral("hall"), QStringLiteral("gym")}});
        }
        books.setProduct(QStringLiteral("apples"), 320);
    }

    static QByteArray gateText(const QByteArray& line, const QByteArray& address, const QByteArray& zone,
                               const QByteArray& direction)
    {
        return "[[gate]]\nline = \"" + line + "\"\naddress = \"" + address + "\"\nzone = \"" + zone +
               "\"\ndirection = \"" + direction + "\"\n";
    }

    /// The file of the club; `more` stands in the section of the club, `rest` behind all others.
    void writeFile(const QByteArray& more = {}, const QByteArray& rest = {})
    {
        const auto port = [](const QByteArray& kind, const QByteArray& name, const sim::TPty& pty) {
            return "[[" + kind + "]]\nname = \"" + name + "\"\nport = \"" + pty.path().toUtf8() + "\"\n";
        };
        writeText(
            "[club]\nname = \"riverside\"\ndatabase = \"club.sqlite\"\n" + more +
            port("line", "entrance", linePty) + port("bus", "hall", busPty) +
            port("scale", "fruit", scalePty) + "type = 2\n" + gateText("entrance", "01A", "hall", "in") +
            gateText("entrance", "02A", "hall", "in") + gateText("entrance", "03A", "hall", "out") +
            gateText("hall", "101T", "gym", "in") +
            "[[lamp]]\nname = \"Sun\"\nbus = \"hall\"\nboard = \"201A\"\nrelay = 1\ncents_per_minute = 50\n" +
            rest);
    }

    QByteArray text() const
    {
        QFile in(file);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }

    void writeText(const QByteArray& text)
    {
        QFile out(file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write(text);
    }

    QStringList arguments() const
    {
        return {QStringLiteral("run"), file, QStringLiteral("--socket"), socket};
    }

    /// Starts the program, and waits until it has opened its ports.
    std::unique_ptr<TProgramRun> start()
    {
        auto run = std::make_unique<TProgramRun>(QStringLiteral(TNV5_PROGRAM), arguments());
        EXPECT_TRUE(works()) << qUtf8Printable(run->output() + run->complaints());
        return run;
    }

    bool works()
    {
        return eventually([this] { return linePty.opened() && busPty.opened() && scalePty.opened(); });
    }

    /// Asks the running club; waits for its answer while the equipment goes on.
    QJsonObject ask(const QJsonObject& request)
    {
        host::TLocalClient client(socket);
        QJsonObject answer;
        client.OnConnected = [&] {
            client.ask(request, [&](const QJsonObject& object) { answer = object; });
        };
        client.start();
        EXPECT_TRUE(eventually([&] { return !answer.isEmpty(); }));
        return answer;
    }
    QJsonObject state() { return ask({{"do", "status"}}).value(u"state").toObject(); }

    /// Runs a command to its end. @return its exit code
    int command(const QStringList& words)
    {
        TProgramRun run(QStringLiteral(TNV5_PROGRAM), words);
        const int code = run.exitCode();
        said = run.output() + run.complaints();
        return code;
    }

    /// Somebody holds a card to a reader of the line, and is through.
    bool getsThrough(const QString& gate, const QString& card)
    {
        const qint64 before = line.counts(gate).Passed;
        return line.readCard(gate, card) != 0 &&
               eventually([&] { return line.counts(gate).Passed == before + 1; });
    }

    /// The journal as it is in the books, once there are so many passes in it that have ended.
    QList<host::TPass> journal(qsizetype ended)
    {
        host::TDatabase books(database);
        QList<host::TPass> passes;
        EXPECT_TRUE(eventually([&] {
            passes = books.passesAfter(0, 100'000);
            return std::count_if(passes.begin(), passes.end(),
                                 [](const host::TPass& pass) { return !pass.underWay(); }) >= ended;
        }));
        return passes;
    }

    QTemporaryDir folder;
    QString database = folder.filePath(QStringLiteral("club.sqlite"));
    QString file = folder.filePath(QStringLiteral("club.toml"));
    QString socket = folder.filePath(QStringLiteral("club.socket"));
    sim::TPty linePty{QStringLiteral("line")};
    sim::TClassicLine line{linePty};
    sim::TPty busPty{QStringLiteral("bus")};
    sim::TBoardBus bus{busPty};
    sim::TPty scalePty{QStringLiteral("scale")};
    sim::TSimulatedScale scale{scalePty, 2};
    QString said;
};

} // namespace tnv5::integration
