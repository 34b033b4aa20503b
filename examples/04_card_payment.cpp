// A card payment through a terminal's library, and what to make of its outcome. The library here is one of
// the host's own, made in the process; with the maker's installed, only `Init` knows the difference.

#include <QCoreApplication>
#include <cstdio>
#include <tnv5/bank/bank_pos.h>

using namespace tnv5;
using namespace tnv5::platform::automation;

namespace {

/// A terminal that takes three rounds for a payment and has no more than 20.00 to give.
class TOurTerminal final : public TAutomationObject
{
public:
    TValue call(std::u16string_view name, TArguments& arguments, std::chrono::milliseconds) override
    {
        if (name == u"PosPurchase") {
            FAmount = arguments.at(0).value.toInt();
            FRounds = 3;
        }
        if (name == u"GetLastResult") {
            return FRounds-- > 0 ? 2 : FAmount <= 2'000 ? 0 : 1;
        }
        if (name == u"GetLastErrorCode") {
            return 51;
        }
        if (name == u"GetLastErrorText") {
            return u"not enough money";
        }
        return name == u"getRRN" ? TValue(u"100001") : TValue();
    }
    TValue get(std::u16string_view) override { return {}; }
    void put(std::u16string_view, const TValue&) override {}
    void setEventHandler(TEventHandler) override {}

private:
    int FAmount = 0;
    int FRounds = 0;
};

bool pay(bank::TBankPOS& pos, int cents)
{
    pos.SetRRN({}); // what stands there afterwards is this payment's
    std::printf("%d.%02d: ", cents / 100, cents % 100);
    if (pos.Purchase(cents, 0, 1)) {
        std::printf("paid, reference %s\n", qUtf8Printable(pos.RRN()));
        return true;
    }
    if (pos.GetLastError() > 0) { // the library has said why not; with others look for a time-out, too
        std::printf("not paid: %s\n", qUtf8Printable(pos.LastErrorMsg()));
    } else { // nobody has said how it ended: docs/payment-outcome.md
        std::printf("unknown: %s; look at the terminal, do not repeat it\n",
                    qUtf8Printable(pos.LastErrorMsg()));
    }
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const TRegisteredClass ours(u"ECRCommX.ECRLibSgn", [] { return std::make_shared<TOurTerminal>(); });
    bank::TBankPOS pos;
    pos.SetPosType(0);
    pos.SetOnStatus([](auto*, int, const QString&) { std::printf("(please wait) "); });
    if (!pos.Init() || !pos.Connect()) {
        return 1;
    }
    const bool first = pay(pos, 1'250);
    const bool second = pay(pos, 99'900);
    return first && !second ? 0 : 1;
}
