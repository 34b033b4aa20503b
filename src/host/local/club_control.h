#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace tnv5::host {

/// What a running club offers to those who talk to it over its local socket. All calls are made in the thread
/// of the event loop that the club lives in.
class IClubControl
{
public:
    virtual ~IClubControl() = default;

    /// All that can be shown of the club at this moment (docs/local-socket.md describes the members).
    virtual QJsonObject state() = 0;

    /// Opens a gate by hand; `gate` is its address as in the club's file ("01A", "101T"). Returns "" when
    /// the command was given to the controller, or one plain sentence why not. It is journalled with who did
    /// it and why.
    virtual QString open(const QString& gate, const QString& who, const QString& reason) = 0;

    /// Reads the club's file again; what it does not change goes on. Returns "" or what is wrong with the
    /// file, in which case nothing has changed.
    virtual QString reload() = 0;

    /// The picture of a card's member as PNG; empty when there is none.
    virtual QByteArray picture(const QString& card) = 0;

    // What counters do. Each returns "" or one plain sentence why not; a host without counters does none of
    // it.

    /// The holder of a card takes what is on a scale, as soon as it has come to rest.
    virtual QString sellGoods(const QString& scale, const QString& card, const QString& product);
    /// The holder of a card gets minutes on a lamp.
    virtual QString sellTime(const QString& lamp, const QString& card, int minutes);
    /// A bank terminal's next request gets an amount.
    virtual QString sellAmount(const QString& terminal, qint64 cents);
    /// Withdraws what a scale or a terminal still waits for.
    virtual QString cancelSale(const QString& device);

    /// Up to `limit` passes that the journal has after row `after`, oldest first, as the events "pass" carry
    /// them.
    virtual QJsonArray journal(qint64 after, int limit) = 0;
};

inline QString IClubControl::sellGoods(const QString&, const QString&, const QString&)
{
    return QStringLiteral("there is no scale here");
}

inline QString IClubControl::sellTime(const QString&, const QString&, int)
{
    return QStringLiteral("there is no lamp here");
}

inline QString IClubControl::sellAmount(const QString&, qint64)
{
    return QStringLiteral("there is no terminal here");
}

inline QString IClubControl::cancelSale(const QString&)
{
    return QStringLiteral("there is nothing to withdraw here");
}

} // namespace tnv5::host
