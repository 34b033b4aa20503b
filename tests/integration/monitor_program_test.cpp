// Watching a server from a terminal, as a person or a program does it.

#include "integration/program_run.h"
#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/testing/memory_port.h"
#include "tnv5/tools/certificates.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

namespace tnv5::integration {
namespace {

const QString kHere = QStringLiteral("127.0.0.1");

class TRun : public TProgramRun
{
public:
    explicit TRun(const QStringList& arguments) : TProgramRun(QStringLiteral(TNV5_PROGRAM), arguments) {}
};

// A gate on a line in memory, whose server it is that is watched.
class Monitor : public ::testing::Test
{
protected:
    Monitor()
    {
        port.Open();
        gate.SetComport(&port);
        gate.SetDeviceList({"01A"});
        gate.SetOnCheckSQL([](platform::TComponent*, const QVariant&, const QVariant&, const QVariant&,
                              QImage&, const QVariant&, QVariant& result) { result = 1; });
    }

    void serve(const platform::TServerAccess& access = {})
    {
        gate.SetServerAccess(access);
        gate.SetRemoutDevice(turnstile::podServer);
        ASSERT_TRUE(gate.Connected());
    }

    QStringList watching(const QStringList& more = {}) const
    {
        return QStringList{QStringLiteral("monitor"), kHere, QString::number(gate.ListeningPort()),
                           QStringLiteral("--family"), QStringLiteral("turnstile")} +
               more;
    }

    bool watched(int count = 1)
    {
        return eventually([&] { return gate.Watchers() == count; });
    }

