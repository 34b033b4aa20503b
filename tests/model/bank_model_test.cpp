#include "model/bank_model.h"
#include "model/bank_words.h"
#include "model/kit/play.h"
#include "model/kit/real_world.h"
#include "tnv5/bank/serial_bank_pos.h"

#include <gtest/gtest.h>
#include <limits>

// Random scenarios on a bank terminal's component and on a model of it: both must tell the same, step by
// step.

namespace tnv5::bank::model {

namespace {

TNV5_STEPS(Create, Destroy, Handler, Lang, SetType, TimeOut, Codes, SetComport, SetUp, Connect, Cut, Helpers,
           Spoil)

enum EEvent { evLog, evError, evOperation, evAmount, kEvents };

template <class World>
class TBankStage final : public TStage
{
    using TBank = std::conditional_t<World::isModel, TModelBank, TBankPos>;

public:
    explicit TBankStage(quint64 seed) : TStage(seed, kStepNames), ground(*this, startMs(30, 30'000))
    {
        FDesigning = FTemper.chance(3);
        FRestless = FTemper.chance(15);
        FSettings = FTemper.pick({0, 5, 5, 30});
        FAccepted = FTemper.pick({50, 90});
        FWild = {FTemper.pick({0, 0, 2, 10, 60}), FTemper.pick({0, 0, 0, 0, 2, 40})};
    }

    std::vector<TStep> begin(TDice& d) override
    {
        std::vector<TStep> steps{{NewPort, {}, 0}, {NewPort, {}, 1}, {Create}};
        const std::vector<TStep> more{
            {Handler, {}, evLog, 1},          {Handler, {}, evError, 1}, {Handler, {}, evOperation, 1},
            {Handler, {}, evAmount, 1},       {Lang, {}, d.below(3)},    {SetType, {}, d.between(1, 3)},
            {Codes, {"00;10;", "05;51;00;"}}, {SetComport, {}, 0},       {Connect, {}, 1}};
        for (const TStep& step : more) { // now and then one is missing
            if (FDesigning || !d.chance(6)) {
                steps.push_back(step);
            }
        }
        return steps;
    }

    std::vector<TStep> more(TDice& d) override
    {
        for (int port = 0; port < 2; ++port) {
            if (ground.port(port) == nullptr) {
                return {{NewPort, {}, port}, {SetComport, {}, port}, {Connect, {}, 1}};
            }
        }
        if (FPos && !FPos->IsConnected() && d.chance(30)) {
            return {{SetComport, {}, 0}, {Connect, {}, 1}};
        }
        return d.chance(2) ? slowAmount(d) : std::vector<TStep>{any(d, false)};
    }

    TStep any(TDice& d, bool inside) override
    {
        if (!FPos && d.chance(50)) {
            return {Create};
        }
        if (d.chance(FSettings)) {
            return setting(d);
        }
        if (FRestless && d.chance(15)) {
            return {SetType, {}, d.between(0, 3)};
        }
        switch (d.weighted({600, 150, 60, 40, 60, 5, 60})) {
        case 0:
            return feed(d);
        case 1:
            return time(d, inside);
        case 2:
            return {Connect, {}, d.pick({0, 1, 1})};
        case 3:
            return portStep(d);
        case 4:
            return helper(d);
        case 5:
            return {Destroy};
        default:
            return setting(d);
        }
    }

protected:
    void perform(const TStep& step) override
    {
        if (step.kind == Create && !FPos && depth() == 0) {
            FPos = ground.world.template make<TBank>(FDesigning);
        } else if (step.kind == Destroy && FPos) {
            World::destroy(FPos);
        } else if (step.kind == Spoil) {
            spoil(ground.port(step.a));
        } else if (FPos) {
            call(step);
        }
    }

    void look() override
    {
        for (int i = 0; i < 2; ++i) {
            if (const auto* const port = ground.port(i)) {
                note("settings " + shown({port->BaudRate(), port->DataBits(), int(port->Parity()),
                                          int(port->StopBits()), port->ReadGap()}));
            }
        }
        if (FPos) {
            note("type, time-out, language, port, connected " +
                 shown({FPos->PosType(), FPos->TimeOut(), FPos->IDLang(), ground.indexOf(FPos->ComPort()),
                        FPos->IsConnected()}));
            note("codes " + FPos->CodeOk() + u' ' + FPos->CodeError());
        }
    }

private:
    // ---- vocabulary

    TStep feed(TDice& d) const
    {
        QByteArray bytes = sampleFrame(d);
        if (d.chance(15)) {
            bytes += sampleFrame(d);
        }
        if (d.chance(FRestless ? 40 : 3)) {
            bytes.truncate(d.below(int(bytes.size()) + 1)); // the rest may never come
        }
        return fed(d, d.chance(95) ? 0 : 1, bytes);
    }

    static TStep time(TDice& d, bool inside)
    {
        if (d.chance(10)) {
            return {Jump, {}, 0, d.pick({0, 1, -1, 30}) * kMsPerDay + d.pick({-1, 1}) * d.below(7'200'000)};
        }
        const TStep silence{Advance, {}, d.pick({900'000, 1'799'999, 1'800'000, 1'801'000})};
        const TStep shortly{Advance, {}, d.pick({1, 400, 999, 1'000, 1'001, 2'000})};
        const TStep days{Advance, {}, d.pick({7'200'000, 7'200'000, 90'000'000})};
        return d.chance(3) && !inside ? days : d.pick({silence, shortly, shortly});
    }

    /// The host takes its time until the amount is sent, and then nothing comes.
    static std::vector<TStep> slowAmount(TDice& d)
    {
        TStep ask{Feed, {}, 0};
        ask.bytes = "\x02\x05\x03\x06";
        ask.first = {{Advance, {}, d.pick({0, 2'000, 900'000})}};
        return {{TimeOut, {}, d.below(2)}, ask, {Advance, {}, 1'800'000}, {Advance, {}, 1'000}};
    }

    static TStep portStep(TDice& d)
    {
        const int port = d.chance(80) ? 0 : 1;
        const TStep open{d.chance(50) ? OpenPort : ClosePort, {}, port};
        const TStep fail{Fail, d.chance(40) ? QStringList{"trouble"} : QStringList(), port, d.below(3)};
        return d.pick({open, open, fail, fail, TStep{Spoil, {}, port}, TStep{RenewPort, {}, port}});
    }

    static TStep helper(TDice& d)
    {
        if (d.chance(40)) {
            return {Helpers, {}, d.between(-1, 8), d.between(-1, 14)};
        }
        const QString packet = QString::fromLatin1(sampleFrame(d));
        return {Cut, {packet, d.pick<QString>({"01=", "06=", "41=", "=", "", packet.left(2)})}};
    }

    static TStep setting(TDice& d)
    {
        const TStep type{SetType, {}, d.chance(85) ? d.between(1, 3) : d.pick({0, 4, -1, 2'147'483'647})};
        const TStep timeOut{TimeOut, {}, d.pick({-1, 0, 0, 1, 2, 47, 48, std::numeric_limits<int>::max()})};
        const TStep lang{Lang, {}, d.pick({0, 1, 2, 2, 3, -1})};
        const TStep codes{Codes, {d.text({"51;9;", "00;10;", ""}), d.text({"00;9;", "05;51;00;", ""})}};
        const TStep handler{Handler, {}, d.below(kEvents), d.chance(70) ? d.between(1, 3) : 0};
        const TStep port{SetComport, {}, d.pick({-1, 0, 0, 0, 1})};
        return d.pick({type, type, timeOut, timeOut, lang, codes, handler, handler, port, TStep{SetUp}});
    }

    // ---- one telling for both sides

    void call(const TStep& step)
    {
        const int a = int(step.a);
        switch (step.kind) {
        case Handler:
            return assign(a, int(step.b));
        case Lang:
            return FPos->SetIDLang(a);
        case SetType:
            return FPos->SetPosType(a);
        case TimeOut:
            return FPos->SetTimeOut(a);
        case Codes:
            FPos->SetCodeOk(said(0, step.text[0]));
            return FPos->SetCodeError(said(0, step.text[1]));
        case SetComport:
            return FPos->SetComport(ground.port(a));
        case SetUp:
            return FPos->SetUpComport();
        case Connect:
            return note(QStringLiteral("connection %1").arg(FPos->SetConnection(a != 0)));
        case Cut:
            return note("cut " + shown(FPos->CutValue(said(0, step.text[0]), said(1, step.text[1]))));
        default: {
            QStringList names{"to be replaced"};
            FPos->GetPosList(names);
            note(names.join(u'|') + FPos->GetMessage(a) + TBank::MakeStr(u'x', int(step.b)));
        }
        }
    }

    template <class Port>
    static void spoil(Port* port)
    {
        if (port != nullptr) {
            port->SetBaudRate(19'200);
            port->SetDataBits(7);
            port->SetParity(static_cast<decltype(port->Parity())>(1));
            port->SetStopBits(static_cast<decltype(port->StopBits())>(2));
            port->SetReadGap(77);
        }
    }

    void assign(int event, int number)
    {
        TBank& pos = *FPos;
        switch (event) {
        case evLog:
            return TStage::assign(pos, &TBank::SetOnLog, number, teller("log", number, FPos));
        case evError:
            return TStage::assign(pos, &TBank::SetOnError, number,
                                  [this, number](auto* sender, const QString& text) {
                                      disturb();
                                      teller("error", number, FPos)(sender, text);
                                  });
        case evOperation:
            return TStage::assign(
                pos, &TBank::SetOnRequestOperation, number,
                [this, number](auto* sender, const QString& CardNo, const QString& CardType,
                               const QString& CardHolder, const QString& Operation, const QString& Answer,
                               const QString& BankType, bool& Apply, const QString& Status,
                               const QString& DiscountType, const QString& Discount) {
                    const bool before = Apply;
                    judge(Apply);
                    disturb();
                    teller("operation", number, FPos)(sender, Status, CardNo, CardType, CardHolder, Operation,
                                                      Answer, BankType, DiscountType, Discount, before);
                });
        default:
            return TStage::assign(pos, &TBank::SetOnRequestAmount, number,
                                  [this, number](auto* sender, int& Amount, int& Discount, bool& Apply) {
                                      const auto tell = teller("amount", number, FPos);
                                      const int amount = std::exchange(Amount, anyAmount());
                                      const int discount = std::exchange(Discount, anyDiscount());
                                      const bool before = Apply;
                                      judge(Apply);
                                      tell(sender, amount, discount, before);
                                  });
        }
    }

    void disturb()
    {
        if (FWild.nested > 0 && depth() < 3 && FDice.chance(3)) {
            nest({Destroy}, false);
            if (FDice.chance(30)) {
                raise();
            }
        }
    }

    void judge(bool& apply)
    {
        if (!FDice.chance(20)) {
            apply = FDice.chance(FAccepted);
        }
    }
    int anyAmount()
    {
        return FDice.pick({0, 5, 1250, -7, std::numeric_limits<int>::max(), FDice.below(1'000'000)});
    }
    int anyDiscount() { return FDice.pick({0, 0, -3, FDice.below(10'000)}); }

    TGround<World> ground;
    std::shared_ptr<TBank> FPos;
    bool FDesigning = false;
    bool FRestless = false; // the version is changed between the pieces of a packet
    int FSettings = 0;      // percent of the steps that set up something
    int FAccepted = 0;      // percent of what the host is asked
};

} // namespace

TEST(BankModel, PlaysLikeTheComponent)
{
    // no handler runs inside a search, and positions are all that the splitter is given
    compare<TBankStage>(300,
                        {"splitter: a read in a search", "splitter: gone in a search",
                         "splitter: attached in a search", "splitter: a search raises",
                         "splitter: start string", "splitter: stop string*", "splitter: empty packet",
                         "splitter: stop position behind a start string", "splitter: start inside a packet",
                         "splitter: again in one read", "port: a splitter leaves during a read",
                         "port: an error that nobody takes", "code page lacks a character", "remote: *"});
}

} // namespace tnv5::bank::model
