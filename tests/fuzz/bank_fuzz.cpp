// A bank terminal that says anything, a host that does anything at each of its events, time that passes as it
// likes. The first byte chooses the version, the second the host's manners; in the stream, a byte 0xF0 to
// 0xFF ends a read and is something that the host or the clock does. The same bytes are also cut as a value
// is.

#include "tnv5/bank/bank_frame.h"
#include "tnv5/bank/serial_bank_pos.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>

using namespace tnv5;
using platform::TComponent;

namespace {

const QByteArray kRequest = "\x02\x05\x03\x06";

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

class THost
{
public:
    THost(std::uint8_t version, std::uint8_t manners) : FManners(manners)
    {
        FPort.KeepWrites = false;
        FPort.Open();
        FPos->SetPosType(version % 5);
        FPos->SetCodeOk(QStringLiteral("00;"));
        FPos->SetCodeError(QStringLiteral("05;00;"));
        FPos->SetComport(&FPort);
        FPos->SetOnLog([this](TComponent*, const QString&) { act(); });
        FPos->SetOnError([this](TComponent*, const QString&) { act(); });
        FPos->SetOnRequestAmount([this](TComponent*, int& Amount, int& Discount, bool& Apply) {
            Amount = FCalls;
            Discount = FManners;
            Apply = FManners % 3 != 0;
            act();
        });
        FPos->SetOnRequestOperation([this](TComponent*, const QString& CardNo, const QString&, const QString&,
                                           const QString&, const QString&, const QString&, bool& Apply,
                                           const QString&, const QString&, const QString&) {
            require(CardNo.size() <= 1000);
            Apply = FManners % 2 != 0;
            act();
        });
    }

    void arrive(std::uint8_t byte)
    {
        if (byte < 0xF0) {
            FRead += static_cast<char>(byte);
            return;
        }
        flush();
        if (FPos) {
            platform::guarded([&] { command(byte & 0x0F); });
        }
    }

    void flush() { FPort.feed(std::exchange(FRead, {})); }

private:
    void command(int number)
    {
        switch (number) {
        case 0:
            break; // the read ends here
        case 1:
            FPos->SetConnection(false);
            break;
        case 2:
            FPos->SetConnection(true);
            break;
        case 3:
            FPos->SetPosType((FPos->PosType() + 1) % 5);
            break;
        case 4:
            FPos->SetTimeOut(FPos->TimeOut() + 1);
            break;
        case 5:
            FPos->SetComport(&FPort);
            break;
        case 6:
            FPort.feed(kRequest);
            break;
        default:
            FClock.advance((number - 6) * 700);
            break;
        }
    }

    void act()
    {
        if (++FCalls % 5 != 0 || FDepth > 1 || !FPos) {
            return;
        }
        ++FDepth;
        switch (FManners / 8 % 8) {
        case 1:
            if (++FMore < 100) { // each read makes events: without an end the terminal would talk for ever
                FPort.feed(kRequest + QByteArray("\x02\x04\x03\x07"));
            }
            break;
        case 2:
            FDepth = 0;
            throw std::runtime_error("host");
        case 3:
            if (FCalls > FManners) {
                FPos.reset(); // destroys the component
            }
            break;
        case 4:
            FPos->SetPosType(FPos->PosType() % 3 + 1);
            break;
        case 5:
            platform::guarded([this] { FPos->SetConnection(!FPos->IsConnected()); });
            break;
        case 6:
            FPos->SetComport(nullptr);
            break;
        case 7:
            FClock.advance(2'500);
            break;
        default:
            break;
        }
        --FDepth;
    }

    testkit::TManualClock FClock;
    testkit::TMemoryPort FPort;
    std::unique_ptr<bank::TBankPos> FPos = std::make_unique<bank::TBankPos>();
    QByteArray FRead;
    std::uint8_t FManners;
    int FCalls = 0;
    int FDepth = 0;
    int FMore = 0;
};

/// What the pure functions promise for any bytes.
void cut(const QByteArray& bytes)
{
    const qsizetype end = bank::frameEnd(bytes);
    require(end >= 0 && end <= bytes.size());
    require(bank::frameStart(bytes) <= bytes.size());
    const QString packet = QString::fromLatin1(bytes);
    bank::kindOf(packet);
    const QString tag = packet.left(3);
    for (const QString& each : {tag, QStringLiteral("01="), QStringLiteral("6"), QString()}) {
        const QString value = bank::valueOf(packet, each);
        require(value.size() <= 1000 && !value.contains(QChar(bank::kFs)) &&
                !value.contains(QChar(bank::kEtx)) && (value.isEmpty() || packet.contains(each + value)));
    }
    if (bank::isSound(packet)) {
        require(packet.count(QChar(bank::kEtx)) == (packet.back() == QChar(bank::kEtx) ? 2 : 1));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto previous = platform::setExceptionHandler([](const QString&, const std::exception_ptr&) {});
    cut(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    if (size > 1) {
        THost host(data[0], data[1]);
        for (std::size_t i = 2; i < size; ++i) {
            host.arrive(data[i]);
        }
        host.flush();
    }
    platform::setExceptionHandler(previous);
    return 0;
}