    testkit::TMemoryPort port;
    turnstile::TTurnStylerDevice gate;
};

TEST_F(Monitor, ShowsWhatTheGateDoes)
{
    serve();
    TRun monitor(watching());
    ASSERT_TRUE(watched());
    EXPECT_TRUE(monitor.says(QStringLiteral("link   connected to 127.0.0.1 port ")));
    port.feed("$01AR123\r");
    EXPECT_TRUE(monitor.says(QStringLiteral("status STACK 01A 123 OPEN OPEN")));
    for (const char* line :
         {"read   $01AR123                                  card 123 read at turnstile 01A\n",
          "status COME 01A 123 NEW NEW                      card 123 at 01A: waits for the "
          "decision\n",
          "sent   $01A10"}) {
        EXPECT_TRUE(monitor.output().contains(QString::fromUtf8(line))) << monitor.output().toStdString();
    }
    EXPECT_FALSE(monitor.output().contains(u'\033')); // no terminal, no colours
    TRun all(watching({QStringLiteral("--all")}));
    ASSERT_TRUE(watched(2));
    for (int sweep = 0; sweep < 3; ++sweep) {
        gate.p_hw_CallStackArray();
    }
    const QString open = QStringLiteral("status STACK 01A 123 OPEN OPEN");
    EXPECT_TRUE(eventually([&] { return all.output().count(open) >= 3; }));
    EXPECT_EQ(monitor.output().count(open), 1);
    all.stop();
    EXPECT_EQ(all.exitCode(), 0);
    monitor.stop();
    EXPECT_EQ(monitor.exitCode(), 0);
    EXPECT_EQ(monitor.complaints(), QString());
    EXPECT_TRUE(watched(0));
}

TEST_F(Monitor, ForPrograms)
{
    serve();
    TRun monitor(watching({QStringLiteral("--json")}));
    ASSERT_TRUE(watched());
    port.feed("$01AR\xe0\x98\r");
    ASSERT_TRUE(monitor.says(QStringLiteral("\"status1\":\"OPEN\"")));
    monitor.stop();
    EXPECT_EQ(monitor.exitCode(), 0);
    QList<QJsonObject> objects;
    for (const QString& line : monitor.output().split(u'\n', Qt::SkipEmptyParts)) {
        QJsonParseError error;
        objects << QJsonDocument::fromJson(line.toUtf8(), &error).object();
        EXPECT_EQ(error.error, QJsonParseError::NoError) << line.toStdString();
        EXPECT_TRUE(
            QDateTime::fromString(objects.last().value("time").toString(), Qt::ISODateWithMs).isValid());
    }
    ASSERT_GE(objects.size(), 4);
    EXPECT_EQ(objects[0].value("kind").toString(), QStringLiteral("link"));
    EXPECT_EQ(objects[0].value("state").toString(), QStringLiteral("connected"));
    EXPECT_EQ(objects[1].value("kind").toString(), QStringLiteral("read"));
    EXPECT_EQ(objects[1].value("text").toString(), QStringLiteral("$01ARа\u0098"));
    EXPECT_EQ(objects[2].value("kind").toString(), QStringLiteral("status"));
    EXPECT_EQ(objects[2].value("device").toString(), QStringLiteral("01A"));
    EXPECT_EQ(objects[2].value("card").toString(), QStringLiteral("а\u0098"));
}

TEST_F(Monitor, ConnectsAgain)
{
    serve();
    const int number = gate.ListeningPort();
    TRun monitor(watching());
    ASSERT_TRUE(watched());
    gate.SetRemoutDevice(turnstile::podNone); // the server goes
    EXPECT_TRUE(monitor.says(QStringLiteral(": the link has ended; again in 1 s")));
    EXPECT_TRUE(monitor.says(QStringLiteral(": Connection refused; again in 2 s")));
    EXPECT_TRUE(monitor.says(QStringLiteral("; again in 4 s")));
    gate.SetPort(number);
    serve();
    ASSERT_TRUE(watched());
    port.feed("$01AR77\r");
    EXPECT_TRUE(monitor.says(QStringLiteral("card 77 read at turnstile 01A")));
    EXPECT_EQ(monitor.output().count(QStringLiteral("connected to")), 2);
    gate.SetRemoutDevice(turnstile::podNone); // it has worked: a second again
    EXPECT_TRUE(eventually([&] { return monitor.output().count(QStringLiteral("again in 1 s")) == 2; }));
    monitor.stop();
    EXPECT_EQ(monitor.exitCode(), 0);
}

TEST_F(Monitor, OverAProtectedLink)
{
    const QTemporaryDir club;
    tools::makeCertificates({club.path(), {kHere}, {"bar"}, 30});
    platform::TServerAccess access;
    access.tls = tools::tlsFiles(club.path(), QStringLiteral("server"));
    access.handshakeMs = 2'000;
    serve(access);
    const auto files = tools::tlsFiles(club.path(), QStringLiteral("bar"));
    TRun monitor(watching({QStringLiteral("--tls-cert"), files.certificate, QStringLiteral("--tls-key"),
                           files.key, QStringLiteral("--tls-ca"), files.authority}));
    ASSERT_TRUE(watched());
    port.feed("$01AR5\r");
    EXPECT_TRUE(monitor.says(QStringLiteral("card 5 read at turnstile 01A")));

    TRun plain(watching()); // is not let in, and goes on trying
    EXPECT_TRUE(plain.says(QStringLiteral("; again in 2 s")));
    EXPECT_EQ(gate.Watchers(), 1);

    TRun wrong(watching({QStringLiteral("--tls-cert"), files.certificate, QStringLiteral("--tls-key"),
                         QStringLiteral("/nowhere"), QStringLiteral("--tls-ca"), files.authority}));
    EXPECT_EQ(wrong.exitCode(), 1);
    EXPECT_EQ(wrong.complaints(), QStringLiteral("tnv5: /nowhere: No such file or directory\n"));
    TRun half(watching({QStringLiteral("--tls-cert"), files.certificate}));
    EXPECT_NE(half.exitCode(), 0);
    monitor.stop();
    EXPECT_EQ(monitor.exitCode(), 0);
}

// What a wire or a stranger sends commands no terminal, and nothing is lost between the texts.
TEST_F(Monitor, WhatIsNoText)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    TRun monitor({QStringLiteral("monitor"), kHere, QString::number(server.serverPort()),
                  QStringLiteral("--family"), QStringLiteral("switch")});
    ASSERT_TRUE(eventually([&] { return server.hasPendingConnections(); }));
    QTcpSocket* const peer = server.nextPendingConnection();
    peer->write("junk \033[2J LOG!in two");
    peer->flush();
    EXPECT_TRUE(monitor.says(QStringLiteral("rest   junk \\x1b[2J \n")));
    peer->write(" pieces&STATUS!STACK!012A!1!ON!OFF&ERROR!Device 012A does not working&LOG!half");
    peer->flush();
    EXPECT_TRUE(monitor.says(QStringLiteral("log    in two pieces\n")));
    EXPECT_TRUE(monitor.says(QStringLiteral("relay 1 of board 012A: wanted on, is off\n")));
    EXPECT_TRUE(monitor.says(QStringLiteral("error  Device 012A does not working\n")));
    peer->disconnectFromHost();
    EXPECT_TRUE(monitor.says(QStringLiteral("rest   LOG!half\n")));
    monitor.stop();
    EXPECT_EQ(monitor.exitCode(), 0);
}

// A terminal, as far as a program can tell.
QByteArray onATerminal(const QStringList& arguments, const QByteArray& until, bool noColor)
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    EXPECT_EQ(grantpt(master), 0);
    EXPECT_EQ(unlockpt(master), 0);
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("NO_COLOR"));
    if (noColor) {
        environment.insert(QStringLiteral("NO_COLOR"), QStringLiteral("1"));
    }
    program.setProcessEnvironment(environment);
    program.setStandardOutputFile(QString::fromLatin1(ptsname(master)));
    program.start(QStringLiteral(TNV5_PROGRAM), arguments);
    QByteArray shown;
    EXPECT_TRUE(eventually([&] {
        char bytes[4096];
        const ssize_t count = read(master, bytes, sizeof bytes);
        shown.append(bytes, std::max<ssize_t>(count, 0));
        return shown.contains(until);
    }));
    program.terminate();
    program.waitForFinished();
    close(master);
    return shown;
}

