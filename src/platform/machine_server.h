#pragma once

#include "tnv5/platform/server_link.h"

namespace tnv5::platform {

class TServerWorker;

/// A server socket of this machine: what the main thread sees of it. The sockets themselves live in a thread
/// that all server sockets share.
class TMachineServer final : public TServerSocket
{
public:
    TMachineServer() = default;
    ~TMachineServer() override;

    bool Active() const override { return FWorker != nullptr; }
    int ListeningPort() const override { return FListeningPort; }
    QList<PServerConnection> Connections() const override { return FLinks; }
    void SendToAll(const QByteArray& bytes, bool newestFirst) override;

protected:
    void doOpen() override;
    void doClose() override;

private:
    struct TThread;
    struct TTelling;

    static std::shared_ptr<TThread> thread();
    /// In the sockets' thread: has something run on the main thread, unless this is closed by then.
    template <class Body>
    void tell(Body body);
    void joined(const PServerLink& link);
    void left(const PServerLink& link);

    std::shared_ptr<TThread> FThread; // while it is open
    std::shared_ptr<TTelling> FTelling;
    TServerWorker* FWorker = nullptr;
    int FListeningPort = 0;
    QList<PServerConnection> FLinks;
};

} // namespace tnv5::platform
