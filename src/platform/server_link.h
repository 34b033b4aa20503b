#pragma once

#include "tnv5/platform/sockets.h"

#include <QMutex>
#include <atomic>

namespace tnv5::platform {

/// One client of a server socket of this machine, known to both threads: its bytes are read by the sockets'
/// thread and handed on by the main thread.
class TServerLink final : public TServerConnection
{
public:
    explicit TServerLink(const QString& address) : FAddress(address) {}

    QString RemoteAddress() const override { return FAddress; }
    bool Active() const override { return FActive; }
    void SetActive(bool Value) { FActive = Value; } ///< on the main thread

    /// In the sockets' thread: keeps bytes until they are taken.
    /// @param first set when nothing was waiting, so that someone must be told
    /// @return false when too much is waiting; nothing is kept then
    bool keep(const QByteArray& bytes, bool& first);
    /// On the main thread: all that waits.
    QByteArray take();

private:
    const QString FAddress;
    bool FActive = false;
    QMutex FLock;
    QByteArray FUnread;
};

using PServerLink = std::shared_ptr<TServerLink>;

} // namespace tnv5::platform
