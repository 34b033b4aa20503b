#include "model/kit/controller_model.h"

#include "model/kit/texts.h"

namespace tnv5::modelkit {

TModelController::TModelController(TModelWorld& world, bool designing, const TManners& manners)
    : TModel(world, designing), FManners(manners), FServer(world), FClient(world)
{
    if (designing) {
        hit<"remote: no sockets in the designer">();
        return;
    }
    world.setSockets(&FServer, &FClient);
    FServer.OnClientRead = [this](const QByteArray& bytes) {
        either<"remote: server: a client says something", "remote: server: an empty read">(!bytes.isEmpty());
        p_hw_ProtocolIn(textOf(bytes));
    };
    FServer.OnClientConnect = [this](const QString& address) {
        if (FManners.logsVisitors) {
            operation([&] { tell("%Client Connected% " + address); });
        }
    };
    FServer.OnClientDisconnect = [this](const QString& address) {
        hit<"remote: server: a client leaves">();
        if (FManners.logsVisitors) {
            operation([&] { tell("%Client Disconnected% " + address); });
        }
    };
    FServer.OnClientError = [this](int& code) { socketError(code); };
    FClient.OnError = [this](int& code) { socketError(code); };
    FClient.OnRead = [this](const QByteArray& bytes) { operation([&] { clientRead(textOf(bytes)); }); };
}

void TModelController::die()
{
    if (!FDesigning) {
        FServer.Close();
        FClient.Close();
        FWorld.setSockets(nullptr, nullptr);
    }
    TModel::die();
}

void TModelController::socketError(int& code)
{
    if (!FManners.tellsErrors) {
        code = 0;
        return;
    }
    if (either<"remote: socket error told", "remote: socket error left">(hearsErrors())) {
        const QString number = QString::number(code);
        code = 0;
        operation([&] { error("[12] Client Error Code " + number); });
    }
}

bool TModelController::ready()
{
    const int port = FProperties.at("Port").toInt();
    if (mode() == Server) {
        if (!FDesigning && !FServer.Active()) {
            FServer.SetPort(port);
            attempt([&] { FServer.Open(); },
                    [&](const QString& failure) {
                        hit<"remote: no listening">();
                        error("[06] " + failure);
                    });
        }
        const bool open = lineOpen();
        return either<"remote: server ready", "remote: server not ready">(open && FServer.Active());
    }
    if (mode() != Client) {
        return lineOpen();
    }
    if (!FDesigning && !FClient.Active()) {
        FClient.SetServer(FProperties.at("Server").toString(), port, FManners.names);
        attempt([&] { FClient.Open(); },
                [&](const QString& failure) {
                    hit<"remote: no dialling">();
                    error("[01] " + failure);
                });
    }
    return either<"remote: linked", "remote: not linked">(FClient.Active());
}

void TModelController::toMonitor(const QByteArray& text)
{
    if (mode() == Server && ready()) {
        sendToAll(text);
    }
    if (mode() == Client && FManners.clientSends) {
        toServer(text);
    }
}

void TModelController::sendToAll(const QByteArray& text)
{
    std::vector<int> clients = FServer.Connections();
    if (FManners.lastFirst) {
        std::reverse(clients.begin(), clients.end());
    }
    for (const int client : clients) {
        if (!FServer.isActive(client)) {
            hit<"remote: a client gone meanwhile">();
            continue;
        }
        attempt([&] { FServer.send(client, text); },
                [&](const QString& failure) {
                    either<"remote: the only send failed", "remote: one of some sends failed">(
                        clients.size() == 1);
                    error("[07] " + failure);
                });
    }
    if (clients.empty()) {
        hit<"remote: nobody watches">();
    }
}

bool TModelController::toServer(const QByteArray& text)
{
    if (!ready()) {
        return false;
    }
    attempt([&] { FClient.Send(text); },
            [&](const QString& failure) {
                hit<"remote: forwarding failed">();
                error("[01] " + failure);
            });
    return true;
}

void TModelController::changed(const std::string& property)
{
    if (!FManners.settersClose) {
        return;
    }
    const bool port = property == "Port";
    const bool role = property == "RemoutDevice";
    if (port || (role && mode() != Server)) {
        FServer.Close();
    }
    if (port || property == "Server" || (role && mode() != Client)) {
        FClient.Close();
    }
}

} // namespace tnv5::modelkit
