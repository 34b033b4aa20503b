#pragma once

#include "tnv5/connector/device_connector.h"

namespace tnv5::connector::model {

/// The component with its virtual functions in the test's hand.
class TWatchedConnector final : public TDeviceConnector
{
public:
    std::function<bool()> ConnectedHook;
    std::function<void(const QString& ip, const QString& line)> DirectHook;
    std::function<QString(const QString& command)> SendHook;
    bool BaseConnected() { return TDeviceConnector::GetConnected(); }
    void BaseDirect(const QString& ip, const QString& line) { TDeviceConnector::SendDirectCommand(ip, line); }

    bool GetConnected() override
    {
        const auto hook = ConnectedHook; // destroyed with the connector while it runs
        return hook ? hook() : BaseConnected();
    }
    void SendDirectCommand(const QString& ip, const QString& line) override
    {
        const auto hook = DirectHook;
        hook ? hook(ip, line) : BaseDirect(ip, line);
    }
    QString SendCommand(const QString& command) override
    {
        const auto hook = SendHook;
        return hook ? hook(command) : TDeviceConnector::SendCommand(command);
    }
};

} // namespace tnv5::connector::model
