// A bank terminal that says anything, a host that does anything at each of its events, time that passes as it
// likes. The first byte chooses the version, the second the host's manners; in the stream, a byte 0xF0 to
// 0xFF ends a read and is something that the host or the clock does. The same bytes are also cut as a value
// is.

#include "fuzz_host.h"
#include "tnv5/bank/bank_frame.h"
#include "tnv5/bank/serial_bank_pos.h"

using namespace tnv5;
using platform::TComponent;

namespace {

const QByteArray kRequest = "\x02\x05\x03\x06";

class THost final : public fuzz::TPortHost<bank::TBankPos>
{
public:
    static constexpr std::size_t kChoices = 2;

    explicit THost(const std::uint8_t* choices) : TPortHost(choices[1])
    {
        FComponent->SetPosType(choices[0] % 5);
        FComponent->SetCodeOk(QStringLiteral("00;"));
        FComponent->SetCodeError(QStringLiteral("05;00;"));
        FComponent->SetComport(&FPort);
        FComponent->SetOnLog([this](TComponent*, const QString&) { act(); });
        FComponent->SetOnError([this](TComponent*, const QString&) { act(); });
        FComponent->SetOnRequestAmount([this](TComponent*, int& Amount, int& Discount, bool& Apply) {
            Amount = FCalls;
            Discount = FManners;
            Apply = FManners % 3 != 0;
            act();
        });
        FComponent->SetOnRequestOperation([this](TComponent*, const QString& CardNo, const QString&,
                                                 const QString&, const QString&, const QString&,
                                                 const QString&, bool& Apply, const QString&, const QString&,
                                                 const QString&) {
            fuzz::require(CardNo.size() <= 1000);
            Apply = FManners % 2 != 0;
            act();
        });
    }

private:
    void command(int number) override
    {
        switch (number) {
        case 0:
            break; // the read ends here
        case 1:
            FComponent->SetConnection(false);
            break;
        case 2:
            FComponent->SetConnection(true);
            break;
        case 3:
            FComponent->SetPosType((FComponent->PosType() + 1) % 5);
            break;
        case 4:
            FComponent->SetTimeOut(FComponent->TimeOut() + 1);
            break;
        case 5:
            FComponent->SetComport(&FPort);
            break;
        case 6:
            FPort.feed(kRequest);
            break;
        default:
            FClock.advance((number - 6) * 700);
            break;
        }
    }

    void misbehave() override
    {
        if (!FComponent) {
            return;
        }
        switch (FManners / 8 % 8) {
        case 1:
            chatter(kRequest + QByteArray("\x02\x04\x03\x07"));
            break;
        case 2:
            raise();
        case 3:
            if (FCalls > FManners) {
                FComponent.reset(); // destroys the component
            }
            break;
        case 4:
            FComponent->SetPosType(FComponent->PosType() % 3 + 1);
            break;
        case 5:
            platform::guarded([this] { FComponent->SetConnection(!FComponent->IsConnected()); });
            break;
        case 6:
            FComponent->SetComport(nullptr);
            break;
        case 7:
            FClock.advance(2'500);
            break;
        default:
            break;
        }
    }
};

/// What the pure functions promise for any bytes.
void cut(const QByteArray& bytes)
{
    const qsizetype end = bank::frameEnd(bytes);
    fuzz::require(end >= 0 && end <= bytes.size());
    fuzz::require(bank::frameStart(bytes) <= bytes.size());
    const QString packet = QString::fromLatin1(bytes);
    bank::kindOf(packet);
    const QString tag = packet.left(3);
    for (const QString& each : {tag, QStringLiteral("01="), QStringLiteral("6"), QString()}) {
        const QString value = bank::valueOf(packet, each);
        fuzz::require(value.size() <= 1000 && !value.contains(QChar(bank::kFs)) &&
                      !value.contains(QChar(bank::kEtx)) &&
                      (value.isEmpty() || packet.contains(each + value)));
    }
    if (bank::isSound(packet)) {
        fuzz::require(packet.count(QChar(bank::kEtx)) == (packet.back() == QChar(bank::kEtx) ? 2 : 1));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    cut(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    fuzz::play<THost>(data, size);
    return 0;
}
