#include "tnv5/host/local/local_client.h"

#include "tnv5/host/local/local_line.h"
#include "tnv5/host/local/local_request.h"
#include "tnv5/host/local/local_texts.h"
#include "tnv5/platform/errors.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QLocalSocket>
#include <QPointer>
#include <QTimer>
#include <algorithm>
#include <map>
#include <utility>

namespace tnv5::host {

namespace {

// What people understand; Qt says "Invalid name".
QString whyNot(const QLocalSocket& socket)
{
    switch (socket.error()) {
    case QLocalSocket::ServerNotFoundError:
        return local_texts::kNobodyThere;
    case QLocalSocket::ConnectionRefusedError:
        return local_texts::kLeftBehind;
    case QLocalSocket::SocketAccessError:
        return local_texts::kForbidden;
    default:
        return socket.errorString();
    }
}

// Qt looks for a name without a slash in the folder for temporary files.
QString absolute(const QString& path)
{
    return QFileInfo(path).absoluteFilePath();
}

} // namespace

QJsonObject askHost(const QString& socketPath, const QJsonObject& request, int timeoutMs)
{
    const QString path = absolute(socketPath);
    const QDeadlineTimer deadline(timeoutMs);
    const auto left = [&deadline] { return static_cast<int>(deadline.remainingTime()); };
    QLocalSocket socket;
    socket.connectToServer(path);
    if (!socket.waitForConnected(timeoutMs)) {
        throw platform::Exception(local_texts::kNoHost.arg(path, whyNot(socket)));
    }
    socket.write(toLine(request));
    TLineBuffer lines;
    for (;;) {
        if (const auto line = lines.take()) {
            const auto answer = fromLine(*line);
            if (answer && answer->contains(u"event")) {
                continue;
            }
            if (answer && answer->contains(u"ok")) {
                return *answer;
            }
            throw platform::Exception(local_texts::kJunk.arg(path));
        }
        if (lines.overlong()) {
            throw platform::Exception(local_texts::kJunk.arg(path));
        }
        if (deadline.hasExpired()) {
            throw platform::Exception(local_texts::kNoAnswer.arg(path).arg((timeoutMs + 999) / 1'000));
        }
        if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead(std::max(left(), 1)) &&
            socket.state() != QLocalSocket::ConnectedState && socket.bytesAvailable() == 0) {
            throw platform::Exception(local_texts::kNoHost.arg(path, local_texts::kLost));
        }
        lines.add(socket.readAll());
    }
}

class TLocalClient::TLink final : public QObject
{
public:
    TLink(TLocalClient& owner, const QString& path, TFindPath find);

    void start();
    void stop();
    void ask(QJsonObject request, TAnswer answer);
    /// The client goes.
    void letGo();

    QString Path;
    bool Connected = false;

private:
    void tryConnect();
    bool findPath();
    void greet();
    void read();
    void onLine(const QByteArray& line);
    void onAnswer(qint64 id, const QJsonObject& answer);
    void lookWhetherAlive();
    void lost(const QString& why);
    void failed(const QString& why);
    void close();
    void send(QJsonObject request, TAnswer answer);

    /// Calls something of the host program, after which the client may be gone.
    template <class Hook, class... Values>
    void call(Hook hook, const Values&... values)
    {
        if (hook) {
            ++FCalls;
            platform::guarded([&] { hook(values...); });
            --FCalls;
        }
    }

    TLocalClient* FOwner;
    TFindPath FFind; // none: where it is, is known
    QLocalSocket* FSocket = nullptr;
    QTimer FRetry;
    QTimer FAlive;
    TLineBuffer FLines;
    std::map<qint64, TAnswer> FOpen;
    qint64 FLastId = 0;
    int FPauseMs = kFirstPauseMs;
    int FCalls = 0;
    bool FHeard = false;
    bool FAsked = false; // whether it is alive, and heard nothing since
    QString FWhyNot;     // told
};

TLocalClient::TLink::TLink(TLocalClient& owner, const QString& path, TFindPath find)
    : Path(path.isEmpty() ? path : absolute(path)), FOwner(&owner), FFind(std::move(find))
{
    FRetry.setSingleShot(true);
    connect(&FRetry, &QTimer::timeout, this, [this] { tryConnect(); });
    connect(&FAlive, &QTimer::timeout, this, [this] { lookWhetherAlive(); });
}

void TLocalClient::TLink::start()
{
    if (FSocket == nullptr && !FRetry.isActive()) {
        FPauseMs = kFirstPauseMs;
        FRetry.start(0); // hooks are called from the event loop only
    }
}

void TLocalClient::TLink::stop()
{
    FRetry.stop();
    FWhyNot.clear();
    close();
}

void TLocalClient::TLink::letGo()
{
    FOwner = nullptr;
    FOpen.clear();
    stop();
    if (FCalls > 0) {
        deleteLater();
    } else {
        delete this;
    }
}

bool TLocalClient::TLink::findPath()
{
    try {
        if (FFind) {
            Path = absolute(FFind());
        }
        return true;
    } catch (...) {
        failed(platform::exceptionMessage());
    }
    return false;
}

void TLocalClient::TLink::tryConnect()
{
    if (!findPath()) {
        return;
    }
    FLines = {};
    FHeard = FAsked = false;
    FSocket = new QLocalSocket(this);
    connect(FSocket, &QLocalSocket::connected, this, [this] { greet(); });
    connect(FSocket, &QLocalSocket::readyRead, this, [this] { read(); });
    connect(FSocket, &QLocalSocket::disconnected, this, [this] {
        read(); // the last words; a client that goes meanwhile leaves the link until later
        lost(local_texts::kLost);
    });
    connect(
        FSocket, &QLocalSocket::errorOccurred, this,
        [this, socket = QPointer(FSocket)](QLocalSocket::LocalSocketError error) {
            if (error != QLocalSocket::PeerClosedError && socket && socket == FSocket) {
                lost(local_texts::kNoHost.arg(Path, whyNot(*FSocket)));
            }
        },
        Qt::QueuedConnection); // also when connecting fails at once
    FAlive.start(std::max(FOwner->PatienceMs / 2, 1));
    FSocket->connectToServer(Path);
}

void TLocalClient::TLink::greet()
{
    send({{QStringLiteral("do"), QStringLiteral("watch")}, {QStringLiteral("pictures"), FOwner->Pictures}},
         [this](const QJsonObject& answer) {
             if (FOwner == nullptr || FSocket == nullptr) {
                 return;
             }
             if (!answer.value(u"ok").toBool()) {
                 lost(answer.value(u"error").toString());
                 return;
             }
             Connected = true;
             FFind = nullptr;
             FWhyNot.clear();
             FPauseMs = kFirstPauseMs;
             call(FOwner->OnConnected);
         });
}

void TLocalClient::TLink::read()
{
    const QPointer<TLink> self(this);
    const QPointer<QLocalSocket> socket(FSocket);
    while (self && socket && socket == FSocket) {
        if (const auto line = FLines.take()) {
            onLine(*line);
        } else if (FLines.overlong()) {
            lost(local_texts::kJunk.arg(Path));
        } else if (socket->bytesAvailable() > 0) {
            FHeard = true;
            FLines.add(socket->read(kMaxLocalLine));
        } else {
            return;
        }
    }
}

void TLocalClient::TLink::onLine(const QByteArray& line)
{
    const std::optional<QJsonObject> object = fromLine(line);
    if (!object) {
        lost(local_texts::kJunk.arg(Path));
    } else if (object->contains(u"event")) {
        if (Connected) { // who has not answered yet is not known to be a host
            call(FOwner->OnEvent, *object);
        }
    } else if (object->value(u"id").isDouble()) {
        onAnswer(object->value(u"id").toInteger(), *object);
    } else {
        lost(object->value(u"error").toString(local_texts::kJunk.arg(Path))); // too many programs
    }
}

void TLocalClient::TLink::onAnswer(qint64 id, const QJsonObject& answer)
{
    if (auto open = FOpen.extract(id)) {
        call(open.mapped(), answer);
    }
}

void TLocalClient::TLink::lookWhetherAlive()
{
    if (std::exchange(FHeard, false)) {
        FAsked = false;
        return;
    }
    if (std::exchange(FAsked, true)) {
        lost(local_texts::kNoAnswer.arg(Path).arg((FOwner->PatienceMs + 999) / 1'000));
        return;
    }
    if (Connected) {
        send({{QStringLiteral("do"), QStringLiteral("status")}}, [](const QJsonObject&) {});
    }
}

void TLocalClient::TLink::lost(const QString& why)
{
    if (FSocket != nullptr) {
        failed(why);
    }
}

void TLocalClient::TLink::failed(const QString& why)
{
    FRetry.start(FPauseMs);
    FPauseMs = std::min(FPauseMs * 2, kLongestPauseMs);
    const QPointer<TLink> self(this);
    ++FCalls; // an answer may destroy the client
    close();
    --FCalls;
    const bool stopped = self && !FRetry.isActive(); // by an answer
    if (self && FOwner != nullptr && !stopped && std::exchange(FWhyNot, why) != why) {
        call(FOwner->OnLost, why);
    }
}

void TLocalClient::TLink::close()
{
    Connected = false;
    FAlive.stop();
    if (FSocket != nullptr) {
        FSocket->disconnect(this);
        FSocket->abort();
        std::exchange(FSocket, nullptr)->deleteLater();
    }
    QJsonObject unknown = refusal(local_texts::kLost);
    unknown.insert(u"unknown", true);
    ++FCalls;
    for (const auto& [id, answer] : std::exchange(FOpen, {})) {
        if (FOwner != nullptr) {
            call(answer, unknown);
        }
    }
    --FCalls;
}

void TLocalClient::TLink::send(QJsonObject request, TAnswer answer)
{
    const qint64 id = ++FLastId;
    request.insert(u"id", id);
    FOpen[id] = std::move(answer);
    FSocket->write(toLine(request));
    FSocket->flush();
}

void TLocalClient::TLink::ask(QJsonObject request, TAnswer answer)
{
    if (Connected && FOpen.size() < kMaxOpen) {
        send(std::move(request), std::move(answer));
        return;
    }
    QTimer::singleShot(0, this, [this, answer = std::move(answer)] {
        if (FOwner != nullptr) {
            call(answer, refusal(local_texts::kLost));
        }
    });
}

TLocalClient::TLocalClient(const QString& path) : F(new TLink(*this, path, {})) {}

TLocalClient::TLocalClient(TFindPath find) : F(new TLink(*this, {}, std::move(find))) {}

TLocalClient::~TLocalClient()
{
    F->letGo();
}

const QString& TLocalClient::path() const
{
    return F->Path;
}

void TLocalClient::start()
{
    F->start();
}

void TLocalClient::stop()
{
    F->stop();
}

bool TLocalClient::connected() const
{
    return F->Connected;
}

void TLocalClient::ask(QJsonObject request, TAnswer answer)
{
    F->ask(std::move(request), std::move(answer));
}

} // namespace tnv5::host
