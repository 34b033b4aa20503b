#include "tnv5/platform/machine_client.h"

#include "tnv5/platform/socket_failure.h"
#include "tnv5/platform/tls.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QSslSocket>
#include <utility>

namespace tnv5::platform {

TMachineClient::~TMachineClient()
{
    dropSocket();
}

QString TMachineClient::hostToConnect() const
{
    if (Host().isEmpty()) {
        throw ESocketError(QStringLiteral("No server is set"));
    }
    if (!ResolvesNames() && QHostAddress(Host()).isNull()) {
        throw ESocketError(u'\'' + Host() + QStringLiteral("' is not an address"));
    }
    if (Port() <= 0 || Port() > kMaxPort) {
        throw ESocketError(QStringLiteral("%1 is not a port").arg(Port()));
    }
    return Host();
}

void TMachineClient::doOpen()
{
    const QString host = hostToConnect();
    std::optional<QSslConfiguration> configuration;
    if (Tls()) {
        configuration = tlsConfiguration(*Tls());
    }
    FSocket = new QSslSocket(QCoreApplication::instance()); // who frees it when no loop runs any more
    // queued: the library does not report anew while a report is being handled, so that a text which arrives
    // while a handler pumps messages would wait for the one after it
    QObject::connect(
        FSocket, &QSslSocket::readyRead, &FHere,
        [this, socket = FSocket] {
            if (socket == FSocket) {
                onReadyRead();
            }
        },
        Qt::QueuedConnection);
    QObject::connect(FSocket, &QSslSocket::errorOccurred, FSocket, [this](auto error) { onError(error); });
    QObject::connect(FSocket, &QSslSocket::disconnected, FSocket, [this] { onDisconnected(); });
    const auto port = static_cast<quint16>(Port());
    if (configuration) {
        FSocket->setSslConfiguration(*configuration);
        QObject::connect(FSocket, &QSslSocket::encrypted, FSocket, [this] { onConnected(); });
        FSocket->connectToHostEncrypted(host, port);
    } else {
        QObject::connect(FSocket, &QSslSocket::connected, FSocket, [this] { onConnected(); });
        FSocket->connectToHost(host, port);
    }
}

void TMachineClient::doClose()
{
    dropSocket();
}

// The socket may be in the middle of a signal of its own.
void TMachineClient::dropSocket()
{
    FActive = false;
    if (QSslSocket* const socket = std::exchange(FSocket, nullptr)) {
        socket->disconnect();
        if (socket->state() == QAbstractSocket::ConnectedState) {
            socket->flush(); // what was sent shall arrive
            socket->disconnectFromHost();
        }
        socket->deleteLater();
    }
}

void TMachineClient::Send(const QByteArray& bytes)
{
    if (!FActive) {
        throw ESocketError(QStringLiteral("Not connected"));
    }
    if (FSocket->bytesToWrite() + FSocket->encryptedBytesToWrite() + bytes.size() > kMaxSocketQueue) {
        FSocket->abort(); // tells that it is disconnected
        throw ESocketError(QStringLiteral("The server does not read"));
    }
    const QPointer<QSslSocket> socket(FSocket);
    socket->write(bytes);
    // each line leaves at once and by itself: the server takes what it reads as one line
    socket->flush(); // may find the link broken, and tell
    if (!socket || socket->state() != QAbstractSocket::ConnectedState) {
        throw ESocketError(QStringLiteral("The connection has ended"));
    }
}

void TMachineClient::onConnected()
{
    watchLink(*FSocket);
    FActive = true;
    fire(OnConnect);
}

void TMachineClient::onReadyRead()
{
    if (FSocket->bytesAvailable() > kMaxSocketQueue) {
        dropSocket();
        fireError(tooMuchUnread());
    } else if (const QByteArray bytes = FActive ? FSocket->readAll() : QByteArray(); !bytes.isEmpty()) {
        fireRead(bytes);
    }
}

// What has come is handed on before the end of the connection is told.
// @return false when a handler has closed the connection or destroyed this
bool TMachineClient::readLast()
{
    const QPointer<QObject> here(&FHere);
    const QSslSocket* const socket = FSocket;
    onReadyRead();
    return here && FSocket == socket;
}

// An orderly end is none.
void TMachineClient::onError(QAbstractSocket::SocketError error)
{
    if (FActive && error == QAbstractSocket::RemoteHostClosedError) {
        return;
    }
    const TSocketFailure failure = socketFailure(error, FSocket->errorString());
    if (readLast()) {
        dropSocket();
        fireError(failure);
    }
}

void TMachineClient::onDisconnected()
{
    const bool wasActive = FActive;
    if (!readLast()) {
        return;
    }
    dropSocket();
    if (wasActive) {
        fire(OnDisconnect);
    }
}

} // namespace tnv5::platform