TEST_F(Monitor, ColoursForPeopleWhoWantThem)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    QObject::connect(&server, &QTcpServer::newConnection, [&server] {
        server.nextPendingConnection()->write("ERROR!bad \033[2J&STATUS!STACK!01A!1!OPEN!OPEN&LOG!end&");
    });
    const QStringList arguments = {QStringLiteral("monitor"), kHere, QString::number(server.serverPort()),
                                   QStringLiteral("--family"), QStringLiteral("turnstile")};
    const QByteArray with = onATerminal(arguments, "log    end", false);
    EXPECT_TRUE(with.contains("error  bad \\x1b[2J\033[0m")) << with.toPercentEncoding().toStdString();
    EXPECT_TRUE(with.contains("\033[31m"));
    EXPECT_TRUE(with.contains("\033[32m"));
    EXPECT_FALSE(onATerminal(arguments, "log    end", true).contains('\033'));
    EXPECT_FALSE(onATerminal(arguments + QStringList("--plain"), "log    end", false).contains('\033'));
}

TEST_F(Monitor, WhatCannotBe)
{
    for (const QStringList& arguments :
         {QStringList{"monitor", kHere, "0", "--family", "d24"}, QStringList{"monitor", kHere, "4000"},
          QStringList{"monitor", kHere, "4000", "--family", "scales"}}) {
        TRun monitor(arguments);
        EXPECT_GT(monitor.exitCode(), 0) << arguments.join(u' ').toStdString();
    }
}

// The demo can be watched, and prints how.
TEST(Demo, Serves)
{
    TRun demo({QStringLiteral("demo"), QStringLiteral("--seconds"), QStringLiteral("4"),
               QStringLiteral("--serve"), QStringLiteral("0")});
    ASSERT_TRUE(demo.says(QStringLiteral("--family switch")));
    std::vector<std::unique_ptr<TRun>> monitors;
    for (const QString& line : demo.output().split(u'\n')) {
        const qsizetype command = line.indexOf(QStringLiteral("tnv5 monitor "));
        if (command > 0) {
            monitors.push_back(std::make_unique<TRun>(line.sliced(command + 5).split(u' ')));
        }
    }
    ASSERT_EQ(monitors.size(), 3U);
    EXPECT_TRUE(monitors[0]->says(QStringLiteral("read at turnstile")));
    EXPECT_TRUE(monitors[1]->says(QStringLiteral("read at board")));
    EXPECT_TRUE(monitors[2]->says(QStringLiteral("of board 201")));
    EXPECT_EQ(demo.exitCode(), 0) << demo.complaints().toStdString();
    for (const auto& monitor : monitors) {
        EXPECT_TRUE(monitor->says(QStringLiteral("; again in 1 s")));
        monitor->stop();
        EXPECT_EQ(monitor->exitCode(), 0);
        EXPECT_FALSE(monitor->output().contains(QStringLiteral("rest  "))) << monitor->output().toStdString();
    }
}

TEST(Cert, MakesCertificates)
{
    const QTemporaryDir club;
    const QStringList arguments = {QStringLiteral("cert"),     club.path(),
                                   QStringLiteral("--server"), kHere,
                                   QStringLiteral("desk"),     QStringLiteral("--client"),
                                   QStringLiteral("bar")};
    TRun first(arguments);
    EXPECT_EQ(first.exitCode(), 0);
    EXPECT_TRUE(first.output().contains(QStringLiteral("made   ") + club.filePath("server.crt")));
    TRun again(arguments + QStringList{QStringLiteral("door")});
    EXPECT_EQ(again.exitCode(), 0);
    EXPECT_TRUE(again.output().contains(QStringLiteral("there  ") + club.filePath("bar.crt")));
    EXPECT_TRUE(again.output().contains(QStringLiteral("made   ") + club.filePath("door.crt")));
    TRun wrong({QStringLiteral("cert"), club.path(), QStringLiteral("--client"), QStringLiteral("a b")});
    EXPECT_EQ(wrong.exitCode(), 1);
    EXPECT_EQ(wrong.complaints().count(u'\n'), 1);
}

} // namespace
} // namespace tnv5::integration
