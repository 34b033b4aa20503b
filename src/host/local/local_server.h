#pragma once

#include "tnv5/host/local/club_control.h"

#include <memory>

namespace tnv5::host {

/// Lets other programs of this machine talk to a running club over a local socket (docs/local-socket.md).
///
///     TLocalServer server(club, usualSocket("Riverside"));
///     server.tell({{"event", "line"}, {"level", "info"}, {"text", "..."}});
///     server.stateChanged();
///
/// Only the owner and the group of the socket's file get in. Nobody who connects can keep the host waiting:
/// who does not read is dropped, who asks faster than it reads waits, and all that is kept has a bound. Calls
/// to the club come from the event loop. The club must outlive the server, and may destroy it while it is
/// asked.
///
/// Time here is the machine's own, also where the current clock is another.
class TLocalServer
{
public:
    static constexpr int kMaxClients = 64;
    static constexpr qint64 kMaxWaiting = 8 << 20; ///< bytes that a program has not read; more: it is dropped
    static constexpr qint64 kPauseAt = 1 << 20;    ///< bytes unread at which its requests have to wait
    static constexpr int kStateMs = 250;           ///< between two states at least
    static constexpr int kLookMs = 1'000;          ///< how often a change that nobody told is looked for

    /// Begins to listen. A socket that a killed host has left is replaced, a folder that is missing made.
    /// @throws platform::Exception when another host listens there, or nobody can
    TLocalServer(IClubControl& club, const QString& path);
    /// Ends all connections and removes the socket.
    ~TLocalServer();
    TLocalServer(const TLocalServer&) = delete;
    TLocalServer& operator=(const TLocalServer&) = delete;

    QString path() const;
    /// Programs that are connected.
    int clients() const;
    /// Those of them that get the events.
    int watchers() const;

    /// Tells something to all who watch. A pass that has not ended yet gets its "picture" for those who asked
    /// for pictures.
    void tell(const QJsonObject& event);
    /// Something in the club's state may have changed: it is told soon, and only if it has.
    void stateChanged();

private:
    class TParts;
    std::unique_ptr<TParts> F;
};

} // namespace tnv5::host
