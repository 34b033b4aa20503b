#include "local_fixture.h"

#include "tnv5/host/local/local_client.h"
#include "tnv5/platform/errors.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLocalServer>
#include <thread>

using namespace tnv5;
using namespace tnv5::tests;

namespace {

class LocalClient : public LocalServer
{
protected:
    LocalClient()
    {
        client->OnConnected = [this] { trace << QStringLiteral("connected"); };
        client->OnLost = [this](const QString& why) {
            trace << QStringLiteral("lost");
            FWhy = why;
        };
        client->OnEvent = [this](const QJsonObject& event) {
            trace << event.value(u"event").toString();
            last = event;
        };
    }
    bool sees(const char* line)
    {
        return eventually([&] { return trace.contains(QLatin1String(line)); });
    }

    QStringList trace;
    QJsonObject last;
    QString FWhy;
    std::unique_ptr<host::TLocalClient> client = std::make_unique<host::TLocalClient>(path());
};

TEST_F(LocalClient, WatchesTheClub)
{
    client->start();
    EXPECT_EQ(trace, QStringList()); // nothing before the event loop runs
    ASSERT_TRUE(sees("state"));
    EXPECT_EQ(trace, QStringList({QStringLiteral("connected"), QStringLiteral("state")}));
    EXPECT_TRUE(client->connected());
    server->tell(json(R"({"event":"line","text":"hello"})"));
    ASSERT_TRUE(sees("line"));
    EXPECT_EQ(text(last), R"({"event":"line","text":"hello"})");
}

TEST_F(LocalClient, AsksAndIsAnswered)
{
    client->start();
    ASSERT_TRUE(sees("connected"));
    QStringList answers;
    for (const char* gate : {"01A", "02A"}) {
        client->ask({{QStringLiteral("do"), QStringLiteral("open")},
                     {QStringLiteral("gate"), QLatin1String(gate)},
                     {QStringLiteral("reason"), QStringLiteral("pram")}},
                    [&, gate](const QJsonObject& answer) {
                        answers << QString::fromLatin1(gate) + (answer.value(u"ok").toBool() ? u'+' : u'-');
                    });
    }
    ASSERT_TRUE(eventually([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers, QStringList({QStringLiteral("01A+"), QStringLiteral("02A+")}));
}

TEST_F(LocalClient, WithoutAConnectionTheAnswerSaysSo)
{
    server.reset();
    QString error;
    bool unknown = false;
    client->start();
    client->ask({{QStringLiteral("do"), QStringLiteral("status")}}, [&](const QJsonObject& answer) {
        error = answer.value(u"error").toString();
        unknown = answer.value(u"unknown").toBool();
    });
    EXPECT_EQ(error, QString()); // later
    ASSERT_TRUE(eventually([&] { return !error.isEmpty(); }));
    EXPECT_EQ(error, QStringLiteral("The connection to the host is lost."));
    EXPECT_FALSE(unknown); // it was not sent
}

TEST_F(LocalClient, ComesBackByItself)
{
    client->start();
    ASSERT_TRUE(sees("state"));
    server.reset();
    ASSERT_TRUE(sees("lost"));
    EXPECT_FALSE(client->connected());
    trace.clear();
    server = std::make_unique<host::TLocalServer>(club, path());
    ASSERT_TRUE(sees("state"));
    EXPECT_TRUE(client->connected());
}

TEST_F(LocalClient, WaitsForAHostThatIsNotThereYet)
{
    server.reset();
    client->start();
    ASSERT_TRUE(sees("lost"));
    EXPECT_EQ(FWhy, QStringLiteral("No host answers at %1: there is no such socket").arg(path()));
    server = std::make_unique<host::TLocalServer>(club, path());
    ASSERT_TRUE(sees("state"));
    EXPECT_EQ(trace.count(QStringLiteral("lost")), 1); // told once, however often it tried
}

TEST_F(LocalClient, QuestionsUnderWayAreAnsweredWhenTheHostGoes)
{
    client->start();
    ASSERT_TRUE(sees("connected"));
    QString error;
    bool unknown = false;
    club.OnOpen = [this] { server.reset(); };
    client->ask({{QStringLiteral("do"), QStringLiteral("open")},
                 {QStringLiteral("gate"), QStringLiteral("01A")},
                 {QStringLiteral("reason"), QStringLiteral("pram")}},
                [&](const QJsonObject& answer) {
                    error = answer.value(u"error").toString();
                    unknown = answer.value(u"unknown").toBool();
                });
    ASSERT_TRUE(sees("lost"));
    EXPECT_EQ(error, QStringLiteral("The connection to the host is lost."));
    EXPECT_TRUE(unknown); // in this club it was done
}

TEST_F(LocalClient, AHostThatBeginsLaterAndElsewhereIsFound)
{
    server.reset();
    QString where = path();
    client = std::make_unique<host::TLocalClient>([&where] {
        if (where.isEmpty()) {
            throw platform::Exception(QStringLiteral("several are here"));
        }
        return where;
    });
    client->OnConnected = [this] { trace << QStringLiteral("connected"); };
    client->OnLost = [this](const QString& why) {
        trace << QStringLiteral("lost");
        FWhy = why;
    };
    EXPECT_EQ(client->path(), QString());
    client->start();
    ASSERT_TRUE(sees("lost"));
    EXPECT_EQ(client->path(), path());
    where.clear();
    ASSERT_TRUE(eventually([this] { return FWhy == QStringLiteral("several are here"); }));
    const QString there = FFolder.filePath(QStringLiteral("elsewhere.socket"));
    where = there;
    server = std::make_unique<host::TLocalServer>(club, there);
    ASSERT_TRUE(sees("connected"));
    EXPECT_EQ(client->path(), there);

    where = path(); // another club; this one is met already
    trace.clear();
    server.reset();
    ASSERT_TRUE(sees("lost"));
    const host::TLocalServer another(club, path());
    server = std::make_unique<host::TLocalServer>(club, there);
    ASSERT_TRUE(sees("connected"));
    EXPECT_EQ(client->path(), there);
}

TEST_F(LocalClient, ARelativePathIsThatOfThisFolder)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(FFolder.path()));
    host::TLocalClient near(QStringLiteral("club.socket")); // Qt would look in the folder for temporary files
    EXPECT_EQ(near.path(), QFileInfo(QStringLiteral("club.socket")).absoluteFilePath());
    near.start();
    EXPECT_TRUE(eventually([&] { return near.connected(); }));
    server.reset();
    EXPECT_THROW(host::askHost(QStringLiteral("club.socket"), json(R"({"do":"status"})"), 1'000),
                 platform::Exception);
    try {
        host::askHost(QStringLiteral("club.socket"), json(R"({"do":"status"})"), 1'000);
    } catch (const platform::Exception& error) {
        EXPECT_TRUE(error.message().contains(QDir::currentPath())) << error.message().toStdString();
    }
    ASSERT_TRUE(QDir::setCurrent(before));
}

TEST_F(LocalClient, AHostThatSaysNothingIsLost)
{
    server.reset();
    QLocalServer mute;
    ASSERT_TRUE(mute.listen(path()));
    client->PatienceMs = 400;
    QElapsedTimer waited;
    waited.start();
    client->start();
    ASSERT_TRUE(sees("lost"));
    EXPECT_EQ(FWhy, QStringLiteral("The host at %1 has not answered for 1 seconds.").arg(path()));
    EXPECT_GE(waited.elapsed(), 300); // the whole patience, as far as timers are exact
}

TEST_F(LocalClient, WhoTellsEventsWithoutAnAnswerIsNotConnected)
{
    server.reset();
    QLocalServer strange;
    ASSERT_TRUE(strange.listen(path()));
    int came = 0;
    QObject::connect(&strange, &QLocalServer::newConnection, &strange, [&] {
        QLocalSocket* const socket = strange.nextPendingConnection();
        QObject::connect(socket, &QLocalSocket::readyRead, socket, [&came, socket] {
            socket->write("{\"event\":\"state\",\"state\":{}}\n");
            socket->disconnectFromServer();
            ++came;
        });
    });
    client->start();
    ASSERT_TRUE(eventually([&] { return came >= 3; }));
    EXPECT_EQ(trace, QStringList(QStringLiteral("lost")));
}

TEST_F(LocalClient, AQuietHostIsAskedAndKept)
{
    server.reset();
    QLocalServer quiet; // answers, and tells nothing
    ASSERT_TRUE(quiet.listen(path()));
    int asked = 0;
    QObject::connect(&quiet, &QLocalServer::newConnection, &quiet, [&] {
        QLocalSocket* const socket = quiet.nextPendingConnection();
        QObject::connect(socket, &QLocalSocket::readyRead, socket, [&asked, socket] {
            while (socket->canReadLine()) {
                const QJsonObject request = host::fromLine(socket->readLine()).value_or(QJsonObject());
                asked += request.value(u"do") == QLatin1String("status") ? 1 : 0;
                socket->write(host::toLine(
                    {{QStringLiteral("id"), request.value(u"id")}, {QStringLiteral("ok"), true}}));
            }
        });
    });
    client->PatienceMs = 1'000;
    client->start();
    ASSERT_TRUE(eventually([&] { return asked >= 2; }));
    EXPECT_TRUE(client->connected());
    EXPECT_FALSE(trace.contains(QStringLiteral("lost")));
}

TEST_F(LocalClient, JunkIsNoHost)
{
    for (const QByteArray& junk :
         {QByteArray("junk\n"), QByteArray("[]\n"), QByteArray("{}\n"), QByteArray(3 << 20, 'x')}) {
        server.reset();
        QLocalServer::removeServer(path());
        QLocalServer other;
        ASSERT_TRUE(other.listen(path()));
        QObject::connect(&other, &QLocalServer::newConnection, &other,
                         [&] { other.nextPendingConnection()->write(junk); });
        trace.clear();
        FWhy.clear();
        client->start();
        ASSERT_TRUE(sees("lost"));
        EXPECT_EQ(FWhy, QStringLiteral("What came from %1 is not from a host.").arg(path()));
        client->stop();
    }
}

TEST_F(LocalClient, StoppedItIsQuiet)
{
    client->start();
    ASSERT_TRUE(sees("state"));
    trace.clear();
    client->stop();
    EXPECT_FALSE(client->connected());
    EXPECT_TRUE(eventually([&] { return server->clients() == 0; }));
    EXPECT_EQ(trace, QStringList());
    client->start();
    EXPECT_TRUE(sees("state"));
}

TEST_F(LocalClient, StoppedByAnAnswerItIsQuiet)
{
    client->start();
    ASSERT_TRUE(sees("connected"));
    bool answered = false;
    club.OnOpen = [this] { server.reset(); };
    client->ask({{QStringLiteral("do"), QStringLiteral("open")},
                 {QStringLiteral("gate"), QStringLiteral("01A")},
                 {QStringLiteral("reason"), QStringLiteral("pram")}},
                [&](const QJsonObject&) {
                    answered = true;
                    client->stop();
                });
    ASSERT_TRUE(eventually([&] { return answered; }));
    QCoreApplication::processEvents();
    EXPECT_FALSE(trace.contains(QStringLiteral("lost")));
    client->start(); // there is nobody now
    EXPECT_TRUE(sees("lost"));
}

TEST_F(LocalClient, HooksMayDestroyIt)
{
    for (const char* where : {"connected", "state", "line", "lost", "answer"}) {
        SCOPED_TRACE(where);
        server = nullptr;
        server = std::make_unique<host::TLocalServer>(club, path());
        client = std::make_unique<host::TLocalClient>(path());
        const auto mayEnd = [&](const char* place) {
            if (qstrcmp(place, where) == 0) {
                client.reset();
            }
        };
        client->OnConnected = [&] {
            host::TLocalClient& asked = *client;
            mayEnd("connected");
            if (client) {
                asked.ask({{QStringLiteral("do"), QStringLiteral("reload")}},
                          [&](const QJsonObject&) { mayEnd("answer"); });
            }
        };
        client->OnEvent = [&](const QJsonObject& event) {
            mayEnd(event.value(u"event").toString().toLatin1());
        };
        client->OnLost = [&](const QString&) { mayEnd("lost"); };
        client->start();
        int told = 0;
        EXPECT_TRUE(eventually([&] {
            if (client && server && client->connected()) {
                server->tell(json(R"({"event":"line"})"));
                if (++told == 20) {
                    server.reset();
                }
            }
            return !client;
        }));
    }
}

TEST_F(LocalClient, WhatAHookRaisesDoesNotEndIt)
{
    client->OnEvent = [this](const QJsonObject& event) {
        trace << event.value(u"event").toString();
        throw platform::EAbort();
    };
    client->start();
    ASSERT_TRUE(sees("state"));
    server->tell(json(R"({"event":"line"})"));
    EXPECT_TRUE(sees("line"));
}

TEST_F(LocalServer, CommandsAskAndWait)
{
    QJsonObject answer;
    bool done = false;
    std::thread command([&] {
        answer = host::askHost(path(), json(R"({"do":"status","id":3})"), 60'000);
        done = true;
    });
    EXPECT_TRUE(eventually([&] { return done; }));
    command.join();
    EXPECT_EQ(text(answer), R"({"id":3,"ok":true,"state":{"club":"Riverside"}})");
}

std::string failureOf(const QString& path, int timeoutMs)
{
    try {
        host::askHost(path, json(R"({"do":"status"})"), timeoutMs);
    } catch (const platform::Exception& error) {
        return error.message().toStdString();
    }
    return {};
}

TEST_F(LocalServer, ACommandWithoutAHostFails)
{
    const std::string mute = failureOf(path(), 1); // nobody runs the server's loop
    EXPECT_EQ(mute, "The host at " + path().toStdString() + " has not answered for 1 seconds.");
    server.reset();
    EXPECT_EQ(failureOf(path(), 1'000),
              "No host answers at " + path().toStdString() + ": there is no such socket");
    QLocalServer other;
    ASSERT_TRUE(other.listen(path()));
    ASSERT_TRUE(QFile::rename(path(), path() + QStringLiteral("2"))); // so that it is not removed
    other.close();
    EXPECT_EQ(failureOf(path() + QStringLiteral("2"), 1'000),
              "No host answers at " + path().toStdString() + "2: the host that listened there has ended");
}

} // namespace
