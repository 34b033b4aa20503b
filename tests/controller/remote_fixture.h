#pragma once

#include "support/fixture.h"
#include "support/remote.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/switch/switch_device.h"
#include "tnv5/turnstile/turnstile_device.h"

namespace tnv5::tests {

using controller::PodClient;
using controller::podNone;
using controller::podServer;
using controller::TControllerDevice;

// One component of a family on a network in memory.
template <class Device>
struct TRemoteFixture : TFixture
{
    TRemoteFixture()
    {
        trace.Separator = u'!';
        trace.attach(*device);
    }

    void serve()
    {
        device->SetRemoutDevice(podServer);
        device->Connected();
        network.server(0).join(QStringLiteral("10.0.0.9"));
    }
    void follow()
    {
        device->SetRemoutDevice(PodClient);
        device->SetServer(QStringLiteral("10.0.0.1"));
        device->Connected();
        trace.take();
    }
    void sayToServer(const QString& text) { network.server(0).feed(0, platform::toWire(text)); }
    void sayToClient(const QString& text) { network.client(0).feed(platform::toWire(text)); }

    testkit::TMemoryNetwork network;
    std::unique_ptr<Device> device = std::make_unique<Device>();
};

using TClassic = TRemoteFixture<turnstile::TTurnStylerDevice>;
using TD24 = TRemoteFixture<d24::TTurnStylerDeviceD24>;
using TRelays = TRemoteFixture<switching::TSwitchDevice>;

/// What opens the line of each family: a port, or a connector that says that it is connected.
class TOpenLine
{
public:
    TOpenLine() { FPort.Open(); }
    void attach(turnstile::TTurnStylerDevice& device) { device.SetComport(&FPort); }
    void attach(d24::TTurnStylerDeviceD24& device) { device.SetConnector(&FLink); }
    void attach(switching::TSwitchDevice& device) { device.SetConnector(&FLink); }

private:
    struct TLink : connector::TDeviceConnector
    {
        bool GetConnected() override { return true; }
    };
    testkit::TMemoryPort FPort;
    TLink FLink;
};

} // namespace tnv5::tests
