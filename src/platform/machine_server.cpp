#include "tnv5/platform/machine_server.h"

#include "tnv5/platform/server_worker.h"
#include "tnv5/platform/socket_failure.h"
#include "tnv5/platform/tls.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QThread>
#include <atomic>
#include <utility>

namespace tnv5::platform {

namespace {

// Events on their way to the main thread, beyond which nobody new is let in.
constexpr int kMaxUntold = 4'096;

} // namespace

/// The thread of all server sockets; it lives as long as one of them is open.
struct TMachineServer::TThread
{
    TThread()
    {
        Anchor.moveToThread(&FThread);
        FThread.setObjectName(QStringLiteral("tnv5 sockets"));
        FThread.start();
    }
    ~TThread()
    {
        FThread.quit();
        FThread.wait();
    }
    TThread(const TThread&) = delete;
    TThread& operator=(const TThread&) = delete;

    /// Runs something there and waits for it.
    template <class Body>
    void run(Body body)
    {
        QMetaObject::invokeMethod(&Anchor, body, Qt::BlockingQueuedConnection);
    }

    QObject Anchor;

private:
    QThread FThread;
};

/// What is on its way to the main thread.
struct TMachineServer::TTelling
{
    bool closed = false; // on the main thread
    std::atomic<int> untold = 0;
};

TMachineServer::~TMachineServer()
{
    Close();
}

std::shared_ptr<TMachineServer::TThread> TMachineServer::thread()
{
    static std::weak_ptr<TThread> running;
    auto thread = running.lock();
    if (!thread) {
        thread = std::make_shared<TThread>();
        running = thread;
    }
    return thread;
}

template <class Body>
void TMachineServer::tell(Body body)
{
    if (++FTelling->untold == kMaxUntold) {
        FWorker->setHeld(true);
    }
    const auto hear = [this, telling = FTelling, body] {
        if (telling->closed) {
            return;
        }
        if (telling->untold-- == kMaxUntold) {
            QMetaObject::invokeMethod(
                FWorker, [worker = FWorker, telling] { worker->setHeld(telling->untold >= kMaxUntold); });
        }
        body();
    };
    QMetaObject::invokeMethod(QCoreApplication::instance(), hear, Qt::QueuedConnection);
}

void TMachineServer::doOpen()
{
    if (Port() < 0 || Port() > kMaxPort) {
        throw ESocketError(QStringLiteral("%1 is not a port").arg(Port()));
    }
    std::optional<QSslConfiguration> tls;
    if (Access().tls) {
        tls = tlsConfiguration(*Access().tls);
    }
    FThread = thread();
    FTelling = std::make_shared<TTelling>();
    const TServerWorker::TEvents events = {
        .joined = [this](const PServerLink& link) { tell([this, link] { joined(link); }); },
        .hasRead = [this](const PServerLink& link) { tell([this, link] { fireRead(*link, link->take()); }); },
        .failed =
            [this](const PServerLink& link, const TSocketFailure& failure) {
                tell([this, link, failure] { fireError(*link, failure); });
            },
        .notSent =
            [this](const PServerLink& link, const QString& message) {
                tell([this, link, message] { fireSendFailure(*link, message); });
            },
        .left = [this](const PServerLink& link) { tell([this, link] { left(link); }); },
        .refused =
            [this](const QString& address, const QString& reason) {
                tell([this, address, reason] { fireRefused(address, reason); });
            },
    };
    QString failure;
    FThread->run([&] {
        FWorker = new TServerWorker(events, Access(), tls);
        if (!FWorker->listen(QHostAddress(Access().listenAddress), static_cast<quint16>(Port()))) {
            failure = FWorker->errorString();
        }
        FListeningPort = FWorker->serverPort();
    });
    if (!failure.isEmpty()) {
        doClose();
        throw ESocketError(failure);
    }
}

void TMachineServer::doClose()
{
    FTelling->closed = true; // what is still on its way never arrives
    FThread->run([this] { delete std::exchange(FWorker, nullptr); });
    FTelling.reset();
    FThread.reset();
    FListeningPort = 0;
    for (const PServerConnection& link : std::exchange(FLinks, {})) {
        static_cast<TServerLink&>(*link).SetActive(false);
    }
}

void TMachineServer::SendToAll(const QByteArray& bytes, bool newestFirst)
{
    if (FWorker != nullptr && !FLinks.isEmpty()) {
        FWorker->post(bytes, newestFirst);
    }
}

void TMachineServer::joined(const PServerLink& link)
{
    admit(*link); // the worker has let it in; here it is told what it may do
    link->SetActive(true);
    FLinks.append(link);
    fire(OnClientConnect, *link);
}

void TMachineServer::left(const PServerLink& link)
{
    link->SetActive(false);
    FLinks.removeOne(link);
    fire(OnClientDisconnect, *link);
}

} // namespace tnv5::platform
