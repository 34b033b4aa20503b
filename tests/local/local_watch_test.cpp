#include "local_fixture.h"

#include <QElapsedTimer>

using namespace tnv5;
using namespace tnv5::tests;

namespace {

const QByteArray kWatch = R"({"do":"watch","id":1})";

TEST_F(LocalServer, WhoWatchesGetsTheStateFirst)
{
    TRawPeer peer(path());
    EXPECT_EQ(text(peer.ask(kWatch)), R"({"id":1,"ok":true})");
    EXPECT_EQ(text(peer.hear()), R"({"event":"state","state":{"club":"Riverside"}})");
    EXPECT_EQ(server->watchers(), 1);
}

TEST_F(LocalServer, EventsReachThoseWhoWatch)
{
    TRawPeer one(path());
    TRawPeer two(path());
    TRawPeer other(path());
    for (TRawPeer* peer : {&one, &two}) {
        peer->ask(kWatch);
        peer->hear();
    }
    other.ask(R"({"do":"reload"})");
    server->tell(json(R"({"event":"line","text":"hello"})"));
    for (TRawPeer* peer : {&one, &two}) {
        EXPECT_EQ(text(peer->hear()), R"({"event":"line","text":"hello"})");
    }
    EXPECT_EQ(text(other.ask(R"({"do":"reload","id":2})")),
              R"({"id":2,"ok":true})"); // and nothing else before
}

TEST_F(LocalServer, AStateIsToldOnlyWhenItIsAnother)
{
    TRawPeer peer(path());
    peer.ask(kWatch);
    peer.hear();
    for (int i = 0; i < 5; ++i) {
        server->stateChanged();
    }
    club.State[QStringLiteral("inside")] = 1;
    server->stateChanged();
    EXPECT_EQ(text(peer.hear()), R"({"event":"state","state":{"club":"Riverside","inside":1}})");
    const int asked = club.StatesAsked;
    server->stateChanged();
    EXPECT_TRUE(eventually([&] { return club.StatesAsked > asked; }));
    server->tell(json(R"({"event":"line"})"));
    EXPECT_EQ(text(peer.hear()), R"({"event":"line"})");
}

TEST_F(LocalServer, StatesComeAtMostFourTimesASecond)
{
    TRawPeer peer(path());
    peer.ask(kWatch);
    peer.hear();
    QElapsedTimer watch;
    watch.start();
    int told = 0;
    for (int i = 0; told < 5; ++i) {
        club.State[QStringLiteral("inside")] = i;
        server->stateChanged();
        QCoreApplication::processEvents();
        if (peer.socket().bytesAvailable() > 0 || i % 64 == 0) {
            server->tell(json(R"({"event":"mark"})"));
            while (peer.hear().value(u"event") != QLatin1String("mark")) {
                ++told;
            }
        }
    }
    EXPECT_GE(watch.elapsed(), 4 * host::TLocalServer::kStateMs - 50); // a slow machine takes longer
}

TEST_F(LocalServer, AChangeThatNobodyTellsIsSeen)
{
    TRawPeer peer(path());
    peer.ask(kWatch);
    peer.hear();
    club.State[QStringLiteral("inside")] = 1;
    EXPECT_EQ(text(peer.hear()), R"({"event":"state","state":{"club":"Riverside","inside":1}})");
}

TEST_F(LocalServer, NobodyIsAskedForAStateThatNobodyWatches)
{
    TRawPeer peer(path());
    peer.ask(R"({"do":"reload"})");
    server->stateChanged();
    peer.ask(R"({"do":"reload"})");
    EXPECT_EQ(club.StatesAsked, 0);
}

TEST_F(LocalServer, PassesComeWithPicturesForThoseWhoWantThem)
{
    club.Pictures[QStringLiteral("17")] = "PNG";
    TRawPeer plain(path());
    TRawPeer pictured(path());
    plain.ask(kWatch);
    plain.hear();
    pictured.ask(R"({"do":"watch","pictures":true})");
    pictured.hear();
    server->tell(json(R"({"event":"pass","pass":{"card":"17","ended":""}})"));
    server->tell(json(R"({"event":"pass","pass":{"card":"17","ended":"2026-01-05T12:00:00Z"}})"));
    EXPECT_EQ(text(plain.hear()), R"({"event":"pass","pass":{"card":"17","ended":""}})");
    EXPECT_EQ(text(pictured.hear()), R"({"event":"pass","pass":{"card":"17","ended":"","picture":"UE5H"}})");
    EXPECT_EQ(text(pictured.hear()),
              R"({"event":"pass","pass":{"card":"17","ended":"2026-01-05T12:00:00Z"}})");
}

TEST_F(LocalServer, WhoDoesNotReadIsDropped)
{
    TRawPeer deaf(path());
    TRawPeer peer(path());
    deaf.ask(kWatch);
    deaf.hear();
    peer.ask(kWatch);
    peer.hear();
    deaf.Reading = false;
    deaf.socket().setReadBufferSize(1);
    const QJsonObject event = {{QStringLiteral("event"), QStringLiteral("line")},
                               {QStringLiteral("text"), QString(100'000, u'x')}};
    int told = 0;
    while (server->watchers() == 2 && told < 1'000) {
        server->tell(event);
        ++told;
        ASSERT_EQ(peer.hear().value(u"text").toString().size(), 100'000);
    }
    EXPECT_EQ(server->watchers(), 1);
    EXPECT_LE(told, host::TLocalServer::kMaxWaiting / 100'000 + 50); // some of it waits in the system
}

TEST_F(LocalServer, WhoAsksWithoutReadingWaits)
{
    club.State[QStringLiteral("club")] = QString(500'000, u'x');
    TRawPeer deaf(path());
    deaf.Reading = false;
    deaf.socket().setReadBufferSize(1);
    for (int i = 0; i < 100; ++i) {
        deaf.say(R"({"do":"status","id":1})"
                 "\n");
    }
    TRawPeer other(path());
    for (int i = 0; i < 50; ++i) {
        other.ask(R"({"do":"reload"})");
    }
    EXPECT_LT(club.StatesAsked, 10);
    EXPECT_EQ(server->clients(), 2);
    deaf.socket().setReadBufferSize(0);
    deaf.Reading = true;
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(deaf.hear().value(u"id").toInt(), 1) << i;
    }
    EXPECT_EQ(club.StatesAsked, 100);
}

TEST_F(LocalServer, OnlySoManyGetIn)
{
    std::vector<std::unique_ptr<TRawPeer>> peers;
    for (int i = 0; i < host::TLocalServer::kMaxClients; ++i) {
        peers.push_back(std::make_unique<TRawPeer>(path()));
        ASSERT_EQ(text(peers.back()->ask(R"({"do":"reload","id":1})")), R"({"id":1,"ok":true})");
    }
    TRawPeer one(path());
    EXPECT_EQ(text(one.hear()), R"({"error":"Too many programs are connected to this host.","ok":false})");
    EXPECT_TRUE(one.ended());
    peers.pop_back();
    EXPECT_TRUE(eventually([&] { return server->clients() < host::TLocalServer::kMaxClients; }));
    TRawPeer next(path());
    EXPECT_EQ(text(next.ask(R"({"do":"reload","id":1})")), R"({"id":1,"ok":true})");
}

TEST_F(LocalServer, TheEndOfTheServerEndsTheConnections)
{
    TRawPeer peer(path());
    peer.ask(kWatch);
    server.reset();
    EXPECT_TRUE(peer.ended());
    EXPECT_FALSE(QFile::exists(path()));
}

} // namespace
