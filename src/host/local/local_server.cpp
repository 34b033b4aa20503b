#include "tnv5/host/local/local_server.h"

#include "tnv5/host/local/local_path.h"
#include "tnv5/host/local/local_peer.h"
#include "tnv5/host/local/local_request.h"
#include "tnv5/host/local/local_texts.h"
#include "tnv5/platform/errors.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QPointer>
#include <QTimer>
#include <algorithm>
#include <sys/stat.h>

namespace tnv5::host {

namespace {

constexpr mode_t kSocketMode = 0660;

QJsonObject stateEvent(const QJsonObject& state)
{
    return {{QStringLiteral("event"), QStringLiteral("state")}, {QStringLiteral("state"), state}};
}

/// Whether an event is about a pass that has just begun or was refused.
bool isNewPass(const QJsonObject& event)
{
    return event.value(u"event") == QLatin1String("pass") &&
           event.value(u"pass").toObject().value(u"ended").toString().isEmpty();
}

} // namespace

class TLocalServer::TParts
{
public:
    TParts(IClubControl& club, const QString& path);
    ~TParts();

    QList<TLocalPeer*> peers() const;
    int watchers() const;
    void tell(const QJsonObject& event);
    void stateChanged();

    const QString Path;

private:
    void listen();
    void listenAgain();
    void welcome();
    void onLine(TLocalPeer& peer, const QByteArray& line);
    QJsonObject answer(const TLocalPeer& peer, const QJsonObject& request);
    void beginToWatch(TLocalPeer& peer, const QJsonObject& request);
    QByteArray withPicture(const QJsonObject& event);
    void tellState();

