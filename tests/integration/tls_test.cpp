// Protected links on loopback, with certificates as "tnv5 cert" makes them: who comes in, and who does not.

#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/platform/sockets.h"
#include "tnv5/testing/memory_port.h"
#include "tnv5/tools/certificates.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QElapsedTimer>
#include <QFile>
#include <QHostAddress>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <cerrno>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

using platform::ESocketError;
using platform::TClientSocket;
using platform::TNetwork;
using platform::TServerAccess;
using platform::TServerConnection;
using platform::TServerSocket;
using platform::TSocketFailure;
using platform::TTlsFiles;

const QString kHere = QStringLiteral("127.0.0.1");

struct TServer
{
    TServer()
    {
        socket->OnClientConnect = [this](TServerConnection&) { events << "+"; };
        socket->OnClientDisconnect = [this](TServerConnection&) { events << "-"; };
        socket->OnClientRead = [this](TServerConnection&, const QByteArray& bytes) { read += bytes; };
        socket->OnClientError = [this](TServerConnection&, TSocketFailure& failure) {
            events << QString::number(std::exchange(failure.code, 0));
        };
        socket->OnSendFailure = [this](TServerConnection&, const QString& text) { events << text; };
        socket->OnRefused = [this](const QString& address, const QString& reason) {
            refused << address + ": " + reason;
        };
    }

    void open(const std::optional<TTlsFiles>& tls, int handshakeMs = 60'000)
    {
        TServerAccess access;
        access.tls = tls;
        access.handshakeMs = handshakeMs;
        socket->SetAccess(access);
        socket->Open();
    }

    std::unique_ptr<TServerSocket> socket = TNetwork::current().makeServer();
    QStringList events;
    QStringList refused;
    QByteArray read;
};

struct TClient
{
    TClient(int port, const std::optional<TTlsFiles>& tls, const QString& host = kHere)
    {
        socket->SetServer(host, port, true);
        socket->SetTls(tls);
        socket->OnConnect = [this] { ++connected; };
        socket->OnDisconnect = [this] { ++ended; };
        socket->OnRead = [this](const QByteArray& bytes) { read += bytes; };
        socket->OnError = [this](TSocketFailure& failure) {
            errors << QString::number(std::exchange(failure.code, 0)) + ": " + failure.text;
        };
        socket->Open();
    }

    std::unique_ptr<TClientSocket> socket = TNetwork::current().makeClient();
    int connected = 0;
    int ended = 0;
    QStringList errors;
    QByteArray read;
};

// A club's certificates, and those of another one that uses the same names.
class Tls : public ::testing::Test
{
protected:
    Tls()
    {
        tools::makeCertificates({club.path(), {kHere, "localhost"}, {"bar", "door"}, 30});
        tools::makeCertificates({stranger.path(), {kHere, "localhost"}, {"bar"}, 30});
        tools::makeCertificates({elsewhere.path(), {}, {}, 30});
        for (const char* name : {"authority.crt", "authority.key"}) {
            const QString file = elsewhere.filePath(QString::fromLatin1(name));
            QFile::remove(file);
            QFile::copy(club.filePath(QString::fromLatin1(name)), file);
        }
        tools::makeCertificates({elsewhere.path(), {"192.168.77.1", "desk.club"}, {}, 30});
    }

    TTlsFiles of(const char* name) const { return tools::tlsFiles(club.path(), QString::fromLatin1(name)); }
    TTlsFiles strangers(const char* name) const
    {
        return tools::tlsFiles(stranger.path(), QString::fromLatin1(name));
    }

    int port() const { return server.socket->ListeningPort(); }

    // A good client comes in, hears and is heard, whatever else has happened.
    void expectService()
    {
        const qsizetype already = server.read.size();
        TClient good(port(), of("bar"));
        ASSERT_TRUE(eventually([&] { return good.socket->Active(); }))
            << good.errors.join(u' ').toStdString();
        good.socket->Send("from a client");
        EXPECT_TRUE(eventually([&] { return server.read.sliced(already) == "from a client"; }));
        server.socket->SendToAll("to all", false);
        EXPECT_TRUE(eventually([&] { return good.read == "to all"; }));
        good.socket->Close();
        EXPECT_TRUE(eventually([&] { return server.socket->Connections().isEmpty(); }));
    }

    // Someone who is not let in, and of whom nothing is heard but the refusal.
    void expectRefused()
    {
        EXPECT_TRUE(eventually([&] { return !server.refused.isEmpty(); }));
        EXPECT_EQ(server.refused.size(), 1);
        EXPECT_TRUE(server.refused.value(0).startsWith(kHere + ": "));
        EXPECT_EQ(server.events, QStringList());
        EXPECT_TRUE(server.read.isEmpty());
        EXPECT_TRUE(server.socket->Connections().isEmpty());
    }

