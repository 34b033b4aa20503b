#include "model/kit/play.h"
#include "model/kit/real_world.h"
#include "model/scales_model.h"
#include "model/scales_words.h"
#include "tnv5/common/bit_text.h"
#include "tnv5/scales/scales_device.h"

#include <gtest/gtest.h>
#include <limits>

// Random scenarios on a scale's component and on a model of it: both must tell the same, step by step.

namespace tnv5::scales::model {

namespace {

TNV5_STEPS(Create, Destroy, Handler, Lang, SetType, SetComport, SetUp, Connect, Interval, LastWeight, Weigh,
           Write, Reset, Message, List, Helpers, Name, Settings)

enum EEvent { evLog, evError, evWeight, kEvents };
constexpr int kMostWaits = 80;

template <class World>
class TScalesStage final : public TStage
{
    using TScales = std::conditional_t<World::isModel, TModelScales, TScalesDevice>;

public:
    explicit TScalesStage(quint64 seed) : TStage(seed, kStepNames), ground(*this, startMs(30, 30'000))
    {
        FDesigning = FTemper.chance(3);
        FSilent = FTemper.chance(10);
        FRestless = FTemper.chance(15);
        FSettings = FTemper.pick({0, 5, 5, 30});
        FAnswers = FTemper.pick({0, 30, 80});
        FWild = {FTemper.pick({0, 0, 2, 10, 60}), FTemper.pick({0, 0, 0, 0, 2, 40})};
    }

    std::vector<TStep> begin(TDice& d) override
    {
        std::vector<TStep> steps{{NewPort, {}, 0}, {NewPort, {}, 1}, {Create}};
        const std::vector<TStep> more{{Handler, {}, evLog, 1},
                                      {Handler, {}, evError, 1},
                                      {Handler, {}, evWeight, 1},
                                      {Lang, {}, d.below(3)},
                                      {SetType, {}, anyType(d)},
                                      {SetComport, {}, 0},
                                      {SetUp},
                                      {Connect, {}, 1}};
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
        return d.chance(2) ? slowReset(d) : std::vector<TStep>{any(d, false)};
    }

    TStep any(TDice& d, bool) override
    {
        if (!FScales && d.chance(50)) {
            return {Create};
        }
        if (FSilent && d.chance(70)) {
            return unanswered(d);
        }
        if (FRestless && d.chance(15)) {
            return {SetType, {}, d.pick({5, 7, 8, anyType(d)})};
        }
        if (d.chance(FSettings)) {
            return setting(d);
        }
        switch (d.weighted({380, 220, 60, 160, 30, 30, 30, 20, 15, 5, 30})) {
        case 0:
            return feed(d);
        case 1:
            return {Weigh, {}, 1};
        case 2:
            return {Weigh, {}, 0};
        case 3:
            return time(d);
        case 4:
            return {Reset};
        case 5:
            return {Connect, {}, d.pick({0, 1, 1})};
        case 6:
            return portStep(d);
        case 7:
            return helper(d);
        case 8:
            return {Write, {sampleText(d)}};
        case 9:
            return {Destroy};
        default:
            return setting(d);
        }
    }

protected:
    void perform(const TStep& step) override
    {
        auto* const port = step.kind >= Name ? ground.port(step.a) : nullptr;
        if (step.kind == Create && !FScales && depth() == 0) {
            FScales = ground.world.template make<TScales>(FDesigning);
        } else if (step.kind == Destroy && FScales) {
            World::destroy(FScales);
        } else if (step.kind == Name && port != nullptr) {
            port->SetPort(step.text[0]);
        } else if (step.kind == Settings && port != nullptr) {
            port->SetBaudRate(int(step.b));
            port->SetDataBits(int(step.c % 10));
            port->SetParity(static_cast<decltype(port->Parity())>(step.c / 10 % 10));
            port->SetStopBits(static_cast<decltype(port->StopBits())>(step.c / 100 % 10));
            port->SetReadGap(int(step.c / 1000));
        } else if (FScales && step.kind < Name) {
            call(step);
        }
    }

    void look() override
    {
        FWaits = 0;
        for (int i = 0; i < 2; ++i) {
            if (const auto* const port = ground.port(i)) {
                note("settings " + shown({port->BaudRate(), port->DataBits(), int(port->Parity()),
                                          int(port->StopBits()), port->ReadGap()}));
            }
        }
        if (FScales) {
            note(
                "type, weight, language, interval, port, connected " +
                shown({FScales->ScalesType(), FScales->LastWeight(), FScales->IDLang(),
                       FScales->SendInterval(), ground.indexOf(FScales->ComPort()), FScales->IsConnected()}));
        }
    }

    void portEvent(int port, const QString& what, const QByteArray& bytes) override
    {
        TStage::portEvent(port, what, bytes);
        if (what == "wrote ") {
            FAsked = bytes == "E" || bytes == "\x11";
            if (depth() < 3 && FDice.chance(FAnswers)) {
                nest(feed(FDice), false);
            }
        }
    }

    /// One pass of the message loop; a wait must end, so that time goes on in each.
    void waits() override
    {
        note("waits");
        if (++FWaits > kMostWaits) {
            raise();
        }
        if (depth() < 3 && FWaits < kMostWaits / 2 && FDice.chance(35)) {
            nest(feed(FDice), false);
        } else {
            react({2 * FWild.nested, 0});
        }
        const int ms = FDice.pick({1, 10, 50, 100, 500, 999, 1000, 2000, 3000, 3999, 4000, 4001});
        nest({Advance, {}, ms}, true);
    }

private:
    // ---- vocabulary

    static int anyType(TDice& d)
    {
        return d.chance(90) ? d.between(1, 8) : d.pick({0, 0, 9, -1, 10, 255, 2'147'483'647});
    }

    int lastWeight() const { return FScales ? FScales->LastWeight() : 0; }

    TStep feed(TDice& d)
    {
        QByteArray bytes = sampleBytes(d, FScales ? FScales->ScalesType() : 0, FAsked, lastWeight());
        if (d.chance(FRestless ? 50 : 10)) {
            bytes.truncate(d.below(int(bytes.size()) + 1)); // the rest may never come
        }
        return fed(d, d.chance(95) ? 0 : 1, bytes);
    }

    /// A host that asks again and again about when the time for an answer is over.
    static TStep unanswered(TDice& d)
    {
        if (d.chance(5)) {
            return {Handler, {}, evError, d.below(2)};
        }
        return d.chance(50) ? TStep{Weigh, {}, 1}
                            : TStep{Advance, {}, d.pick({3'999, 4'000, 4'000, 4'001, 5'000})};
    }

    /// A silent scale is asked, time goes by while its port is reset, and the request fails.
    static std::vector<TStep> slowReset(TDice& d)
    {
        const TStep type{SetType, {}, d.pick({1, 1, 2, 6})};
        const TStep silence{Advance, {}, 5'000};
        const TStep fail{Fail, {"trouble"}, 0, 2};
        const TStep mend{Fail, {}, 0, 2};
        TStep ask{Weigh, {}, 1};
        ask.first = {{Advance, {}, d.pick({3'999, 4'000, 5'000})}};
        return {type, {SetComport, {}, 0}, {Connect, {}, 1}, silence, fail, ask, {Weigh, {}, 1}, mend};
    }

    static TStep time(TDice& d)
    {
        const int delay = d.chance(60) ? d.pick({0, 1, 10, 100, 999, 1'000, 2'999, 3'000, 3'001, 3'998, 3'999,
                                                 4'000, 4'001, 4'500, 5'000, 8'000})
                                       : d.below(6'000);
        if (d.chance(90)) {
            return {Advance, {}, delay};
        }
        return {Jump, {}, 0, d.pick({0, 0, 1, -1, 30}) * kMsPerDay + d.pick({-1, 1}) * delay};
    }

    static TStep portStep(TDice& d)
    {
        const int port = d.chance(80) ? 0 : 1;
        const TStep open{d.chance(50) ? OpenPort : ClosePort, {}, port};
        const TStep fail{Fail, d.chance(40) ? QStringList{"trouble"} : QStringList(), port, d.below(3)};
        const TStep name{Name, {d.text({"COM1", "COM2", ""})}, port};
        const int settings =
            d.between(5, 8) + 10 * d.below(5) + 100 * d.below(3) + 1000 * d.pick({0, 5, 10, 50});
        const TStep set{Settings, {}, port, d.pick({300, 4'800, 19'200}), settings};
        return d.pick({open, open, open, open, fail, fail, fail, name, set, TStep{RenewPort, {}, port}});
    }

    static TStep helper(TDice& d)
    {
        if (d.chance(45)) {
            return d.chance(45) ? TStep{List} : TStep{Message, {}, d.between(-1, 4)};
        }
        const QString text = sampleText(d);
        const QString old = d.chance(50) ? sampleText(d).left(d.below(3)) : text.mid(d.below(4), d.below(3));
        TStep step{Helpers, {text, old}, d.below(1 << 30), d.below(int(kMsPerDay)), d.between(-1, 4)};
        const int ago = d.pick({0, 1, 999, 1'000, 1'001, 2'999, 3'000, 3'999, 4'000, 4'001, int(kMsPerDay),
                                d.below(int(kMsPerDay))});
        step.text << QString::number(d.pick({-1, 1}) * ago) << QString::number(d.chance(50) ? 0 : kToday);
        return step;
    }

    TStep setting(TDice& d)
    {
        const int far =
            d.pick({0, 1, -1, 2, 500, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()});
        const int near = qBound(-1'000'000, lastWeight(), 1'000'000) + d.between(-1, 1);
        const TStep weight{LastWeight, {}, d.chance(60) ? near : far};
        const TStep interval{
            Interval, {}, d.pick({-1, -1, 0, -2, 200, 500, 1'000, 2'500, 3'000, 3'999, 4'000, 4'001, 5'000})};
        const TStep lang{Lang, {}, d.pick({0, 1, 2, 2, 3, -1})};
        const TStep handler{Handler, {}, d.below(kEvents), d.chance(70) ? d.between(1, 3) : 0};
        const TStep port{SetComport, {}, d.pick({-1, 0, 0, 0, 1})};
        const TStep type{SetType, {}, anyType(d)};
        return d.pick(
            {interval, interval, weight, weight, lang, handler, handler, port, TStep{SetUp}, type, type});
    }

    TStep disturbingWeight(TDice& d)
    {
        const int weight = qMin(lastWeight(), 1'000'000);
        return d.pick<TStep>({{LastWeight, {}, weight + d.below(3)},
                              {LastWeight, {}, -1},
                              {Weigh, {}, 1},
                              {Handler, {}, evWeight, 0},
                              {Destroy}});
    }

    // ---- one telling for both sides

    void call(const TStep& step)
    {
        const int a = int(step.a);
        switch (step.kind) {
        case Handler:
            return assign(a, int(step.b));
        case Lang:
            return FScales->SetIDLang(a);
        case SetType:
            return FScales->SetScalesType(a);
        case SetComport:
            return FScales->SetComport(ground.port(a));
        case SetUp:
            return FScales->SetUpComport();
        case Connect:
            return note(QStringLiteral("connection %1").arg(FScales->SetConnection(a != 0)));
        case Interval:
            return FScales->SetSendInterval(a);
        case LastWeight:
            return FScales->SetLastWeight(a);
        case Weigh:
            return note(QStringLiteral("weight is %1").arg(FScales->GetWeight(a != 0)));
        case Write:
            return FScales->WriteToPort(said(0, step.text[0]));
        case Reset:
            return FScales->Reset();
        case Message:
            return note(FScales->GetMessage(a));
        case List: {
            QStringList names{"to be replaced"};
            FScales->GetScalesList(names);
            return note(names.join(u'|'));
        }
        default:
            return help(step);
        }
    }

    void help(const TStep& step)
    {
        const QString& text = step.text[0];
        QString bits = QString::number(step.a, 2);
        if (step.a % 3 == 0) {
            bits = text + bits;
        }
        const double day = step.text[3].toDouble() / kMsPerDay;
        const double now = day + double(step.b) / kMsPerDay;
        const double last = day + (double(step.b) + step.text[2].toDouble()) / kMsPerDay;
        note("digits " + shown(TScales::DigitsOnly(text)));
        note("replaced " + shown(TScales::ReplaceStr(text, step.text[1], QString::number(step.a))));
        note(QStringLiteral("lrc %1 between %2")
                 .arg(TScales::StringLRC(text))
                 .arg(TScales::p_hw_checktimebetween(now, last, int(step.c))));
        if constexpr (World::isModel) {
            note("bits " + modelByteToBin(int(step.a & 255)));
            note(QStringLiteral("int %1 byte %2").arg(modelBinToInt(bits)).arg(modelBinToInt(bits) & 255));
        } else {
            note("bits " + common::ByteToBinStr(uchar(step.a & 255)));
            note(
                QStringLiteral("int %1 byte %2").arg(common::BitToint(bits)).arg(common::BinStrToByte(bits)));
        }
    }

    void assign(int event, int number)
    {
        TScales& scales = *FScales;
        switch (event) {
        case evLog:
            return TStage::assign(scales, &TScales::SetOnLog, number, teller("log", number, FScales));
        case evError:
            return TStage::assign(scales, &TScales::SetOnError, number, teller("error", number, FScales));
        default:
            return TStage::assign(scales, &TScales::SetOnWeight, number,
                                  [this, number](auto* sender, int weight) {
                                      disturb();
                                      teller("weight", number, FScales)(sender, weight);
                                  });
        }
    }

    void disturb()
    {
        if (FWild.nested > 0 && depth() < 3 && FDice.chance(30)) {
            nest(disturbingWeight(FDice), false);
            if (!FScales && FDice.chance(30)) {
                raise();
            }
        }
    }

    TGround<World> ground;
    std::shared_ptr<TScales> FScales;
    bool FDesigning = false;
    bool FSilent = false;   // the scale seldom answers, and the host asks on
    bool FRestless = false; // the family is changed between the pieces of a packet
    int FSettings = 0;      // percent of the steps that set up something
    int FAnswers = 0;       // percent of the requests that are answered while they are written
    bool FAsked = false;    // the last bytes written were the second request of a dialogue
    int FWaits = 0;         // passes of the message loop in this step
};

} // namespace

TEST(ScalesModel, PlaysLikeTheComponent)
{
    compare<TScalesStage>(
        600, {"port: a splitter leaves during a read", "port: an error that nobody takes", "remote: *"});
}

} // namespace tnv5::scales::model
