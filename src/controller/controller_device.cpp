#include "tnv5/controller/controller_device.h"

#include "tnv5/common/messages.h"
#include "tnv5/common/text.h"
#include "tnv5/controller/controller_texts.h"
#include "tnv5/platform/code_page.h"

#include <algorithm>

namespace tnv5::controller {

using platform::PServerConnection;
using platform::TTimer;

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

void TControllerDevice::sendToMonitor(const QByteArray& text)
{
    if (role() == podServer) {
        if (ready()) {
            sendToClients(text);
        }
    } else if (role() == PodClient && FFamily.clientSendsTexts) {
        sendToServer(text);
    }
}

void TControllerDevice::sendToClients(const QByteArray& text)
{
    QList<PServerConnection> clients = DeviceServer->Connections();
    if (FFamily.newestFirst) {
        std::reverse(clients.begin(), clients.end());
    }
    for (const PServerConnection& client : clients) {
        if (client->Active()) { // what the host is told of one may close the others
            Attempt([&] { client->Send(text); },
                    [&](const QString& message) { reportError(kErrorSendToClient, message); });
        }
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