    QTemporaryDir club;
    QTemporaryDir stranger;
    QTemporaryDir elsewhere; // the club's authority, a server of other names
    TServer server;
};

TEST_F(Tls, RightCertificatesBothWays)
{
    server.open(of("server"));
    TClient bar(port(), of("bar"));
    TClient door(port(), of("door"), QStringLiteral("localhost"));
    ASSERT_TRUE(eventually([&] { return server.socket->Connections().size() == 2; }));
    ASSERT_TRUE(eventually([&] { return bar.socket->Active() && door.socket->Active(); }));
    const QByteArray much(700'000, 'm');
    server.socket->SendToAll(much, false);
    EXPECT_TRUE(eventually([&] { return bar.read == much && door.read == much; }));
    bar.socket->Send(much);
    EXPECT_TRUE(eventually([&] { return server.read == much; }));
    bar.socket->Send("last words");
    bar.socket->Close();
    EXPECT_TRUE(eventually([&] { return server.read.endsWith("last words"); }));
    EXPECT_TRUE(eventually([&] { return server.socket->Connections().size() == 1; }));
    server.socket->Close();
    EXPECT_TRUE(eventually([&] { return door.ended == 1; }));
    EXPECT_EQ(bar.errors + door.errors, QStringList()); // an orderly end is none
    EXPECT_EQ(server.events, (QStringList{"+", "+", "-"}));
    EXPECT_EQ(server.refused, QStringList());
}

TEST_F(Tls, ClientOfAnotherAuthority)
{
    server.open(of("server"));
    TTlsFiles files = strangers("bar");
    files.authority = of("bar").authority; // it would trust the server
    TClient client(port(), files);
    expectRefused();
    EXPECT_TRUE(
        eventually([&] { return !client.socket->Active() && client.errors.size() + client.ended > 0; }));
    expectService();
}

// A certificate for a server is none for a client.
TEST_F(Tls, ClientWithTheServersCertificate)
{
    server.open(of("server"));
    TClient client(port(), of("server"));
    expectRefused();
    expectService();
}

TEST_F(Tls, ClientWithoutTls)
{
    server.open(of("server"));
    TClient client(port(), std::nullopt);
    ASSERT_TRUE(eventually([&] { return client.socket->Active(); }));
    client.socket->Send("$01AR123");
    expectRefused();
    EXPECT_TRUE(eventually([&] { return !client.socket->Active(); }));
    EXPECT_TRUE(client.read.isEmpty() || !client.read.contains("LOG!"));
    expectService();
}

// TLS, but without a certificate of its own.
TEST_F(Tls, ClientWithoutACertificate)
{
    server.open(of("server"));
    QSslSocket client;
    client.setPeerVerifyMode(QSslSocket::VerifyNone);
    QByteArray heard;
    QObject::connect(&client, &QSslSocket::encrypted, [&client] { client.write("$01AR123"); });
    QObject::connect(&client, &QSslSocket::readyRead, [&] { heard += client.readAll(); });
    client.connectToHostEncrypted(kHere, static_cast<quint16>(port()));
    expectRefused();
    EXPECT_TRUE(eventually([&] { return client.state() == QAbstractSocket::UnconnectedState; }));
    EXPECT_TRUE(heard.isEmpty());
    expectService();
}

TEST_F(Tls, ClientThatSaysNothing)
{
    server.open(of("server"), 50);
    QTcpSocket silent;
    silent.connectToHost(QHostAddress(kHere), static_cast<quint16>(port()));
    expectRefused();
    EXPECT_EQ(server.refused, QStringList{kHere + ": it did not begin an encrypted link"});
    EXPECT_TRUE(eventually([&] { return silent.state() == QAbstractSocket::UnconnectedState; }));
}

TEST_F(Tls, LimitIsATime)
{
    TServerAccess access;
    access.handshakeMs = 0;
    EXPECT_THROW(server.socket->SetAccess(access), platform::EConvertError);
    access.handshakeMs = 1;
    EXPECT_NO_THROW(server.socket->SetAccess(access));
}

TEST_F(Tls, ClientThatStopsInTheMiddle)
{
    server.open(of("server"), 50);
    QTcpSocket halfway;
    halfway.connectToHost(QHostAddress(kHere), static_cast<quint16>(port()));
    halfway.write(QByteArray::fromHex("16030100c8010000c4")); // a greeting that never ends
    expectRefused();
    EXPECT_TRUE(eventually([&] { return halfway.state() == QAbstractSocket::UnconnectedState; }));
}

TEST_F(Tls, LimitIsForTheBeginningAlone)
{
    constexpr int kLimitMs = 2'000;
    server.open(of("server"), kLimitMs);
    TClient client(port(), of("bar"));
    ASSERT_TRUE(eventually([&] { return server.socket->Connections().size() == 1; }));
    QElapsedTimer since;
    since.start();
    ASSERT_TRUE(eventually([&] { return since.elapsed() > kLimitMs + 100; }));
    server.socket->SendToAll("still here", false);
    EXPECT_TRUE(eventually([&] { return client.read == "still here"; }));
    EXPECT_EQ(server.refused, QStringList());
}

TEST_F(Tls, ManyWhoSayNothingKeepNobodyOut)
{
    server.open(of("server"));
    std::vector<std::unique_ptr<QTcpSocket>> silent(200);
    for (auto& socket : silent) {
        socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QHostAddress(kHere), static_cast<quint16>(port()));
    }
    expectService();
}

TEST_F(Tls, ServerOfAnotherAuthority)
{
    server.open(strangers("server"));
    TClient client(port(), of("bar"));
    EXPECT_TRUE(eventually([&] { return !client.errors.isEmpty(); }));
    ASSERT_EQ(client.errors.size(), 1);
    EXPECT_TRUE(client.errors.first().startsWith(QString::number(EPROTO) + ": "));
    EXPECT_EQ(client.connected, 0);
    EXPECT_EQ(client.ended, 0);
    EXPECT_FALSE(client.socket->Active());
    EXPECT_THROW(client.socket->Send("$01AR123"), ESocketError);
}

TEST_F(Tls, ServerOfAnotherName)
{
    server.open(tools::tlsFiles(elsewhere.path(), QStringLiteral("server")));
    TClient client(port(), of("bar"));
    EXPECT_TRUE(eventually([&] { return !client.errors.isEmpty(); }));
    ASSERT_EQ(client.errors.size(), 1);
    EXPECT_TRUE(client.errors.first().contains(QStringLiteral("host name"), Qt::CaseInsensitive))
        << client.errors.first().toStdString();
    EXPECT_EQ(client.connected, 0);
}

// A workstation cannot play the server.
TEST_F(Tls, ServerWithAClientsCertificate)
{
    server.open(of("door"));
    TClient client(port(), of("bar"));
    EXPECT_TRUE(eventually([&] { return !client.errors.isEmpty(); }));
    EXPECT_EQ(client.connected, 0);
}

TEST_F(Tls, ServerWithoutTls)
{
    server.open(std::nullopt);
    TClient client(port(), of("bar"));
    ASSERT_TRUE(eventually([&] { return server.socket->Connections().size() == 1; }));
    server.socket->SendToAll("LOG!plain&", false);
    EXPECT_TRUE(eventually([&] { return !client.errors.isEmpty(); }));
    EXPECT_EQ(client.connected, 0);
    EXPECT_TRUE(client.read.isEmpty());
}

TEST_F(Tls, FilesThatAreNoneAreToldAtOnce)
{
    const auto failure = [this](TTlsFiles files) {
        try {
            server.open(files);
        } catch (const ESocketError& error) {
            return error.message();
        }
        return QString();
    };
    TTlsFiles files = of("server");
    files.certificate = club.filePath("nothing.crt");
    EXPECT_EQ(failure(files), files.certificate + ": No such file or directory");
    files.certificate = of("server").key;
    EXPECT_EQ(failure(files), files.certificate + ": there is no certificate in it");
    files = of("server");
    files.key = files.certificate;
    EXPECT_EQ(failure(files), files.key + ": there is no key in it that can be used");
    EXPECT_FALSE(server.socket->Active());
    EXPECT_EQ(failure(of("server")), QString());
    EXPECT_TRUE(server.socket->Active());
}

// Two controllers share their line over a protected link.
TEST_F(Tls, Components)
{
    using turnstile::TTurnStylerDevice;
    testkit::TMemoryPort line;
    line.Open();
    TTurnStylerDevice gate;
    QStringList log;
    gate.SetOnLog([&](platform::TComponent*, const QString& text) { log << text; });
    gate.SetComport(&line);
    gate.SetDeviceList({"01A"});
    TServerAccess access;
    access.tls = of("server");
    gate.SetServerAccess(access);
    gate.SetRemoutDevice(turnstile::podServer);
    ASSERT_TRUE(gate.Connected());

    testkit::TMemoryPort ownLine;
    ownLine.Open();
    TTurnStylerDevice desk;
    QStringList seen;
    desk.SetOnLog([&](platform::TComponent*, const QString& text) { seen << text; });
    desk.SetOnError([&](platform::TComponent*, const QString& text) { seen << "error " + text; });
    desk.SetOnCheckStatus([&](platform::TComponent*, const QVariant& name, const QVariant& device,
                              const QVariant& card, const QVariant& one, const QVariant& two) {
        seen << name.toString() + u' ' + device.toString() + u' ' + card.toString() + u' ' + one.toString() +
                    u' ' + two.toString();
    });
    desk.SetComport(&ownLine);
    desk.SetClientTls(of("bar"));
    desk.SetServer(kHere);
    desk.SetPort(gate.ListeningPort());
    desk.SetRemoutDevice(turnstile::PodClient);
    ASSERT_TRUE(eventually([&] { return desk.Connected() && gate.Watchers() == 1; }));

    desk.p_hw_ProtocolIn(QStringLiteral("$01AR123")); // goes to the server, which repeats it to all
    const QString read = QStringLiteral("%Считано с порта% $01AR123");
    EXPECT_TRUE(eventually([&] { return seen.contains(QStringLiteral("STACK 01A 123 NEW NEW")); }));
    EXPECT_TRUE(log.contains(read));
    EXPECT_EQ(gate.StackItemsCount(), 1);
    EXPECT_EQ(desk.StackItemsCount(), 0);
    EXPECT_EQ(seen.value(0), read);
}

} // namespace
} // namespace tnv5::integration
