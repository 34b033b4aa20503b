#include "local_fixture.h"

#include "tnv5/host/local/local_path.h"
#include "tnv5/host/local/local_request.h"
#include "tnv5/platform/errors.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace tnv5;
using namespace tnv5::tests;

namespace {

std::string answer(host::IClubControl& club, const char* request)
{
    return text(host::answerTo(club, json(request), QStringLiteral("desk1")));
}

TEST(LocalRequest, IsAnsweredByTheClub)
{
    TMemoryClub club;
    EXPECT_EQ(answer(club, R"({"do":"status"})"), R"({"ok":true,"state":{"club":"Riverside"}})");
    EXPECT_EQ(answer(club, R"({"do":"reload"})"), R"({"ok":true})");
    EXPECT_EQ(club.Reloads, 1);
    EXPECT_EQ(answer(club, R"({"do":"watch"})"), R"({"ok":true})");
    club.Pictures[QStringLiteral("17")] = "PNG";
    EXPECT_EQ(answer(club, R"({"do":"picture","card":" 17 "})"), R"({"ok":true,"png":"UE5H"})");
    EXPECT_EQ(answer(club, R"({"do":"picture","card":"18"})"), R"({"ok":true,"png":""})");
}

TEST(LocalRequest, OpeningNamesWhoAndWhy)
{
    TMemoryClub club;
    EXPECT_EQ(answer(club, R"({"do":"open","gate":"01A","reason":" a  pram\n","who":"Anna"})"),
              R"({"ok":true})");
    EXPECT_EQ(answer(club, R"({"do":"open","gate":"01A","reason":"pram"})"), R"({"ok":true})");
    EXPECT_EQ(club.Opened,
              QStringList({QStringLiteral("01A|Anna (desk1)|a pram"), QStringLiteral("01A|desk1|pram")}));
    club.Trouble = QStringLiteral("The gate is busy.");
    EXPECT_EQ(answer(club, R"({"do":"open","gate":"01A","reason":"pram"})"),
              R"({"error":"The gate is busy.","ok":false})");
    EXPECT_EQ(answer(club, R"({"do":"reload"})"), R"({"error":"The gate is busy.","ok":false})");
}

TEST(LocalRequest, WhoAndWhyAreCut)
{
    TMemoryClub club;
    const QString letters(host::kMaxNote - 1, u'x');
    const QString face = QStringLiteral("\U0001F600"); // two code units
    for (const QString& more : {QStringLiteral("yz"), face}) {
        const QString last = more == face ? QString() : QStringLiteral("y");
        host::answerTo(club,
                       {{"do", "open"}, {"gate", "01A"}, {"reason", letters + more}, {"who", letters + more}},
                       QStringLiteral("desk1"));
        EXPECT_EQ(club.Opened.takeFirst(), QStringLiteral("01A|%1 (desk1)|%1").arg(letters + last));
    }
}

TEST(LocalRequest, OpeningNeedsAGateAndAReason)
{
    TMemoryClub club;
    for (const char* request :
         {R"({"do":"open","gate":"01A"})", R"({"do":"open","gate":"01A","reason":"  "})",
          R"({"do":"open","gate":"01A","reason":7})"}) {
        EXPECT_EQ(answer(club, request), R"({"error":"Opening a gate by hand needs a reason.","ok":false})");
    }
    EXPECT_EQ(answer(club, R"({"do":"open","reason":"pram"})"),
              R"({"error":"Which gate is to be opened?","ok":false})");
    EXPECT_EQ(club.Opened, QStringList());
}

TEST(LocalRequest, SaysWhatItDoesNotKnow)
{
    TMemoryClub club;
    EXPECT_EQ(answer(club, R"({"do":"dance"})"),
              R"({"error":"There is nothing to do that is called \"dance\".","ok":false})");
    EXPECT_EQ(answer(club, "{}"), R"({"error":"There is nothing to do that is called \"\".","ok":false})");
    EXPECT_EQ(answer(club, R"({"do":"picture"})"), R"({"error":"Which card?","ok":false})");
}

