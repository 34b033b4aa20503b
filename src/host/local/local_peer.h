#pragma once

#include "tnv5/host/local/local_line.h"

#include <QLocalSocket>
#include <functional>

namespace tnv5::host {

/// One program that is connected to a host: its requests, line by line, and what waits to be read by it.
/// It deletes itself, later, when the connection ends.
class TLocalPeer final : public QObject
{
public:
    /// Called with each request line. The peer may be gone afterwards.
    using TOnLine = std::function<void(TLocalPeer& peer, const QByteArray& line)>;

    /// @param socket connected; belongs to the peer from now on
    TLocalPeer(QLocalSocket* socket, TOnLine onLine, QObject* parent);

    /// Sends a line, or drops who does not read.
    void send(const QByteArray& line);
    /// Sends a last line; nothing is read any more.
    void sendLast(const QByteArray& line);

    const QString& user() const { return FUser; }
    bool connected() const { return !FEnding; }

    bool Watching = false;
    bool Pictures = false; ///< wants them with the passes

private:
    void read();
    void readSoon();
    void drop();

    QLocalSocket* FSocket;
    TOnLine FOnLine;
    QString FUser;
    TLineBuffer FLines;
    bool FReading = false;
    bool FSoon = false;
    bool FLeft = false;   // what it said before is still done
    bool FEnding = false; // nothing more is done
};

} // namespace tnv5::host
