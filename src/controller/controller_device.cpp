#include "tnv5/controller/controller_device.h"

#include "tnv5/common/messages.h"
#include "tnv5/common/text.h"
#include "tnv5/controller/controller_texts.h"
#include "tnv5/controller/monitor_stream.h"
#include "tnv5/platform/code_page.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tnv5::controller {

using platform::TTimer;

namespace {

constexpr double kRefusedEveryMs = 1000;

} // namespace

TControllerDevice::TControllerDevice(QObject* AOwner, const TRemoteFamily& family, int sweepIntervalMs)
    : TComponent(AOwner), FFamily(family)
{
    if (Designing()) {
        return;
    }
    StackTime = std::make_unique<TTimer>();
    StackTime->SetInterval(sweepIntervalMs);
    StackTime->OnTimer = [this](TTimer*) { p_hw_CallStackArray(); };
    makeSockets();
}

TControllerDevice::~TControllerDevice() = default;

void TControllerDevice::makeSockets()
{
    auto& network = platform::TNetwork::current();
    DeviceServer = network.makeServer();
    DeviceClient = network.makeClient();
    listenTo(*DeviceServer);
    listenTo(*DeviceClient);
}

void TControllerDevice::listenTo(platform::TServerSocket& server)
{
    using platform::TServerConnection;
    server.OnClientRead = [this](TServerConnection&, const QByteArray& bytes) { ServerRead(bytes); };
    server.OnClientError = [this](TServerConnection&, platform::TSocketFailure& failure) {
        ClientSocketError(failure);
    };
    server.OnSendFailure = [this](TServerConnection&, const QString& message) {
        Operation([&] { reportError(kErrorSendToClient, message); });
    };
    server.OnRefused = [this](const QString& address, const QString& reason) {
        Operation([&] { reportRefused(address, reason); });
    };
    if (FFamily.logsVisitors) {
        server.OnClientConnect = [this](TServerConnection& visitor) {
            logVisitor(kClientConnected, visitor);
        };
        server.OnClientDisconnect = [this](TServerConnection& visitor) {
            logVisitor(kClientDisconnected, visitor);
        };
    }
}

void TControllerDevice::listenTo(platform::TClientSocket& client)
{
    client.OnRead = [this](const QByteArray& bytes) { ClientRead(bytes); };
    client.OnError = [this](platform::TSocketFailure& failure) { ClientSocketError(failure); };
}

// All that has come is one line, also when the network has joined two; intended.
void TControllerDevice::ServerRead(const QByteArray& bytes)
{
    p_hw_ProtocolIn(platform::fromWire(bytes));
}

void TControllerDevice::ClientRead(const QByteArray& bytes)
{
    Operation([&] {
        for (const TMonitorText& text : monitorTexts(platform::fromWire(bytes), FFamily.stream)) {
            if (text.kind == TMonitorText::Status) {
                showServerStatus(text.fields);
            } else {
                Fire(FLogEvent, text.line); // the server's errors, too; intended
            }
        }
    });
}

// Without an error handler it stays the socket's own error.
void TControllerDevice::ClientSocketError(platform::TSocketFailure& failure)
{
    if (!FFamily.reportsLinkErrors) {
        failure.code = 0;
    } else if (FErrorEvent) {
        const int code = std::exchange(failure.code, 0);
        Operation([&] { reportError(kErrorLink, kLinkErrorCode + QString::number(code)); });
    }
}

void TControllerDevice::logVisitor(const QString& text, const platform::TServerConnection& visitor)
{
    Operation([&] { Fire(FLogEvent, text + visitor.RemoteAddress()); });
}

// A stranger who knocks all the time fills no log: one line in a second, with the number of the others.
void TControllerDevice::reportRefused(const QString& address, const QString& reason)
{
    const platform::TDateTime now = platform::Now();
    if (std::abs(now - FRefusedTold) * static_cast<double>(platform::kMsPerDay) < kRefusedEveryMs) {
        ++FRefusedUntold;
        return;
    }
    FRefusedTold = now;
    QString text = kRefused + address + QStringLiteral(": ") + reason;
    if (const int untold = std::exchange(FRefusedUntold, 0)) {
        text += QStringLiteral(" (%1 more before)").arg(untold);
    }
    reportError(kErrorRefused, text);
}

void TControllerDevice::SetServerAccess(const platform::TServerAccess& Value)
{
    if (DeviceServer) {
        DeviceServer->SetAccess(Value);
        DeviceServer->Close();
    }
}