    IClubControl& FClub;
    const TSocketLock FLock;
    QTimer FStateTimer; // a state is due
    QTimer FLookTimer;
    QElapsedTimer FSinceState;
    QJsonObject FTold;    // state that all who watch know
    QLocalServer FServer; // last: its connections go first
};

TLocalServer::TParts::TParts(IClubControl& club, const QString& path)
    : Path(QFileInfo(path).absoluteFilePath()), FClub(club), FLock((makeSocketFolder(Path), Path))
{
    FStateTimer.setSingleShot(true);
    QObject::connect(&FStateTimer, &QTimer::timeout, &FServer,
                     [this] { platform::guarded([this] { tellState(); }); });
    FLookTimer.setInterval(kLookMs);
    QObject::connect(&FLookTimer, &QTimer::timeout, &FServer, [this] {
        listenAgain();
        stateChanged();
    });
    QObject::connect(&FServer, &QLocalServer::newConnection, &FServer, [this] { welcome(); });
    listen();
    FLookTimer.start();
}

TLocalServer::TParts::~TParts()
{
    FServer.disconnect();
}

// Whoever holds the lock may replace what a killed host has left; a host without a lock is asked.
void TLocalServer::TParts::listen()
{
    const QFileInfo there(Path);
    if (there.exists() || there.isSymLink()) {
        if (there.isFile() || there.isDir() || there.isSymLink()) {
            throw platform::Exception(local_texts::kNoSocket.arg(Path));
        }
        QLocalSocket other;
        other.connectToServer(Path);
        if (other.waitForConnected(kLookMs)) {
            throw platform::Exception(local_texts::kRunning.arg(Path));
        }
        QFile::remove(Path);
    }
    FServer.setSocketOptions(QLocalServer::UserAccessOption | QLocalServer::GroupAccessOption);
    if (!FServer.listen(Path)) {
        throw platform::Exception(local_texts::kCannotListen.arg(Path, FServer.errorString()));
    }
    ::chmod(QFile::encodeName(Path).constData(), kSocketMode); // without the right to execute
}

// A machine that has run out of descriptors ends the listening, and nobody would ever be let in again.
void TLocalServer::TParts::listenAgain()
{
    try {
        if (!FServer.isListening()) {
            listen();
        }
    } catch (const platform::Exception&) { // the next look tries again
    }
}

QList<TLocalPeer*> TLocalServer::TParts::peers() const
{
    QList<TLocalPeer*> found;
    for (QObject* child : FServer.children()) {
        auto* const peer = dynamic_cast<TLocalPeer*>(child);
        if (peer != nullptr && peer->connected()) {
            found << peer;
        }
    }
    return found;
}

int TLocalServer::TParts::watchers() const
{
    const auto all = peers();
    return static_cast<int>(
        std::count_if(all.begin(), all.end(), [](const TLocalPeer* peer) { return peer->Watching; }));
}

void TLocalServer::TParts::welcome()
{
    while (QLocalSocket* const socket = FServer.nextPendingConnection()) {
        const bool full = peers().size() >= kMaxClients;
        auto* const peer = new TLocalPeer(
            socket, [this](TLocalPeer& from, const QByteArray& line) { onLine(from, line); }, &FServer);
        if (full) {
            peer->sendLast(toLine(refusal(local_texts::kTooMany)));
        }
    }
}

void TLocalServer::TParts::onLine(TLocalPeer& peer, const QByteArray& line)
{
    if (line.trimmed().isEmpty()) {
        return;
    }
    const QPointer<TLocalPeer> alive(&peer);
    const std::optional<QJsonObject> request = fromLine(line);
    QJsonObject answered = request ? answer(peer, *request) : refusal(local_texts::kNoObject);
    if (!alive) {
        return; // the club may have ended the server with it
    }
    const QJsonValue id = request ? request->value(u"id") : QJsonValue(QJsonValue::Null);
    const auto withId = [&id](QJsonObject object) {
        object.insert(u"id", id.isUndefined() ? QJsonValue(QJsonValue::Null) : id);
        return toLine(object);
    };
    QByteArray sent = withId(answered);
    if (sent.size() > kMaxLocalLine) {
        answered = refusal(local_texts::kAnswerTooLong);
        sent = withId(answered);
    }
    peer.send(sent);
    if (request && request->value(u"do") == QLatin1String("watch") && answered.value(u"ok").toBool()) {
        beginToWatch(peer, *request);
    }
}

QJsonObject TLocalServer::TParts::answer(const TLocalPeer& peer, const QJsonObject& request)
{
    try {
        return answerTo(FClub, request, peer.user());
    } catch (...) {
        return refusal(platform::exceptionMessage());
    }
}

void TLocalServer::TParts::beginToWatch(TLocalPeer& peer, const QJsonObject& request)
{
    const QPointer<TLocalPeer> alive(&peer);
    QJsonObject state;
    const bool known = platform::guarded([this, &state] { state = FClub.state(); });
    if (!alive) {
        return;
    }
    peer.Pictures = request.value(u"pictures").toBool();
    peer.Watching = true;
    if (!known) {
        return;
    }
    peer.send(toLine(stateEvent(state)));
    if (watchers() <= 1) {
        FTold = state;
    } else if (state != FTold) { // those who watched before know an older one
        stateChanged();
    }
}

void TLocalServer::TParts::tell(const QJsonObject& event)
{
    const QPointer<QLocalServer> alive(&FServer);
    const QByteArray line = toLine(event);
    const auto all = peers();
    const bool anyPictures = std::any_of(all.begin(), all.end(),
                                         [](const auto* peer) { return peer->Watching && peer->Pictures; });
    const QByteArray pictured = anyPictures && isNewPass(event) ? withPicture(event) : line;
    if (!alive) {
        return;
    }
    for (TLocalPeer* const peer : peers()) {
        if (peer->Watching) {
            peer->send(peer->Pictures ? pictured : line);
        }
    }
}

QByteArray TLocalServer::TParts::withPicture(const QJsonObject& event)
{
    QJsonObject pass = event.value(u"pass").toObject();
    QByteArray png;
    platform::guarded([&] { png = FClub.picture(pass.value(u"card").toString()); });
    pass.insert(u"picture", QString::fromLatin1(png.toBase64()));
    QJsonObject pictured = event;
    pictured.insert(u"pass", pass);
    QByteArray line = toLine(pictured);
    return line.size() > kMaxLocalLine ? toLine(event) : line;
}

void TLocalServer::TParts::stateChanged()
{
    if (FStateTimer.isActive() || watchers() == 0) {
        return;
    }
    const qint64 since = FSinceState.isValid() ? FSinceState.elapsed() : kStateMs;
    FStateTimer.start(static_cast<int>(std::clamp<qint64>(kStateMs - since, 0, kStateMs)));
}

void TLocalServer::TParts::tellState()
{
    if (watchers() == 0) {
        return;
    }
    const QPointer<QLocalServer> alive(&FServer);
    QJsonObject state = FClub.state();
    if (!alive || state == FTold) {
        return;
    }
    FSinceState.start();
    FTold = std::move(state);
    tell(stateEvent(FTold));
}

TLocalServer::TLocalServer(IClubControl& club, const QString& path) : F(std::make_unique<TParts>(club, path))
{
}

TLocalServer::~TLocalServer() = default;

QString TLocalServer::path() const
{
    return F->Path;
}

int TLocalServer::clients() const
{
    return static_cast<int>(F->peers().size());
}

int TLocalServer::watchers() const
{
    return F->watchers();
}

void TLocalServer::tell(const QJsonObject& event)
{
    F->tell(event);
}

void TLocalServer::stateChanged()
{
    F->stateChanged();
}

} // namespace tnv5::host
