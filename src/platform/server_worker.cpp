#include "tnv5/platform/server_worker.h"

#include "tnv5/platform/socket_failure.h"

#include <QHostAddress>
#include <QSslSocket>
#include <QTimer>
#include <utility>

namespace tnv5::platform {

namespace {

constexpr int kAcceptAgainMs = 100;
constexpr int kBacklog = 1'024;

QString peerAddress(const QTcpSocket& socket)
{
    return PlainAddress(socket.peerAddress()).toString();
}

qint64 unsent(const QTcpSocket& socket)
{
    const auto* const tls = qobject_cast<const QSslSocket*>(&socket);
    return socket.bytesToWrite() + (tls != nullptr ? tls->encryptedBytesToWrite() : 0);
}

} // namespace

TServerWorker::TServerWorker(TEvents events, TServerAccess access, std::optional<QSslConfiguration> tls)
    : FEvents(std::move(events)), FAccess(std::move(access)), FTls(std::move(tls))
{
    setListenBacklogSize(kBacklog);
    setMaxPendingConnections(kMaxLinks);
    // without this a machine that has run out of descriptors would never let anyone in again
    connect(this, &QTcpServer::acceptError, this,
            [this] { QTimer::singleShot(kAcceptAgainMs, this, [this] { setHeld(FHeld); }); });
}

// The clients' sockets are its children; nothing is told of their end.
TServerWorker::~TServerWorker()
{
    for (QTcpSocket* const socket : findChildren<QTcpSocket*>()) {
        socket->disconnect(this);
        socket->flush(); // what was sent shall arrive
    }
}

void TServerWorker::setHeld(bool held)
{
    FHeld = held;
    if (held) {
        pauseAccepting();
    } else {
        resumeAccepting();
    }
}

void TServerWorker::incomingConnection(qintptr descriptor)
{
    QTcpSocket* const socket = FTls ? new QSslSocket(this) : new QTcpSocket(this);
    // what one write can take leaves at once, without the socket's own queue
    const QIODevice::OpenMode mode = QIODevice::ReadWrite | QIODevice::Unbuffered;
    if (!socket->setSocketDescriptor(descriptor, QAbstractSocket::ConnectedState, mode)) {
        delete socket;
        return;
    }
    ++FSockets;
    if (admission(FAccess, peerAddress(*socket)) == TAdmission::Refused) {
        refuse(socket, kNotOnList);
        return;
    }
    if (FSockets > kMaxLinks) {
        refuse(socket, QStringLiteral("there are too many clients"));
        return;
    }
    watchLink(*socket);
    connect(socket, &QTcpSocket::errorOccurred, this, [this, socket](auto error) { onError(socket, error); });
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] { onDisconnected(socket); });
    if (FTls) {
        startTls(static_cast<QSslSocket*>(socket));
    } else {
        enter(socket);
    }
}

// The handshake has its time; nobody holds a place by saying nothing.
void TServerWorker::startTls(QSslSocket* socket)
{
    connect(socket, &QSslSocket::encrypted, this, [this, socket] { enter(socket); });
    QTimer::singleShot(FAccess.handshakeMs, socket, [this, socket] {
        const bool dropped = socket->state() != QAbstractSocket::ConnectedState; // and not deleted yet
        if (!dropped && !FLinks.contains(socket)) {
            refuse(socket, QStringLiteral("it did not begin an encrypted link"));
        }
    });
    socket->setSslConfiguration(*FTls);
    socket->startServerEncryption();
}

void TServerWorker::enter(QTcpSocket* socket)
{
    const auto link = std::make_shared<TServerLink>(peerAddress(*socket));
    FLinks.insert(socket, link);
    FInOrder.append(socket);
    FEvents.joined(link);
    connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
    if (socket->bytesAvailable() > 0) {
        read(socket);
    }
}

void TServerWorker::read(QTcpSocket* socket)
{
    const PServerLink link = FLinks.value(socket);
    bool first = false;
    if (!link) {
        return;
    }
    if (!link->keep(socket->readAll(), first)) {
        drop(socket);
        FEvents.failed(link, tooMuchUnread());
        FEvents.left(link);
    } else if (first) {
        FEvents.hasRead(link);
    }
}

// An orderly end is no error.
void TServerWorker::onError(QTcpSocket* socket, QAbstractSocket::SocketError error)
{
    const PServerLink link = FLinks.value(socket);
    if (!link) {
        refuse(socket, socket->errorString());
    } else if (error != QAbstractSocket::RemoteHostClosedError) {
        const TSocketFailure failure = socketFailure(error, socket->errorString());
        drop(socket);
        FEvents.failed(link, failure);
        FEvents.left(link);
    }
}

void TServerWorker::onDisconnected(QTcpSocket* socket)
{
    const PServerLink link = FLinks.value(socket);
    drop(socket);
    if (link) {
        FEvents.left(link);
    }
}

void TServerWorker::drop(QTcpSocket* socket)
{
    FLinks.remove(socket);
    FInOrder.removeOne(socket);
    --FSockets;
    socket->disconnect(this);
    socket->abort();
    socket->deleteLater();
}

void TServerWorker::refuse(QTcpSocket* socket, const QString& reason)
{
    const QString address = peerAddress(*socket);
    drop(socket);
    FEvents.refused(address, reason);
}

void TServerWorker::post(const QByteArray& bytes, bool newestFirst)
{
    const QMutexLocker locked(&FLock);
    const bool first = FPosted.isEmpty();
    const qsizetype size = bytes.size() + kTextOverhead;
    if (FPostedSize + size > kMaxPosted) {
        FTooMuchPosted = true;
    } else {
        FPosted.append({bytes, newestFirst});
        FPostedSize += size;
    }
    if (first) {
        QMetaObject::invokeMethod(this, &TServerWorker::sendPosted, Qt::QueuedConnection);
    }
}

void TServerWorker::sendPosted()
{
    QList<TText> posted;
    bool tooMuch = false;
    {
        const QMutexLocker locked(&FLock);
        posted = std::exchange(FPosted, {});
        FPostedSize = 0;
        tooMuch = std::exchange(FTooMuchPosted, false);
    }
    while (tooMuch && !FInOrder.isEmpty()) {
        dropUnsent(FInOrder.first());
    }
    for (const TText& text : std::as_const(posted)) {
        sendToAll(text);
    }
}

void TServerWorker::sendToAll(const TText& text)
{
    const QList<QTcpSocket*> sockets = FInOrder;
    for (qsizetype i = 0; i < sockets.size(); ++i) {
        QTcpSocket* const socket = sockets[text.newestFirst ? sockets.size() - 1 - i : i];
        if (FLinks.contains(socket)) { // else it left while others were served
            send(socket, text.bytes);
        }
    }
}

// Many links share the bytes; none copies them.
void TServerWorker::send(QTcpSocket* socket, const QByteArray& bytes)
{
    socket->write(bytes);
    socket->flush();
    if (FLinks.contains(socket) && unsent(*socket) > kMaxSocketQueue) {
        dropUnsent(socket);
    }
}

void TServerWorker::dropUnsent(QTcpSocket* socket)
{
    const PServerLink link = FLinks.value(socket);
    drop(socket);
    FEvents.notSent(link, QStringLiteral("The client does not read"));
    FEvents.left(link);
}

} // namespace tnv5::platform
