// A terminal library that answers anything to a bank terminal's component, and a host that does anything at
// each of its events. The first byte chooses the back-end, the second the host's manners; the rest are
// operations and what the library answers to their calls, until it is used up: then every call fails. The
// same bytes are also cut as the fields of a response are.

#include "fuzz_host.h"
#include "tnv5/bank/bank_pos.h"
#include "tnv5/testing/memory_library.h"

#include <QByteArray>

using namespace tnv5;
using platform::automation::EOleError;
using platform::automation::TArgument;
using platform::automation::TArguments;
using platform::automation::TRegisteredClass;
using platform::automation::TValue;

namespace {

constexpr const char16_t* kProgIds[] = {u"ECRCommX.ECRLibSgn", u"ECRCommX.BPOS1Lib", u"TAxECRClass98",
                                        u"BluePad50v2.Borica", u"CardPay.PosApi"};
constexpr const char16_t* kResponses[] = {u"RESP_MESSAGE", u"RESP_IDENTIFIER", u"RESP_CONFIRM",
                                          u"RESP_DECLINE", u"RESP_TIMEOUT",    u"RESP_BREAK"};
constexpr const char16_t* kOthers[] = {
    u"POS_SOFT_VER",           u"POS_AMOUNT",           u"POS_CURRENCY",         u"POS_MERCHANT_ID",
    u"POS_TRANS_STATUS",       u"POS_DEBIT_AMOUNT",     u"POS_DEBIT_NUMBER",     u"POS_CREDIT_AMOUNT",
    u"POS_CREDIT_NUMBER",      u"POS_CANCELLED_NUMBER", u"POS_CANCELLED_AMOUNT", u"POS_REPORT",
    u"POS_SERIAL_NUMBER",      u"POS_LICENSE",          u"POS_HOST_RECORD",      u"ACTION_PAYMENT",
    u"ACTION_XREPORT_SUMMARY", u"ACTION_CLOSE_DAY",     u"ACTION_POS_INFO",      u"ACTION_HOST_ECHO_TEST",
    u"ACTION_HOST_INFO"};

class THost final : public fuzz::THostBase
{
public:
    static constexpr std::size_t kChoices = 2;

    explicit THost(const std::uint8_t* choices) : THostBase(choices[1], 5, 2)
    {
        for (const char16_t* const progId : kProgIds) {
            FClasses.push_back(std::make_unique<TRegisteredClass>(progId, [this] { return FLibrary; }));
        }
        int number = 0;
        for (const char16_t* const name : kResponses) {
            FLibrary->Constants[name] = ++number;
        }
        for (const char16_t* const name : kOthers) {
            FLibrary->Constants[name] = ++number;
        }
        FLibrary->OnCall = [this](const std::u16string&, TArguments& arguments) { return answer(arguments); };
        FComponent->SetPosType(choices[0] % 6);
        FComponent->SetOnLog([this](platform::TComponent*, const QString&) { act(); });
        FComponent->SetOnError([this](platform::TComponent*, int, const QString&) { act(); });
        FComponent->SetOnStatus([this](platform::TComponent*, int, const QString&) { act(); });
    }
    ~THost() override
    {
        FBytes.clear();
        platform::guarded([this] { FComponent.reset(); });
    }
    Q_DISABLE_COPY_MOVE(THost)

    void arrive(std::uint8_t byte) { FBytes += static_cast<char>(byte); }

    void evening()
    {
        platform::guarded([this] { FComponent->Init(); });
        while (FComponent && !FBytes.isEmpty()) {
            const int operation = take();
            platform::guarded([&] { operate(operation); });
        }
    }

private:
    int take()
    {
        if (FBytes.isEmpty()) {
            throw EOleError(u"used up");
        }
        const int byte = static_cast<std::uint8_t>(FBytes.front());
        FBytes.remove(0, 1);
        return byte;
    }

    std::u16string text()
    {
        const QByteArray bytes = FBytes.left(take() % 64);
        FBytes.remove(0, bytes.size());
        return QString::fromLatin1(bytes).toStdU16String();
    }

    TValue value()
    {
        switch (take() % 9) {
        case 0:
        case 1:
            return 0;
        case 2:
            return take() % 8;
        case 3:
            return text();
        case 4:
            return take() % 2 == 0;
        case 5:
            return -take();
        case 6:
            throw EOleError(text());
        case 7:
            return 2;
        default:
            return TValue();
        }
    }

    TValue answer(TArguments& arguments)
    {
        for (TArgument& argument : arguments) {
            if (argument.byReference) {
                argument.value = text();
            }
        }
        if (FManners == 3 && FComponent) {
            FLibrary->raiseEvent(u"OnMsgReceived", {value()});
            FLibrary->raiseEvent(u"OnTrxComplete", {value()});
        }
        return value();
    }

    void operate(int number)
    {
        bank::TBankPOS& pos = *FComponent;
        switch (number % 12) {
        case 0:
            pos.Init();
            break;
        case 1:
            pos.Connect();
            break;
        case 2:
            pos.PurchaseReturn(number * 1000, QStringLiteral("r"), QStringLiteral("a"), 1);
            break;
        case 3:
            pos.CashAdvance(1, 2, 3);
            break;
        case 4:
            pos.XReport(number);
            break;
        case 5:
            pos.ZReport(number);
            break;
        case 6:
            pos.Test();
            break;
        case 7:
            pos.DeviceInfo();
            break;
        case 8:
            pos._WaitResponse();
            break;
        case 9:
            pos.VarifonePrintResponse();
            break;
        default:
            pos.Purchase(number, 0, number % 3);
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
            FComponent->Purchase(1, 2, 3);
            break;
        case 2:
            raise();
        case 3:
            if (FCalls > FManners) {
                FComponent.reset();
            }
            break;
        case 4:
            FComponent->SetPosType((FComponent->PosType() + 1) % 5);
            break;
        case 5:
            FComponent->Init();
            break;
        case 6:
            FComponent->SetOnLog({});
            break;
        default:
            break;
        }
    }

    QByteArray FBytes;
    std::shared_ptr<testkit::TMemoryLibrary> FLibrary = std::make_shared<testkit::TMemoryLibrary>();
    std::vector<std::unique_ptr<TRegisteredClass>> FClasses;
    std::unique_ptr<bank::TBankPOS> FComponent = std::make_unique<bank::TBankPOS>();
};

/// What the fields of any text promise.
void cut(const QString& response)
{
    for (int number = -1; number < 40; ++number) {
        const QString field = bank::TBankPOS::parseblue(response, number);
        fuzz::require(!field.isEmpty() && !field.contains(u';'));
        fuzz::require(field == u"-1" || (number > 0 && response.contains(field)));
        fuzz::require(!bank::TBankPOS::parseblueex(response, number).contains(u' '));
    }
    bank::TBankPOS::errorblue(response);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    cut(QString::fromLatin1(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    fuzz::play<THost>(data, size);
    return 0;
}
