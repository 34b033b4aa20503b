#include "model/connector_watched.h"
#include "model/kit/play.h"
#include "model/kit/real_world.h"
#include "model/kit/remote_words.h"
#include "model/switch_model.h"
#include "model/switch_words.h"
#include "support/sanitized.h"
#include "tnv5/common/date_time_text.h"
#include "tnv5/switch/switch_device.h"

#include <cmath>
#include <gtest/gtest.h>

// Random lives of relay boards, played on the component and on a model of it written apart. Every event,
// command, monitor text, result and record must be the same after every step.

namespace tnv5::switching::model {

namespace {

constexpr std::size_t kLinks = 3;
constexpr std::size_t kWithPort = 2; // the other links answer as the host says
constexpr int kShownRecords = 30;
constexpr int kFull = 16'384;
constexpr quint64 kOneIsFilled = 400; // of so many scenarios, one begins with tables that are nearly full
constexpr bool kFills = !tests::kSanitized; // it takes minutes there, and the unit tests do it

template <class World>
class TSwitchStage final : public TStage
{
    using TSwitch = std::conditional_t<World::isModel, TModelSwitch, TSwitchDevice>;
    using TLink = std::conditional_t<World::isModel, TModelConnector, connector::model::TWatchedConnector>;
    using TOther = std::conditional_t<World::isModel, TModel, platform::TComponent>;

public:
    explicit TSwitchStage(quint64 seed)
        : TStage(seed, kStepNames),
          ground(*this, startMs(25, 60'000)),
          FFilled(kFills && seed % kOneIsFilled == kOneIsFilled - 1)
    {
        FWild = {FTemper.pick({0, 0, 15, 50}), FTemper.pick({0, 0, 8, 25})};
        FSendsRaise = FTemper.below(3) == 0 ? 150 : 0;
        FMayDestroy = FTemper.below(3) == 0;
        FLinksAtOnce = FTemper.below(5) != 0;
        TFarEnd& far = ground.farEnd;
        far.listen = [this](const QString& where) { answer("listens " + where, {0, 100}); };
        far.dial = [this](const QString& where) {
            answer("dials " + where, {0, 100});
            return FLinksAtOnce;
        };
        far.toClient = [this](int client, const QByteArray& bytes) {
            note(QStringLiteral("monitor %1 ").arg(client) + shown(bytes));
            if (FWild.nested > 0 && FDice.below(12) == 0) {
                nest({Leave, {}, FDice.below(ground.farEnd.clients)}, false);
            }
            react(FDice.below(4) == 0 ? FWild : TTemper{});
        };
        far.toServer = [this](const QByteArray& bytes) {
            answer("forwards " + shown(bytes), {FWild.nested, FWild.raising > 0 ? 100 : 0});
        };
        ground.perform({NewPort, {}, 0});
        for (std::size_t i = 0; i < kLinks; ++i) {
            makeLink(i);
        }
        makeSwitch(FTemper.below(40) == 0 && !FFilled);
    }
    ~TSwitchStage() override { setFormat(false); }

    std::vector<TStep> begin(TDice& d) override
    {
        if (FFilled) {
            return {{Connect, {}, 0}, {Fill}, {Assign, {}, evError, 1}, {Assign, {}, evStatus, 1}};
        }
        std::vector<TStep> steps;
        for (int event = 0; event < kEvents; ++event) {
            if (d.below(8) != 0) {
                steps.push_back({Assign, {}, event, 1});
            }
        }
        if (d.below(10) != 0) {
            steps.push_back({Connect, {}, d.pick({0, 0, 1, 2})});
        }
        if (d.below(2) == 0) {
            steps.push_back({Number, {}, 4, d.pick({1, 1, 2})});
        }
        return steps;
    }

    TStep any(TDice& d, bool inside) override
    {
        TWords say = words(d);
        if (!FFilled) {
            return d.below(7) == 0 ? remote(d) : say.any(inside, FMayDestroy);
        }
        const QString board = QString::number(d.below(4));
        const TStep find{Find, {"x", board, "new"}};
        const TStep check{CheckStatus, {"x", board, "new", "ON"}, ground.now()};
        const TStep ping{Ping, {"x", board, "T"}};
        return d.pick({find, check, ping, TStep{Line, {say.line()}}});
    }

protected:
    void perform(const TStep& step) override
    {
        switch (step.kind) {
        case LinkLine:
            return FLinks[std::size_t(step.a)]->GetCommand(step.text[0]);
        case LinkUp:
            FUp[std::size_t(step.a)] = step.b != 0;
            return;
        case Steal:
            return FLinks[std::size_t(step.a)]->SetOnGetData(
                [this](auto*, const QString& text) { note("stolen " + text); });
        case NewLink:
            World::destroy(FLinks[std::size_t(step.a)]);
            return makeLink(std::size_t(step.a));
        case Format:
            return setFormat(step.a != 0);
        case Destroy:
            if (FSwitch) {
                World::destroy(FSwitch);
            }
            return;
        default:
            if (FSwitch && step.kind <= EditBoard) {
                set(step);
            } else if (FSwitch) {
                call(step);
            }
        }
    }

    void look() override
    {
        for (std::size_t i = 0; i < kLinks; ++i) {
            note(QStringLiteral("link %1 %2 %3")
                     .arg(i)
                     .arg(bool(FLinks[i]->OnGetData()))
                     .arg(FSwitch && FSwitch->Connector() == FLinks[i].get()));
        }
        if (!FSwitch) {
            return note("gone");
        }
        QStringList values{FSwitch->property("Server").toString()};
        for (const char* const name : kNumbers) {
            values += QString::number(FSwitch->property(name).toInt());
        }
        note(values.join('!'));
        const int jobs = FSwitch->StackItemsCount();
        const int boards = int(FSwitch->DeviceList().size());
        note(QStringLiteral("%1 jobs, %2 boards").arg(jobs).arg(boards));
        for (int i = qMax(0, jobs - kShownRecords); i < jobs; ++i) {
            const auto& job = *FSwitch->StackItem(i);
            note(QStringList{"job", job.IP, job.Device, job.Relay, job.Status, job.StatusDevice,
                             inMs(job.Starttime), inMs(job.Finishtime)}
                     .join('!'));
        }
        for (int i = qMax(0, boards - kShownRecords); i < boards; ++i) {
            const auto& board = *FSwitch->DeviceList().at(i);
            note(QStringList{"board", board.IP, board.Device, board.DeviceType, inMs(board.Pingtime)}.join(
                '!'));
        }
    }

private:
    static QString inMs(double days) { return QString::number(std::llround(days * kMsPerDay)); }

    TWords words(TDice& dice) const
    {
        TWords say{dice, ground.now()};
        if (FSwitch && FSwitch->StackItemsCount() > 0 && dice.chance(60)) {
            const auto job = FSwitch->StackItem(dice.below(qMin(4, FSwitch->StackItemsCount())));
            say.job = {job->Device, job->Relay};
        }
        return say;
    }

    TStep remote(TDice& d)
    {
        const auto* const server = ground.world.server();
        if (server == nullptr || !FSwitch) {
            return {Advance, {}, 1};
        }
        const bool linked = ground.world.client()->Active();
        const bool client = FSwitch->property("RemoutDevice").toInt() == TModelSwitch::Client;
        if (client && !linked && d.below(2) == 0) {
            return {AskConnected};
        }
        return TRemoteWords{d,      [&] { return words(d).line(); }, server->Active(),
                            linked, ground.farEnd.clients,           int(server->Connections().size())}
            .any();
    }

    void answer(const QString& what, const TTemper& how)
    {
        note(what);
        react(how);
    }

    // ---- what a side stands on

    void setFormat(bool own)
    {
        if constexpr (World::isModel) {
            FFormat.own = own;
        } else if (!own) {
            common::setDateTimeFormat({});
        } else {
            common::setDateTimeFormat(
                {[](double value) { return '@' + inMs(value); },
                 [](QStringView text) {
                     return text.startsWith('@')
                                ? std::optional(double(text.mid(1).toString().toLongLong()) / kMsPerDay)
                                : std::nullopt;
                 }});
        }
    }

    void makeLink(std::size_t index)
    {
        FLinks[index] = ground.world.template make<TLink>(false);
        TLink& link = *FLinks[index];
        if (index == kWithPort) {
            link.setProperty("ConnectorType", 1);
            link.SetComport(ground.port(0));
            link.SetOnLog([this](auto*, const QString& text) { heard("link log " + text); });
            link.SetOnError([this](auto*, const QString& text) { heard("link error " + text); });
            return;
        }
        link.ConnectedHook = [this, index] {
            const bool up = FUp[index];
            heard(QStringLiteral("link %1 up?").arg(index));
            return up;
        };
        link.SendHook = [this, index](const QString& command) { return linkSend(index, command); };
    }

    QString linkSend(std::size_t index, const QString& command)
    {
        note(QStringLiteral("link %1 sends %2").arg(index).arg(command));
        if (FDice.permille(FSendsRaise)) {
            raise();
        }
        if (FWild.nested > 0 && FDice.below(6) == 0 && depth() < 3) {
            const bool leaves = FDice.chance(50);
            nest(words(FDice).disturbing(FMayDestroy), leaves);
        } else {
            react(FWild);
        }
        return {};
    }

    void makeSwitch(bool designing)
    {
        if constexpr (World::isModel) {
            FSwitch = ground.world.template make<TSwitch>(designing, FFormat);
        } else {
            FSwitch = ground.world.template make<TSwitch>(designing);
        }
        ground.farEnd.attach(ground.world);
    }

    // ---- one telling for both sides

    void set(const TStep& step)
    {
        const int index = int(step.a);
        switch (step.kind) {
        case Assign:
            return assign(index, int(step.b));
        case Number:
            return void(FSwitch->setProperty(kNumbers[index], int(step.b)));
        case ServerName:
            return void(FSwitch->setProperty("Server", step.text[0]));
        case Connect:
            return FSwitch->SetConnector(index < 0 ? nullptr : FLinks[std::size_t(index)].get());
        case EditJob:
            if (const auto job = FSwitch->StackItem(index)) {
                editJob(*job, step);
            }
            return;
        default:
            if (index < int(FSwitch->DeviceList().size())) {
                auto& board = *FSwitch->DeviceList().at(index);
                QString* const texts[] = {&board.IP, &board.Device, &board.DeviceType};
                if (step.b < 3) {
                    *texts[step.b] = step.text[0];
                } else {
                    board.Pingtime = double(step.c) / kMsPerDay;
                }
            }
        }
    }

    template <class Job>
    static void editJob(Job& job, const TStep& step)
    {
        QString* const texts[] = {&job.Status, &job.StatusDevice, &job.Device, &job.Relay, &job.IP};
        if (step.b < jfStart) {
            *texts[step.b] = step.text[0];
        } else {
            (step.b == jfStart ? job.Starttime : job.Finishtime) = double(step.c) / kMsPerDay;
        }
    }

    void call(const TStep& step)
    {
        const QStringList& t = step.text;
        const int a = int(step.a);
        const int b = int(step.b);
        const double first = double(step.a) / kMsPerDay;
        const double second = double(step.b) / kMsPerDay;
        const auto result = [this](auto value) { note(QStringLiteral("=> %1").arg(value)); };
        switch (step.kind) {
        case Line:
            return FSwitch->p_hw_ProtocolIn(said(0, t[0]));
        case ConnectorData:
            return FSwitch->OnConnectorData(nullptr, said(0, t[0]));
        case Parse:
            return result(FSwitch->ParseMessage(t[0], t[1]));
        case Find:
            return result(FSwitch->p_hw_FindDevice(said(0, t[0]), said(1, t[1]), t[2]));
        case CheckStatus:
            return result(FSwitch->p_hw_CheckStatus(t[0], said(0, t[1]), t[2], said(1, t[3]), first));
        case Sweep:
            return FSwitch->p_hw_CallStackArray();
        case Ask:
            return result(FSwitch->p_hw_SQLCheck(a, b));
        case Relay:
            return result(int(FSwitch->p_hw_relay(said(0, t[0]), said(1, t[1]), t[2])));
        case StatusAll:
            return result(int(FSwitch->p_hw_CheckStatusAll()));
        case Send:
            return FSwitch->SendCommandToConnector(said(0, t[0]));
        case Compare:
            return result(FSwitch->p_hw_checktimeout(first, second));
        case Between:
            return result(int(FSwitch->p_hw_checktimebetween(first, second, step.c)));
        case Show: {
            TOther* const senders[] = {FSwitch.get(), nullptr, FOther.get()};
            return FSwitch->ShowinternalStatus(senders[a], t[0], said(0, t[1]), t[2], said(1, t[3]), t[4]);
        }
        case ToMonitor:
            return FSwitch->SendToMonitor("LOG!x\x98&");
        case Ping:
            return FSwitch->DevicePing(said(0, t[0]), said(1, t[1]), t[2]);
        case PingFind:
            return result(FSwitch->DevicePingFind(t[0], t[1]));
        case PingTime:
            return FSwitch->DevicePingTime(nullptr);
        case NoEffect:
            FSwitch->UpdatePing("0.0.0.0", "000A", "T");
            return result(int(FSwitch->p_hw_SendComCommand(a)));
        case Fill:
            return fill();
        default:
            result(int(FSwitch->Connected()));
        }
    }

    /// All but the last place of both tables.
    void fill()
    {
        if constexpr (World::isModel) {
            FSwitch->fill(kFull - 1);
        } else {
            for (int i = FSwitch->StackItemsCount(); i < kFull - 1; ++i) {
                const auto job = FSwitch->StackItem(FSwitch->p_hw_FindDevice({}, {}, {}));
                job->Device = job->Status = job->StatusDevice = "filled";
            }
            for (int i = FSwitch->DeviceList().size(); i < kFull - 1; ++i) {
                FSwitch->DevicePing({}, {}, {});
                FSwitch->DeviceList().at(i)->Device = "filled";
            }
        }
    }

    void assign(int event, int number)
    {
        TSwitch& it = *FSwitch;
        switch (event) {
        case evLog:
            return TStage::assign(it, &TSwitch::SetOnLog, number, teller("log", number, FSwitch));
        case evError:
            return TStage::assign(it, &TSwitch::SetOnError, number, teller("error", number, FSwitch));
        case evStatus:
            return TStage::assign(it, &TSwitch::SetOnCheckStatus, number, teller("status", number, FSwitch));
        case evNewItem:
            return TStage::assign(it, &TSwitch::SetOnNewItem, number,
                                  [this, number](auto* sender, const auto& device, const auto& relay,
                                                 const auto& status, const auto& actual, QVariant& wanted) {
                                      tell("new", number, sender, {device, relay, status, actual, wanted});
                                      if (!FDice.chance(15)) {
                                          wanted = words(FDice).wish();
                                      }
                                      react(FWild);
                                  });
        default:
            return TStage::assign(
                it, &TSwitch::SetOnCheckSQL, number,
                [this, number](auto* sender, const auto& device, const auto& relay, const auto& status,
                               const auto& actual, const auto& mode, QVariant& result) {
                    tell("question", number, sender, {device, relay, status, actual, mode, result});
                    if (!FDice.chance(15)) {
                        result = words(FDice).answer(QVariant(mode).toInt());
                    }
                    react(FWild);
                });
        }
    }

    template <class Sender>
    void tell(const char* event, int number, Sender* sender, const QVariantList& values)
    {
        QString said = handlerName(event, number, sender == FSwitch.get());
        for (const QVariant& value : values) {
            said += '!' + value.toString();
        }
        note(said);
    }

    TFormat FFormat;
    TGround<World> ground;
    const bool FFilled;
    bool FLinksAtOnce = true;
    std::array<std::shared_ptr<TLink>, kLinks> FLinks;
    std::array<bool, kWithPort> FUp{true, true};
    std::shared_ptr<TOther> FOther = ground.world.template make<TOther>(false);
    std::shared_ptr<TSwitch> FSwitch;
    int FSendsRaise = 0; // in a thousand
    bool FMayDestroy = false;
};

} // namespace

TEST(SwitchModel, PlaysLikeTheComponent)
{
    const QStringList full{"job table full", "PING: table full"};
    compare<TSwitchStage>(
        500, kOnlyWithPositions + (kFills ? QStringList() : full) +
                 QStringList{"link: *", "remote: socket error*", "port: a splitter leaves during a read",
                             "port: an error that nobody takes", "splitter: packet too long",
                             "splitter: attaching throws half a packet away"});
}

} // namespace tnv5::switching::model