TEST(LocalRequest, TheJournalComesInPortions)
{
    TMemoryClub club;
    club.Journal = {QJsonObject{{QStringLiteral("id"), 8}}};
    EXPECT_EQ(answer(club, R"({"do":"journal","after":7,"limit":5})"), R"({"ok":true,"passes":[{"id":8}]})");
    for (const char* request : {R"({"do":"journal"})", R"({"do":"journal","after":-3,"limit":0})",
                                R"({"do":"journal","limit":100000})"}) {
        answer(club, request);
    }
    EXPECT_EQ(club.Asked, QStringList({QStringLiteral("7+5"), QStringLiteral("0+100"), QStringLiteral("0+1"),
                                       QStringLiteral("0+1000")}));
}

TEST(LocalRequest, WhoIsWhatIsSaidAndWhatTheSystemSays)
{
    const auto who = [](const char* said, const char* user) {
        return host::whoDid(QLatin1String(said), QLatin1String(user)).toStdString();
    };
    EXPECT_EQ(who("", "desk1"), "desk1");
    EXPECT_EQ(who("desk1", "desk1"), "desk1");
    EXPECT_EQ(who(" Anna  Berg", "desk1"), "Anna Berg (desk1)");
    EXPECT_EQ(who("Anna", ""), "Anna");
}

TEST_F(LocalServer, GivesTheIdBack)
{
    TRawPeer peer(path());
    EXPECT_EQ(text(peer.ask(R"({"do":"reload","id":7})")), R"({"id":7,"ok":true})");
    EXPECT_EQ(text(peer.ask(R"({"do":"reload","id":"a b","more":1})")), R"({"id":"a b","ok":true})");
    EXPECT_EQ(text(peer.ask(R"({"do":"reload","id":{"n":[1]}})")), R"({"id":{"n":[1]},"ok":true})");
    EXPECT_EQ(text(peer.ask(R"({"do":"reload"})")), R"({"id":null,"ok":true})");
}

TEST_F(LocalServer, AnswersJunkAndGoesOn)
{
    TRawPeer peer(path());
    for (const char* junk : {"junk", "[]", "17", "\xff\xfe\x01", "{\"do\":", "{\"do\":\"reload\"} more"}) {
        EXPECT_EQ(text(peer.ask(junk)),
                  R"({"error":"A request is one JSON object on one line.","id":null,"ok":false})");
    }
    peer.say("\n  \r\n");
    EXPECT_EQ(text(peer.ask("{\"do\":\"reload\",\"id\":1}\r")), R"({"id":1,"ok":true})");
}

