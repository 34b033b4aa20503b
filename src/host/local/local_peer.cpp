#include "tnv5/host/local/local_peer.h"

#include "tnv5/host/local/local_path.h"
#include "tnv5/host/local/local_request.h"
#include "tnv5/host/local/local_server.h"
#include "tnv5/host/local/local_texts.h"

#include <QPointer>
#include <QTimer>
#include <utility>

namespace tnv5::host {

namespace {

constexpr int kLinesATurn = 32;      // then others have theirs
constexpr int kLingerMs = 2'000;     // for the last line
constexpr qint64 kReadBytes = 65536; // at once

} // namespace

TLocalPeer::TLocalPeer(QLocalSocket* socket, TOnLine onLine, QObject* parent)
    : QObject(parent),
      FSocket(socket),
      FOnLine(std::move(onLine)),
      FUser(peerName(socket->socketDescriptor()))
{
    FSocket->setParent(this);
    FSocket->setReadBufferSize(kReadBytes);
    connect(FSocket, &QLocalSocket::readyRead, this, [this] { read(); });
    connect(FSocket, &QLocalSocket::bytesWritten, this, [this] { readSoon(); });
    connect(FSocket, &QLocalSocket::disconnected, this, [this] {
        FLeft = true;
        readSoon(); // a club that is telling something finds out here, and gets no calls meanwhile
    });
}

void TLocalPeer::read()
{
    if (FReading || FEnding) {
        return;
    }
    const QPointer<TLocalPeer> self(this);
    FReading = true;
    const auto paused = [this] { return !FLeft && FSocket->bytesToWrite() >= TLocalServer::kPauseAt; };
    for (int lines = 0; self && !FEnding && !paused(); ++lines) {
        if (lines == kLinesATurn) {
            readSoon();
            break;
        }
        // All that has come first: an answer to somebody who has left ends the connection with what it holds.
        while (!FLines.ready() && FSocket->bytesAvailable() > 0 && FLines.add(FSocket->read(kReadBytes))) {
        }
        if (const auto line = FLines.take()) {
            FOnLine(*this, *line);
        } else if (FLines.overlong()) {
            sendLast(toLine(refusal(local_texts::kLineTooLong)));
        } else {
            if (FLeft) {
                drop();
            }
            break;
        }
    }
    if (self) {
        FReading = false;
    }
}

void TLocalPeer::readSoon()
{
    if (!std::exchange(FSoon, true)) {
        QTimer::singleShot(0, this, [this] {
            FSoon = false;
            read();
        });
    }
}

void TLocalPeer::send(const QByteArray& line)
{
    if (FEnding || FSocket->state() != QLocalSocket::ConnectedState) {
        return;
    }
    if (FSocket->bytesToWrite() + line.size() > TLocalServer::kMaxWaiting) {
        drop();
        return;
    }
    FSocket->write(line);
    FSocket->flush();
}

void TLocalPeer::sendLast(const QByteArray& line)
{
    if (FEnding) {
        return;
    }
    send(line);
    if (FEnding) {
        return;
    }
    FEnding = true;
    Watching = false;
    disconnect(FSocket, nullptr, this, nullptr);
    connect(FSocket, &QLocalSocket::disconnected, this, &QObject::deleteLater);
    QTimer::singleShot(kLingerMs, this, &QObject::deleteLater); // who does not read does not keep it
    FSocket->disconnectFromServer();
    if (FSocket->state() == QLocalSocket::UnconnectedState) {
        deleteLater();
    }
}

void TLocalPeer::drop()
{
    if (!std::exchange(FEnding, true)) {
        Watching = false;
        disconnect(FSocket, nullptr, this, nullptr);
        FSocket->abort();
        deleteLater();
    }
}

} // namespace tnv5::host