void TControllerDevice::SetClientTls(const std::optional<platform::TTlsFiles>& Value)
{
    if (DeviceClient) {
        DeviceClient->SetTls(Value);
        DeviceClient->Close();
    }
}

int TControllerDevice::ListeningPort() const
{
    return DeviceServer ? DeviceServer->ListeningPort() : 0;
}

int TControllerDevice::Watchers() const
{
    return DeviceServer ? static_cast<int>(DeviceServer->Connections().size()) : 0;
}

void TControllerDevice::SetServer(const QString& Value)
{
    FServer = Value;
    if (DeviceClient && FFamily.settersClose) {
        DeviceClient->Close();
    }
}

void TControllerDevice::SetPort(int Value)
{
    Fport = Value;
    if (DeviceClient && FFamily.settersClose) {
        DeviceServer->Close();
        DeviceClient->Close();
    }
}

void TControllerDevice::SetRemoutDevice(TConState Value)
{
    FRemoutDevice = Value;
    if (!DeviceClient || !FFamily.settersClose) {
        return;
    }
    if (role() != podServer) {
        DeviceServer->Close();
    }
    if (role() != PodClient) {
        DeviceClient->Close();
    }
}

TConState TControllerDevice::role() const
{
    return FRemoutDevice == podServer || FRemoutDevice == PodClient ? FRemoutDevice : podNone;
}

bool TControllerDevice::Connected()
{
    return Operation([this] { return ready(); }, false);
}

// The address and the port are handed over when a socket opens: one that is open stays as it is.
bool TControllerDevice::ready()
{
    const auto open = [this](auto& socket, QStringView code) {
        Attempt([&] { socket.Open(); }, [&](const QString& message) { reportError(code, message); });
    };
    switch (role()) {
    case podServer:
        if (DeviceServer && !DeviceServer->Active()) {
            DeviceServer->SetPort(Fport);
            open(*DeviceServer, kErrorServerSocket);
        }
        return lineReady() && DeviceServer && DeviceServer->Active();
    case PodClient:
        if (DeviceClient && !DeviceClient->Active()) {
            DeviceClient->SetServer(FServer, Fport, FFamily.resolvesNames);
            open(*DeviceClient, kErrorClientSocket);
        }
        return DeviceClient && DeviceClient->Active();
    default:
        return lineReady();
    }
}

// The mode is asked for again: a handler may have changed it meanwhile.
void TControllerDevice::sendToMonitor(const QByteArray& text)
{
    if (role() == podServer && ready()) {
        CallOut([&] { DeviceServer->SendToAll(text, FFamily.newestFirst); });
    }
    if (role() == PodClient && FFamily.clientSendsTexts) {
        sendToServer(text);
    }
}

bool TControllerDevice::sendToServer(const QByteArray& text)
{
    if (!ready()) {
        return false;
    }
    Attempt([&] { DeviceClient->Send(text); },
            [&](const QString& message) { reportError(kErrorClientSocket, message); });
    return true;
}

void TControllerDevice::echo(const QString& text)
{
    if (echoes()) {
        sendToMonitor(platform::toWire(text));
    }
}

void TControllerDevice::echoStatus(const QVariant* fields, std::size_t count)
{
    QStringList texts;
    std::for_each(fields, fields + count, [&](const QVariant& field) { texts << field.toString(); });
    echo(common::StatusMessage(texts));
}

void TControllerDevice::log(const QString& prefix, const QString& text)
{
    if (FLogEvent) {
        Fire(FLogEvent, common::Joined(prefix, text));
    }
    if (echoes()) {
        echo(common::LogMessage(prefix + text));
    }
}

void TControllerDevice::reportError(QStringView code, const QString& text)
{
    if (FErrorEvent) {
        Fire(FErrorEvent, code.toString() + text);
    }
}

void TControllerDevice::setSweepInterval(int ms)
{
    if (!StackTime) {
        return;
    }
    const bool enabled = StackTime->Enabled();
    StackTime->SetEnabled(false);
    StackTime->SetInterval(ms);
    StackTime->SetEnabled(enabled);
}

void TControllerDevice::startSweeps()
{
    if (StackTime && !StackTime->Enabled()) {
        StackTime->SetEnabled(true);
        p_hw_CallStackArray();
    }
}

void TControllerDevice::stopSweeps()
{
    if (StackTime) {
        StackTime->SetEnabled(false);
    }
}

} // namespace tnv5::controller
