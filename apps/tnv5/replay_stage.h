#pragma once

#include "tnv5/connector/device_connector.h"
#include "tnv5/testing/memory_port.h"
#include "tnv5/tools/line_cutter.h"
#include "tnv5/turnstile/turnstile_device.h"

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

    testkit::TMemoryPort FPort;
    std::unique_ptr<connector::TDeviceConnector> FConnector;
    std::unique_ptr<turnstile::TTurnStylerDevice> FTurnstile;
    QString FLastStatus;
};

} // namespace tnv5::cli
