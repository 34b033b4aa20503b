// Boards that say anything and a host that does anything: the connector survives, and the lines that its
// consumer hears do not depend on how the stream is cut. The first byte chooses the host's manners, the
// second one the size of the pieces; the rest is both the stream and, line by line, the commands.

#include "fuzz_host.h"
#include "tnv5/connector/board_command.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/platform/code_page.h"

using namespace tnv5;
using connector::TDeviceConnector;
using platform::TComponent;

namespace {

/// Routed lines in no order: it is each splitter's own order that does not depend on the cuts.
QStringList routedLines(const QByteArray& stream, qsizetype piece)
{
    QStringList lines;
    testkit::TMemoryPort port;
    TDeviceConnector bus;
    bus.SetConnectorType(connector::podComPort);
    bus.SetComport(&port);
    bus.SetOnGetData([&lines](TComponent*, const QString& line) { lines << line; });
    port.KeepWrites = false;
    port.Open();
    port.feedInPieces(stream, piece);
    lines.sort();
    return lines;
}

/// A host that misbehaves in every seventh call of its handlers.
class THost final : public fuzz::THostBase
{
public:
    explicit THost(std::uint8_t manners) : THostBase(manners, 7, 3)
    {
        FPort.KeepWrites = false;
        FBus->SetConnectorType((FManners & 8) == 0 ? connector::podComPort : connector::podNet);
        FBus->SetComport(&FPort);
        FBus->SetOnLog([this](TComponent*, const QString&) { act(); });
        FBus->SetOnError([this](TComponent*, const QString&) { act(); });
        FBus->SetOnGetData([this](TComponent*, const QString&) { act(); });
    }

    void serve(const QByteArray& line)
    {
        platform::guarded([&] {
            if (FBus) {
                FPort.SetConnected(FCalls % 11 != 0);
                FPort.feed('$' + line + "\r#" + line + '\r');
            }
        });
        platform::guarded([&] { command(platform::fromWire(line)); });
    }

private:
    void command(const QString& text)
    {
        if (!FBus) {
            return;
        }
        const bool display = connector::isDisplayCommand(connector::parseCommand(text));
        const bool known = connector::boardLine(connector::parseCommand(text)).has_value();
        const QString result = FBus->SendCommand(text);
        fuzz::require(!FBus || result.size() == (known ? 2 : 0));
        fuzz::require(!(known && display));
    }

    void misbehave() override
    {
        switch (FManners & 7) {
        case 1:
            FPort.feed("$000APING\r#000BHWGX=G20x4/GR=NYN/\r");
            break;
        case 2:
            raise();
        case 3:
            FBus.reset();
            break;
        case 4:
            FPort.Close();
            break;
        case 5:
            FBus->SendCommand(QStringLiteral("SH0.0.0.0:000A|a|b|c|d|LS|"));
            break;
        case 6:
            FBus->SetComport(nullptr);
            FBus->SetComport(&FPort);
            break;
        case 7:
            FPort.raiseErrorInside(platform::TComExceptionKind::Unknown, QStringLiteral("x"), 5, QString());
            break;
        default:
            break;
        }
    }

    testkit::TMemoryPort FPort;
    std::unique_ptr<TDeviceConnector> FBus = std::make_unique<TDeviceConnector>();
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    const auto previous = platform::setExceptionHandler([](const QString&, const std::exception_ptr&) {});
    const QByteArray stream(reinterpret_cast<const char*>(data) + 2, static_cast<qsizetype>(size) - 2);
    fuzz::require(routedLines(stream, stream.size() + 1) == routedLines(stream, 1 + data[1] % 16));
    THost host(data[0]);
    for (const QByteArray& line : stream.split('\r')) {
        host.serve(line);
    }
    platform::setExceptionHandler(previous);
    return 0;
}
