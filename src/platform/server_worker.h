#pragma once

#include "tnv5/platform/server_link.h"

#include <QHash>
#include <QMutex>
#include <QSslConfiguration>
#include <QTcpServer>
#include <functional>
#include <memory>
#include <optional>

class QSslSocket;

namespace tnv5::platform {

/// The part of a server socket that does the work: it lives in the sockets' thread, so that a thousand
/// clients keep nobody waiting, and tells the main thread what happens.
class TServerWorker final : public QTcpServer
{
    Q_OBJECT

public:
    /// Clients at a time; more are not let in.
    static constexpr int kMaxLinks = 4'096;

    /// What it tells, called in the sockets' thread.
    struct TEvents
    {
        std::function<void(const PServerLink& link)> joined;
        std::function<void(const PServerLink& link)> hasRead; ///< there is something to `take`
        std::function<void(const PServerLink& link, const TSocketFailure& failure)> failed;
        std::function<void(const PServerLink& link, const QString& message)> notSent;
        std::function<void(const PServerLink& link)> left;
        std::function<void(const QString& address, const QString& reason)> refused;
    };

    /// @param tls what the access wants of a link
    TServerWorker(TEvents events, TServerAccess access, std::optional<QSslConfiguration> tls);
    ~TServerWorker() override;

    /// From any thread: sends a text to all that are in, by itself: clients of the controllers tell texts
    /// apart best that come one at a time.
    void post(const QByteArray& bytes, bool newestFirst);
    /// While it holds, nobody new is let in: the main thread has not heard of those that came before.
    void setHeld(bool held);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    struct TText
    {
        QByteArray bytes;
        bool newestFirst;
    };

    /// Bytes that may wait for the thread to take them, once for all clients.
    static constexpr qsizetype kMaxPosted = 8 * kMaxSocketQueue;
    /// What a waiting text takes beside its bytes.
    static constexpr qsizetype kTextOverhead = 64;

    void startTls(QSslSocket* socket);
    void enter(QTcpSocket* socket);
    void read(QTcpSocket* socket);
    void onError(QTcpSocket* socket, QAbstractSocket::SocketError error);
    void onDisconnected(QTcpSocket* socket);
    void sendPosted();
    void sendToAll(const TText& text);
    void send(QTcpSocket* socket, const QByteArray& bytes);
    void dropUnsent(QTcpSocket* socket);
    /// Ends a link; what is told of it comes after.
    void drop(QTcpSocket* socket);
    void refuse(QTcpSocket* socket, const QString& reason);

    const TEvents FEvents;
    const TServerAccess FAccess;
    const std::optional<QSslConfiguration> FTls;
    QHash<QTcpSocket*, PServerLink> FLinks; // that are in
    QList<QTcpSocket*> FInOrder;            // the same, the newest last
    int FSockets = 0;                       // these and those that are about to come in
    QMutex FLock;
    QList<TText> FPosted;
    qsizetype FPostedSize = 0;
    bool FTooMuchPosted = false;
    bool FHeld = false;
};

} // namespace tnv5::platform