TEST_F(LocalServer, TakesRequestsInPieces)
{
    TRawPeer peer(path());
    const QByteArray line = "{\"do\":\"reload\",\"id\":1}\n{\"do\":\"reload\",\"id\":2}\n";
    for (const char byte : line) {
        peer.say(QByteArray(1, byte));
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(peer.hear().value(u"id").toInt(), 1);
    EXPECT_EQ(peer.hear().value(u"id").toInt(), 2);
}

TEST_F(LocalServer, AnswersManyRequestsInTheirOrder)
{
    TRawPeer peer(path());
    TRawPeer other(path());
    QByteArray lines;
    for (int i = 0; i < 1'000; ++i) {
        lines += R"({"do":"reload","id":)" + QByteArray::number(i) + "}\n";
    }
    peer.say(lines);
    EXPECT_EQ(text(other.ask(R"({"do":"reload","id":"other"})")), R"({"id":"other","ok":true})");
    for (int i = 0; i < 1'000; ++i) {
        ASSERT_EQ(peer.hear().value(u"id").toInt(-1), i);
    }
}

TEST_F(LocalServer, DoesWhatWasSaidBeforeLeaving)
{
    {
        TRawPeer peer(path());
        for (int i = 0; i < 100; ++i) {
            peer.say("{\"do\":\"reload\"}\n");
        }
        peer.socket().disconnectFromServer();
    }
    EXPECT_TRUE(eventually([&] { return club.Reloads == 100; }));
    EXPECT_TRUE(eventually([&] { return server->clients() == 0; }));
}

// Who is told something may turn out to have left, with more lines to be done than one turn takes.
TEST_F(LocalServer, TheClubIsNotCalledWhileItTells)
{
    constexpr int kLines = 40;
    TRawPeer peer(path());
    ASSERT_EQ(peer.ask(R"({"do":"watch"})").value(u"ok").toBool(), true);
    qsizetype before = -1;
    qsizetype after = -1;
    club.OnOpen = [&] {
        if (club.Opened.size() == 1) {
            const auto tell = [&] {
                peer.socket().abort();
                before = club.Opened.size();
                server->tell(json(R"({"event":"line","text":"hello"})"));
                after = club.Opened.size();
            };
            QMetaObject::invokeMethod(QCoreApplication::instance(), tell, Qt::QueuedConnection);
        }
    };
    QByteArray lines;
    for (int i = 0; i < kLines; ++i) {
        lines += "{\"do\":\"open\",\"gate\":\"01A\",\"reason\":\"pram\"}\n";
    }
    peer.say(lines);
    EXPECT_TRUE(eventually([&] { return club.Opened.size() == kLines; }));
    EXPECT_GT(before, 0);
    EXPECT_LT(before, kLines); // some were left
    EXPECT_EQ(before, after);
}

TEST_F(LocalServer, AnOverlongLineEndsTheConnection)
{
    TRawPeer peer(path());
    peer.say(QByteArray(host::kMaxLocalLine + 2, ' '));
    EXPECT_EQ(text(peer.hear()), R"({"error":"A line is longer than 1 MiB.","ok":false})");
    EXPECT_TRUE(peer.ended());
    EXPECT_TRUE(eventually([&] { return server->clients() == 0; }));
}

TEST_F(LocalServer, ALongLineIsARequest)
{
    TRawPeer peer(path());
    const QByteArray request = R"({"do":"reload","id":1)";
    EXPECT_EQ(text(peer.ask(request + QByteArray(host::kMaxLocalLine - request.size() - 1, ' ') + '}')),
              R"({"id":1,"ok":true})");
}

TEST_F(LocalServer, AnAnswerThatIsTooLongIsNotSent)
{
    club.State[QStringLiteral("club")] = QString(host::kMaxLocalLine, u'x');
    TRawPeer peer(path());
    EXPECT_EQ(text(peer.ask(R"({"do":"status","id":1})")),
              R"({"error":"The answer is longer than 1 MiB: ask for less.","id":1,"ok":false})");
}

TEST_F(LocalServer, WhatTheClubRaisesIsTheAnswer)
{
    club.OnOpen = [] { throw platform::Exception(QStringLiteral("The books are closed.")); };
    TRawPeer peer(path());
    EXPECT_EQ(text(peer.ask(R"({"do":"open","gate":"01A","reason":"pram","id":1})")),
              R"({"error":"The books are closed.","id":1,"ok":false})");
}

TEST_F(LocalServer, TheSystemNamesWhoAsks)
{
    TRawPeer peer(path());
    peer.ask(R"({"do":"open","gate":"01A","reason":"pram","user":"somebody else"})");
    EXPECT_EQ(club.Opened, QStringList(QStringLiteral("01A|%1|pram").arg(host::userName(::geteuid()))));
}

TEST_F(LocalServer, TheClubMayEndTheServerWhileItIsAsked)
{
    club.OnOpen = [this] { server.reset(); };
    TRawPeer peer(path());
    EXPECT_EQ(peer.ask(R"({"do":"open","gate":"01A","reason":"pram"})"), QJsonObject());
    EXPECT_TRUE(peer.ended());
}

TEST_F(LocalServer, OnlyOwnerAndGroupGetIn)
{
    struct stat there = {};
    ASSERT_EQ(::stat(path().toLocal8Bit().constData(), &there), 0);
    EXPECT_TRUE(S_ISSOCK(there.st_mode));
    EXPECT_EQ(there.st_mode & 0777, 0660);
}

TEST_F(LocalServer, ALiveSocketIsNotStolen)
{
    try {
        const host::TLocalServer second(club, path());
        FAIL();
    } catch (const platform::Exception& error) {
        EXPECT_EQ(error.message(), QStringLiteral("another host is already running here: ") + path());
    }
    TRawPeer peer(path());
    EXPECT_EQ(text(peer.ask(R"({"do":"reload","id":1})")), R"({"id":1,"ok":true})");
}

TEST_F(LocalServer, ASocketOfAProgramWithoutALockIsNotStolenEither)
{
    server.reset();
    QLocalServer other;
    ASSERT_TRUE(other.listen(path()));
    EXPECT_THROW(host::TLocalServer(club, path()), platform::Exception);
    EXPECT_TRUE(other.isListening());
    TRawPeer peer(path());
    EXPECT_TRUE(eventually([&] { return peer.connected(); }));
}

TEST_F(LocalServer, WhatAKilledHostLeftIsReplaced)
{
    server.reset();
    EXPECT_FALSE(QFile::exists(path()));
    EXPECT_EQ(QDir(FFolder.path()).entryList(QDir::Files | QDir::System), QStringList()); // nor a lock
    const pid_t child = ::fork();
    if (child == 0) { // ends without cleaning up
        const auto* left = new host::TLocalServer(club, path());
        ::_exit(left->clients());
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    ASSERT_TRUE(QFileInfo(path()).exists());
    server = std::make_unique<host::TLocalServer>(club, path());
    TRawPeer peer(path());
    EXPECT_EQ(text(peer.ask(R"({"do":"reload","id":1})")), R"({"id":1,"ok":true})");
}

TEST_F(LocalServer, ListensAgainAfterTheDescriptorsRanOut)
{
    TRawPeer waiting(path()); // nobody has let it in yet
    rlimit usual{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit few{128, usual.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    std::vector<int> taken;
    for (int descriptor = 0; (descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;) {
        taken.push_back(descriptor);
    }
    const bool ended = eventually([&] { return !QFileInfo::exists(path()); });
    for (const int descriptor : taken) {
        ::close(descriptor);
    }
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_TRUE(ended);
    EXPECT_TRUE(eventually([&] { return QFileInfo::exists(path()); }));
    EXPECT_EQ(TRawPeer(path()).ask(R"({"do":"reload"})").value(u"ok"), true);
}

TEST_F(LocalServer, AFileThatIsNoSocketIsLeftAlone)
{
    server.reset();
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("mine") == 4);
    file.close();
    try {
        const host::TLocalServer second(club, path());
        FAIL();
    } catch (const platform::Exception& error) {
        EXPECT_EQ(error.message(), path() + QStringLiteral(" is there already and is no socket"));
    }
    EXPECT_EQ(QFileInfo(path()).size(), 4);
    QFile::remove(path());
}

TEST_F(LocalServer, MakesTheSocketsFolderButNoMore)
{
    const QString inside = FFolder.filePath(QStringLiteral("tnv5/club.socket"));
    const host::TLocalServer second(club, inside);
    struct stat there = {};
    ASSERT_EQ(::stat(QFileInfo(inside).path().toLocal8Bit().constData(), &there), 0);
    EXPECT_EQ(there.st_mode & 0027, 0020 & there.st_mode); // nothing for others
    EXPECT_EQ(there.st_mode & 0007, 0);
    EXPECT_THROW(host::TLocalServer(club, FFolder.filePath(QStringLiteral("a/b/c.socket"))),
                 platform::Exception);
    EXPECT_THROW(host::TLocalServer(club, FFolder.filePath(QString(200, u'x'))), platform::Exception);
}

TEST(LocalPath, IsTheClubsNameInTheUsersFolder)
{
    const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", "/run/user/17");
    const QString folder =
        ::geteuid() == 0 ? QStringLiteral("/run/tnv5/") : QStringLiteral("/run/user/17/tnv5/");
    EXPECT_EQ(host::usualSocket(QStringLiteral("Riverside")), folder + QStringLiteral("Riverside.socket"));
    EXPECT_EQ(host::usualSocket(QStringLiteral(" a/b\n ")), folder + QStringLiteral("a_b.socket"));
    EXPECT_EQ(host::usualSocket({}), folder + QStringLiteral("club.socket"));
    EXPECT_EQ(host::usualSocket(QStringLiteral("..")), folder + QStringLiteral("club...socket"));
    qunsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(host::usualSocket(QStringLiteral("Riverside")), QStringLiteral("/run/tnv5/Riverside.socket"));
    if (!before.isNull()) {
        qputenv("XDG_RUNTIME_DIR", before);
    }
}

} // namespace
