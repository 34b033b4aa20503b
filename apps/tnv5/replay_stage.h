#pragma once

#include "connector/device_connector.h"
#include "testing/memory_port.h"
#include "tools/line_cutter.h"
#include "turnstile/turnstile_device.h"

#include <memory>

namespace tnv5::cli {

/// A component on a port in memory that prints everything it does.
class TReplayStage
{
public:
    /// @param allow what every card is answered with
    TReplayStage(tools::TProtocol protocol, bool allow);

    /// The equipment says something.
    void hear(const QByteArray& bytes);

private:
    void addConnector();
    void addTurnstile(bool allow);
    void tellStatus(const QString& status);

    testing::TMemoryPort FPort;
    std::unique_ptr<connector::TDeviceConnector> FConnector;
    std::unique_ptr<turnstile::TTurnStylerDevice> FTurnstile;
    QString FLastStatus;
};

} // namespace tnv5::cli
