#pragma once

#include "tnv5/platform/sockets.h"

#include <QAbstractSocket>
#include <QPointer>

class QSslSocket;

namespace tnv5::platform {

/// A client socket of this machine, on the main thread.
class TMachineClient final : public TClientSocket
{
public:
    TMachineClient() = default;
    ~TMachineClient() override;

    bool Active() const override { return FActive; }
    void Send(const QByteArray& bytes) override;

protected:
    bool connecting() const override { return FSocket != nullptr && !FActive; }
    void doOpen() override;
    void doClose() override;

private:
    QString hostToConnect() const;
    void onConnected();
    void onReadyRead();
    bool readLast();
    void onError(QAbstractSocket::SocketError error);
    void onDisconnected();
    void dropSocket();

    QSslSocket* FSocket = nullptr;
    bool FActive = false;
    QObject FHere; // for what is queued: gone with this
};

} // namespace tnv5::platform
