#include "model/connector_watched.h"
#include "model/d24_model.h"
#include "model/d24_words.h"
#include "model/kit/play.h"
#include "model/kit/real_world.h"
#include "model/kit/remote_words.h"
#include "tnv5/d24/d24_device.h"

#include <cmath>
#include <gtest/gtest.h>

// Random lives of networked gates, played on the component and on a model of it written apart. Every event,
// command, result and record must be the same after every step.

namespace tnv5::d24::model {

namespace {

constexpr std::size_t kLinks = 3;
constexpr std::size_t kWithPort = 2; // the other links answer as the host says

template <class World>
class TGateStage final : public TStage
{
    using TGate = std::conditional_t<World::isModel, TModelGate, TTurnStylerDeviceD24>;
    using TLink = std::conditional_t<World::isModel, TModelConnector, connector::model::TWatchedConnector>;

public:
    explicit TGateStage(quint64 seed) : TStage(seed, kStepNames), ground(*this, startMs(25, 2'000))
    {
        FWild = {FTemper.pick({0, 0, 20, 60}), FTemper.pick({0, 0, 15, 60})};
        FSendsRaise = FTemper.below(3) == 0 ? 200 : 0;
        FOdd = FTemper.below(3) == 0;
        FMayDestroy = FTemper.below(3) == 0;
        const auto answer = [this](const QString& what, const TTemper& how) {
            note(what);
            react(how);
        };
        TFarEnd& far = ground.farEnd;
        far.listen = [answer](const QString& where) { answer("listens " + where, {0, 100}); };
        far.dial = [this, answer](const QString& where) {
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
        far.toServer = [this, answer](const QByteArray& bytes) {
            answer("forwards " + shown(bytes), {FWild.nested, FWild.raising > 0 ? 100 : 0});
        };
        FLinksAtOnce = FTemper.below(5) != 0;
        ground.perform({NewPort, {}, 0});
        for (std::size_t i = 0; i < kLinks; ++i) {
            makeLink(i);
        }
        makeGate(FTemper.below(40) == 0);
    }

    std::vector<TStep> begin(TDice& d) override
    {
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
            steps.push_back({Number, {}, 1, 1});
        }
        if (d.below(2) == 0) {
            steps.push_back({Number, {}, 4, d.pick({1, 1, 2})});
        }
        return steps;
    }

    TStep any(TDice& d, bool inside) override
    {
        return d.below(7) == 0 ? remote(d) : anyStep(d, inside, FMayDestroy);
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
        case LinkType:
            return void(FLinks[kWithPort]->setProperty("ConnectorType", int(step.a)));
        case Steal:
            return FLinks[std::size_t(step.a)]->SetOnGetData(
                [this](auto*, const QString& text) { note("stolen " + text); });
        case NewLink:
            World::destroy(FLinks[std::size_t(step.a)]);
            return makeLink(std::size_t(step.a));
        case Destroy:
            if (FGate) {
                World::destroy(FGate);
            }
            return;
        default:
            if (FGate && step.kind <= EditPass) {
                set(step);
            } else if (FGate) {
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
                     .arg(FGate && FGate->Connector() == FLinks[i].get()));
        }
        for (int i = 0; FGate && i < FGate->StackItemsCount(); ++i) {
            const auto& pass = *FGate->StackItem(i);
            note(QStringList{"pass", pass.IP, pass.DeviceType, pass.CardNumber, pass.Device, pass.Status,
                             pass.StatusHard, pass.InfoMess, pass.Command, pass.CommandAdd, pass.CRC,
                             QString::number(pass.sys), QString::number(pass.Img.width()),
                             QString::number(pass.Finish), inMs(pass.Starttime), inMs(pass.CRCtime)}
                     .join(u'!'));
        }
        for (int i = 0; FGate && i < int(FGate->DeviceList().size()); ++i) {
            const auto& entry = *FGate->DeviceList().at(i);
            note(QStringList{"controller", entry.IP, entry.Device, entry.DeviceType, inMs(entry.Pingtime)}
                     .join(u'!'));
        }
    }

private:
    TStep remote(TDice& d)
    {
        const auto* const server = ground.world.server();
        if (server == nullptr || !FGate) {
            return anyStep(d, true, false);
        }
        const bool linked = ground.world.client()->Active();
        const bool client = FGate->property("RemoutDevice").toInt() == TModelGate::Client;
        if (client && !linked && d.below(2) == 0) {
            return {AskConnected};
        }
        return TRemoteWords{d,      [&d] { return aLine(d); }, server->Active(),
                            linked, ground.farEnd.clients,     int(server->Connections().size())}
            .any();
    }

    static QString inMs(double days) { return QString::number(std::llround(days * kMsPerDay)); }

    // ---- links

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
        const QString check = FDice.text({"", "", "4F"});
        if (FWild.nested > 0 && FDice.below(5) == 0 && depth() < 3) {
            const bool leaves = FDice.chance(50);
            nest(disturbing(FDice, FMayDestroy), leaves);
        } else {
            react(FWild);
        }
        return check;
    }

    // ---- one telling for both sides

    void set(const TStep& step)
    {
        switch (step.kind) {
        case Assign:
            return assign(int(step.a), int(step.b));
        case Number:
            return void(FGate->setProperty(kNumbers[step.a], int(step.b)));
        case ServerName:
            return void(FGate->setProperty("Server", step.text[0]));
        case Connect:
            return FGate->SetConnector(step.a < 0 ? nullptr : FLinks[std::size_t(step.a)].get());
        case Interval:
            return FGate->SetTimerInterval(int(step.a));
        default:
            break;
        }
        if (const auto pass = FGate->StackItem(int(step.a))) {
            QString* const texts[] = {&pass->Status,  &pass->DeviceType, &pass->CardNumber, &pass->CRC,
                                      &pass->Command, nullptr,           nullptr,           &pass->InfoMess};
            if (QString* const field = texts[step.b]) {
                *field = step.text[0];
            } else if (step.b == 5) {
                pass->Starttime = double(step.c) / kMsPerDay;
            } else {
                pass->Finish = step.c % 2 != 0;
            }
        }
    }

