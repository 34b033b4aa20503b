// What comes over the sockets of a controller says anything, of any family, as server and as client: the
// cut comes to its end and takes all from what was read, and the component survives its host. The first byte
// chooses the host's manners and the family, the second the pieces that a read comes in; in the stream, a
// byte 0xF0 to 0xFF ends a read and is a command.

#include "fuzz_host.h"
#include "tnv5/controller/monitor_stream.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/switch/switch_device.h"
#include "tnv5/testing/memory_network.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <array>

using namespace tnv5;
using controller::monitorTexts;
using controller::TMonitorText;
using platform::TComponent;

namespace {

// An input of some kilobytes must not take seconds.
constexpr int kMostVisitors = 6;
constexpr int kMostMisbehaved = 200;

const std::array kFamilies = {&controller::kClassicFamily, &controller::kD24Family,
                              &controller::kSwitchFamily};

// Each text takes an "&" off the buffer, and is a piece of what was read. To relays, what stands before a tag
// is nothing.
void checkCut(const QByteArray& bytes)
{
    const QString read = platform::fromWire(bytes);
    const auto& relays = controller::kSwitchFamily.stream;
    fuzz::require(monitorTexts(read, relays) == monitorTexts(QString(u'&' + read), relays));
    for (const auto* const family : kFamilies) {
        const auto texts = monitorTexts(read, family->stream);
        fuzz::require(texts == monitorTexts(read, family->stream));
        fuzz::require(qsizetype(texts.size()) <= read.count(u'&'));
        for (const TMonitorText& text : texts) {
            const bool isStatus = text.kind == TMonitorText::Status;
            fuzz::require(text.fields.size() == (isStatus ? family->stream.statusFields : 0));
            fuzz::require(read.contains(text.line));
            for (const QString& field : text.fields) {
                const bool isLast = &field == &text.fields.back();
                fuzz::require(read.contains(field) && !field.contains(isLast ? u'&' : u'!'));
            }
        }
    }
}

// One that is connected and says so; the host may end it.
class TLink final : public connector::TDeviceConnector
{
public:
    bool GetConnected() override { return true; }
    QString SendCommand(const QString&) override { return {}; }
};

class THost final : public fuzz::THostBase
{
public:
    static constexpr std::size_t kChoices = 2;

    explicit THost(const std::uint8_t* choices) : THostBase(choices[0], 5, 3), FPiece(choices[1])
    {
        FPort.KeepWrites = false;
        FPort.Open();
        switch (FManners >> 3 & 3) {
        case 0:
            makeClassic();
            break;
        case 1:
            makeD24();
            break;
        default:
            makeSwitch();
            break;
        }
        FDevice->SetOnLog([this](TComponent*, const QString&) { act(); });
        if ((FManners & 0x20) == 0) {
            FDevice->SetOnError([this](TComponent*, const QString&) { act(); });
        }
        FNetwork.server(0).OnSent = [this](int, const QByteArray&) { act(); };
        FNetwork.client(0).OnSent = [this](const QByteArray&) { act(); };
        FNetwork.client(0).Slow = (FManners & 0x40) != 0;
        become((FManners & 0x80) == 0 ? controller::PodClient : controller::podServer);
    }

    void arrive(std::uint8_t byte)
    {
        if (byte < 0xF0) {
            FRead += static_cast<char>(byte);
            return;
        }
        evening();
        if (FDevice) {
            platform::guarded([&] { command(byte & 0x0F); });
        }
    }

    /// The last read arrives: at both sockets, those that are connected hear it.
    void evening()
    {
        const QByteArray bytes = std::exchange(FRead, {});
        checkCut(bytes);
        const qsizetype size = FPiece == 0 ? bytes.size() : FPiece;
        for (qsizetype at = 0; at < bytes.size(); at += size) {
            const QByteArray piece = bytes.mid(at, size);
            onClient([&](auto& client) { client.feed(piece); });
            onServer([&](auto& server) { server.feed(FVisitors - 1, piece); });
        }
    }

private:
    void makeClassic()
    {
        auto device = std::make_unique<turnstile::TTurnStylerDevice>();
        device->SetComport(&FPort);
        device->SetOnCheckStatus([this](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                        const QVariant&, const QVariant&) { act(); });
        FDevice = std::move(device);
    }
    void makeD24()
    {
        auto device = std::make_unique<d24::TTurnStylerDeviceD24>();
        device->SetConnector(&FLink);
        device->SetOnCheckStatus([this](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                        const QVariant&, const QVariant&, const QVariant&,
                                        const QVariant&) { act(); });
        FDevice = std::move(device);
    }
    void makeSwitch()
    {
        auto device = std::make_unique<switching::TSwitchDevice>();
        device->SetConnector(&FLink);
        device->SetOnCheckStatus([this](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                        const QVariant&, const QVariant&, const QVariant&) { act(); });
        FDevice = std::move(device);
    }

    void become(controller::TConState role)
    {
        FDevice->SetRemoutDevice(role);
        platform::guarded([this] { FDevice->Connected(); });
        join();
    }
    void join()
    {
        if (FNetwork.serverCount() > 0 && FNetwork.server(0).Active() && FVisitors < kMostVisitors) {
            ++FVisitors;
            FNetwork.server(0).join();
        }
    }

    template <class Body>
    void onClient(Body&& body)
    {
        if (FNetwork.clientCount() > 0) {
            body(FNetwork.client(0));
        }
    }
    template <class Body>
    void onServer(Body&& body)
    {
        if (FNetwork.serverCount() > 0 && FVisitors > 0) {
            body(FNetwork.server(0));
        }
    }

    void command(int number)
    {
        switch (number) {
        case 0:
            return become(controller::podServer);
        case 1:
            return become(controller::PodClient);
        case 2:
            return FDevice->SetRemoutDevice(controller::podNone);
        case 3:
            return join();
        case 4:
            return onServer([this](auto& server) { server.leave(FVisitors - 1); });
        case 5:
            return onServer([](auto& server) { server.failSends(0, QStringLiteral("broken")); });
        case 6:
            return onServer([](auto& server) { server.raiseError(0, 104); });
        case 7:
            return onClient([](auto& client) { client.raiseError(111); });
        case 8:
            return onClient([](auto& client) { client.hangUp(); });
        case 9:
            return onClient([](auto& client) { client.accept(); });
        case 10:
            return FDevice->SetPort(FCalls % 3);
        default:
            FClock.advance(number * 20);
        }
    }

    void misbehave() override
    {
        if (++FMisbehaved > kMostMisbehaved) {
            return;
        }
        switch (FManners & 7) {
        case 1: // pumps messages
            onClient([](auto& client) { client.feed("LOG!a&ERROR!b&STATUS!a!b!c!d!e!f!g&"); });
            break;
        case 2:
            onServer([this](auto& server) { server.feed(FVisitors - 1, "$01AR77"); });
            break;
        case 3:
            raise();
        case 4:
            FDevice.reset(); // destroys the component
            break;
        case 5:
            if (FDevice) {
                FDevice->SetRemoutDevice(FCalls % 2 == 0 ? controller::podServer : controller::PodClient);
            }
            break;
        case 6:
            onServer([this](auto& server) { server.leave(FVisitors - 1); });
            break;
        default:
            FClock.advance(250);
            break;
        }
    }

    const int FPiece;
    testkit::TMemoryNetwork FNetwork;
    testkit::TMemoryPort FPort;
    TLink FLink;
    std::unique_ptr<controller::TControllerDevice> FDevice;
    QByteArray FRead;
    int FVisitors = 0;
    int FMisbehaved = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::play<THost>(data, size);
    return 0;
}
