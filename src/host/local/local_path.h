#pragma once

#include <QStringList>
#include <sys/types.h>

namespace tnv5::host {

/// Where a host listens when nobody says otherwise: "$XDG_RUNTIME_DIR/tnv5/CLUB.socket", and for root and for
/// services "/run/tnv5/CLUB.socket". What cannot be in a file name becomes "_".
QString usualSocket(const QString& club);

/// Sockets where hosts usually listen, in the order of their names; whether anybody answers is not looked at.
QStringList usualSockets();

/// Those of some sockets at which somebody answers, in their order; a host that was killed leaves one at
/// which nobody does.
QStringList answeringSockets(const QStringList& sockets);

/// The folder of a socket, made when it is not there.
/// @throws platform::Exception
void makeSocketFolder(const QString& socket);

/// The system's name of a user; "uid N" for one without a name.
QString userName(uid_t user);

/// The user at the other end of a connected local socket, "" when the system does not tell.
QString peerName(qintptr descriptor);

/// That a host runs at a socket, for as long as it lives: the system takes it back from a process that dies.
class TSocketLock
{
public:
    /// @throws platform::Exception when another host has it, or it cannot be had
    explicit TSocketLock(const QString& socket);
    ~TSocketLock();
    TSocketLock(const TSocketLock&) = delete;
    TSocketLock& operator=(const TSocketLock&) = delete;

private:
    QByteArray FFile;
    int FDescriptor = -1;
};

} // namespace tnv5::host