    void call(const TStep& step)
    {
        const QStringList& t = step.text;
        const int a = int(step.a);
        const int b = int(step.b);
        const auto result = [this](auto value) { note(QStringLiteral("=> %1").arg(value)); };
        switch (step.kind) {
        case Line:
            return FGate->p_hw_ProtocolIn(t[0]);
        case ConnectorData:
            return FGate->OnConnectorData(nullptr, t[0]);
        case Parse:
            return result(FGate->ParseMessage(t[0], t[1]));
        case CheckStatus:
            return result(FGate->p_hw_CheckStatus(t[0], t[1], t[2], t[3], t[4]));
        case FindDevice:
            return result(FGate->p_hw_FindDevice(t[0], t[1]));
        case FindIp:
            return result(FGate->p_hw_FindIP(t[0]));
        case FindByCard:
            return result(FGate->p_hw_FindDeviceByRelay(t[0], t[1], t[2], t[3]));
        case Ping:
            return FGate->DevicePing(t[0], t[1], t[2]);
        case PingFind:
            return result(FGate->DevicePingFind(t[0], t[1]));
        case UpdatePing:
            return FGate->UpdatePing(t[0], t[1]);
        case SilenceCheck:
            return FGate->DevicePingTime(FGate.get());
        case Sweep:
            return FGate->p_hw_CallStackArray();
        case Ask:
            return result(FGate->p_hw_SQLCheck(a, b));
        case Send:
            return result(int(FGate->p_hw_SendComCommand(a, b)));
        case TimedOut:
            return result(int(FGate->p_hw_checktimeout(double(step.a) / kMsPerDay, double(step.b) / kMsPerDay,
                                                       int(step.c))));
        case StatusAll:
            return result(int(FGate->p_hw_CheckStatusAll()));
        case Relay:
            return result(int(FGate->p_hw_relay(t[0], t[1], t[2], a)));
        case Manual:
            return FGate->p_hw_manual(t[0], t[1], t[2]);
        case Show:
            return FGate->ShowinternalStatus(FGate.get(), t[0], t[1], t[2], t[3], t[4], t[5], t[6]);
        default:
            result(int(FGate->Connected()));
        }
    }

    void assign(int event, int number)
    {
        TGate& gate = *FGate;
        switch (event) {
        case evLog:
            return TStage::assign(gate, &TGate::SetOnLog, number, teller("log", number, FGate));
        case evError:
            return TStage::assign(gate, &TGate::SetOnError, number, teller("error", number, FGate));
        case evStatus:
            return TStage::assign(gate, &TGate::SetOnCheckStatus, number, teller("status", number, FGate));
        case evPicture:
            return TStage::assign(gate, &TGate::SetOnGetImg, number,
                                  [this, number](auto* sender, const QString& device, QImage& img) {
                                      note(QStringLiteral("picture of %1").arg(img.width()));
                                      teller("picture", number, FGate)(sender, device);
                                      if (FDice.below(4) != 0) {
                                          img = QImage(1 + FDice.below(5), 1, QImage::Format_Mono);
                                      }
                                  });
        default:
            return TStage::assign(
                gate, &TGate::SetOnCheckSQL, number,
                [this, number](auto* sender, const auto& ip, const auto& device, const auto& type,
                               const auto& card, const auto& status, QImage& img, const auto& mode,
                               QVariant& mess, QVariant& answer) {
                    QString said = handlerName("question", number, sender == FGate.get());
                    for (const QVariant& field :
                         {QVariant(ip), QVariant(device), QVariant(type), QVariant(card), QVariant(status),
                          QVariant(mode), mess, answer, QVariant(img.width())}) {
                        said += u'!' + field.toString();
                    }
                    note(said);
                    question(img, mess, answer);
                    note("end of question " + QVariant(status).toString());
                });
        }
    }

    void question(QImage& img, QVariant& mess, QVariant& answer)
    {
        if (FDice.below(10) == 0) {
            img = QImage(6 + FDice.below(5), 1, QImage::Format_Mono);
        }
        if (FDice.below(2) == 0) {
            mess = displayText(FDice);
        }
        const int choice = FDice.below(20);
        if (FOdd && choice < 4) {
            answer = oddAnswer(FDice);
        } else if (choice < 18) {
            answer = choice < 14 ? 1 : choice < 16 ? 0 : choice == 16 ? 2 : -1;
        }
        react(FWild);
    }

    void makeGate(bool designing)
    {
        FGate = ground.world.template make<TGate>(designing);
        ground.farEnd.attach(ground.world);
    }

    TGround<World> ground;
    bool FLinksAtOnce = true;
    std::array<std::shared_ptr<TLink>, kLinks> FLinks;
    std::array<bool, kWithPort> FUp{true, true};
    std::shared_ptr<TGate> FGate;
    int FSendsRaise = 0; // in a thousand
    bool FOdd = false;   // answers that are no plain numbers
    bool FMayDestroy = false;
};

} // namespace

TEST(TD24Model, PlaysLikeTheComponent)
{
    compare<TGateStage>(500, kOnlyWithPositions +
                                 QStringList{"link: *", "port: a splitter leaves during a read",
                                             "port: an error that nobody takes", "splitter: packet too long",
                                             "splitter: attaching throws half a packet away"});
}

} // namespace tnv5::d24::model
