#include "model/kit/play.h"
#include "model/kit/real_world.h"
#include "model/kit/remote_words.h"
#include "model/turnstile_model.h"
#include "model/turnstile_words.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <gtest/gtest.h>

// Random scenarios, played against the component and against an independent model of it: everything that the
// host hears, every byte written and every result must be the same.

namespace tnv5::turnstile::model {

namespace {

TNV5_STEPS(Create, Destroy, AssignPort, Handler, Number, Door, Devices, Mode, ServerName, Interval, Line,
           Sweep, Find, FindByRelay, CheckStatus, SendCom, Relay, Poll, Ask, TimedOut, Checksum, Show, Echo,
           AskConnected, EditStart, EditCard, EditDevice, EditHard, EditStatus)

constexpr int kEvents = 5;
constexpr const char* kNumbers[] = {"RelayOpen",     "RelayClose", "RelayOpenDoor", "RelayCloseDoor",
                                    "TimeDelayOpen", "TimeOut",    "Port",          "RemoutDevice"};

template <class World>
class TGateStage final : public TStage
{
    using TGate = std::conditional_t<World::isModel, TModelGate, TTurnStylerDevice>;
    using TOther = std::conditional_t<World::isModel, TModel, platform::TComponent>;

public:
    explicit TGateStage(quint64 seed) : TStage(seed, kStepNames), ground(*this, startMs(30, 12'000))
    {
        const int kind = FTemper.below(10);
        FWild = {kind < 5 ? 0 : kind < 8 ? 40 : 80, kind < 6 ? 0 : kind < 8 ? 10 : 40};
        FDestroying = kind == 9;
        FDesigning = FTemper.permille(15);
        TFarEnd& far = ground.farEnd;
        far.listen = [this](const QString& where) { answer("listens " + where, {0, 150}); };
        far.dial = [this](const QString& where) {
            answer("dials " + where, {0, 150});
            return FLineUp;
        };
        far.toClient = [this](int client, const QByteArray& bytes) {
            answer(QStringLiteral("echo %1 ").arg(client) + shown(bytes), {FWild.nested, 30});
        };
        far.toServer = [this](const QByteArray& bytes) {
            answer("forwards " + shown(bytes), {FWild.nested, 200});
        };
    }

    std::vector<TStep> begin(TDice& d) override { return create(d, {{NewPort, {}, 0}, {NewPort, {}, 1}}); }

    std::vector<TStep> more(TDice& d) override
    {
        if (!FGate) {
            return create(d, {});
        }
        for (int port = 0; port < 2; ++port) {
            if (ground.port(port) == nullptr) {
                return {{NewPort, {}, port}, {OpenPort, {}, port}, {AssignPort, {}, port}};
            }
        }
        const bool limit = FGate->StackItemsCount() > 0 && d.chance(9);
        std::vector<TStep> steps{limit ? toLimit(d) : any(d, false)};
        if (limit && d.chance(60)) {
            steps.push_back({Sweep});
        }
        if (steps[0].kind == RenewPort && d.chance(80)) {
            steps.push_back({OpenPort, {}, steps[0].a});
            steps.push_back({AssignPort, {}, steps[0].a});
        }
        return steps;
    }

    TStep any(TDice& d, bool inside) override
    {
        if (inside && FDestroying && d.chance(5)) {
            return {Destroy};
        }
        switch (d.weighted({300, 120, 30, 90, 120, 40, 45, 30, 35, 30, 18, inside ? 0 : 2, 150})) {
        case 0:
            return fed(d, d.chance(95) ? 0 : 1, words(d).stream());
        case 1: {
            const int ms = d.pick({1, 50, 99, 100, 101, 200, d.below(350), d.below(350), d.below(2'500)});
            const bool fast = inside || (FInterval > 0 && FInterval < 20); // or a step would take too long
            return {Advance, {}, fast ? qMin(ms, 2 * qAbs(FInterval)) : ms};
        }
        case 2:
            return jump(d);
        case 3:
            return d.chance(60) ? TStep{Line, {words(d).line()}} : TStep{Sweep};
        case 4:
            return table(d);
        case 5:
            return lookAround(d);
        case 6:
            return property(d);
        case 7:
            return {Handler, {}, d.below(kEvents), d.pick({0, 1, 1, 2})};
        case 8:
            return portStep(d);
        case 9:
            return edit(d);
        case 10:
            return {Mode, {}, d.pick({0, 1, 1, 1, 2, 2}), d.chance(70)};
        case 11:
            return {Destroy};
        default:
            return remote(d);
        }
    }

protected:
    void perform(const TStep& step) override
    {
        if (step.kind == Create && !FGate) {
            FInterval = 100;
            makeGate();
        } else if (step.kind == Destroy && FGate) {
            World::destroy(FGate);
        } else if (FGate && step.kind <= Interval) {
            set(step);
        } else if (FGate && step.kind >= EditStart) {
            editRecord(step);
        } else if (FGate) {
            call(step);
        }
    }

    void look() override
    {
        if (!FGate) {
            return note("gone");
        }
        note("devices " + FGate->property("DeviceList").toStringList().join(u',') + ", door " +
             FGate->property("DoorIndex").toString() + shown({ground.indexOf(FGate->ComPort())}));
        for (const char* const name : kNumbers) {
            note(QString(name) + shown({FGate->property(name).toInt()}));
        }
        for (int i = 0; i < FGate->StackItemsCount(); ++i) {
            const auto& record = *FGate->StackItem(i);
            note(QStringList{record.CardNumber, record.Device, record.Status, record.StatusHard}.join(u'!') +
                 shown({std::llround(record.Starttime * kMsPerDay), record.Img.width(), record.sys}));
        }
    }

private:
    // ---- vocabulary

    TStep remote(TDice& d)
    {
        const auto* const server = ground.world.server();
        if (server == nullptr) {
            return {Sweep};
        }
        const bool linked = ground.world.client()->Active();
        const bool client = FGate->property("RemoutDevice").toInt() == TModelGate::Client;
        if (client && !linked && d.chance(60)) {
            return {AskConnected};
        }
        return TRemoteWords{d,      [&] { return words(d).line(); }, server->Active(),
                            linked, ground.farEnd.clients,           int(server->Connections().size())}
            .any();
    }

    TWords words(TDice& d) const
    {
        QStringList pending;
        for (int i = 0; FGate && i < FGate->StackItemsCount(); ++i) {
            pending += FGate->StackItem(i)->Device;
        }
        return {d, pending};
    }

    static std::vector<TStep> create(TDice& d, std::vector<TStep> steps)
    {
        steps.push_back({Create});
        if (!d.chance(5)) {
            steps.push_back({AssignPort, {}, 0});
        }
        steps.push_back({d.chance(5) ? ClosePort : OpenPort, {}, 0});
        if (!d.chance(30)) {
            steps.push_back({Mode, {}, d.chance(75) ? TModelGate::Server : TModelGate::Client, 1});
        }
        if (d.chance(80)) {
            steps.push_back({Devices, {"01A", "01D", "02B"}});
        }
        for (int event = 0; event < kEvents; ++event) {
            steps.push_back({Handler, {}, event, d.chance(90)});
        }
        return steps;
    }

    TStep jump(TDice& d) const
    {
        const qint64 midnight = (ground.now() / kMsPerDay + 1) * kMsPerDay;
        return {Jump,
                {},
                d.pick<qint64>({midnight - d.below(3'000), midnight + d.between(-2, 2),
                                ground.now() + d.below(20'000), ground.now() - d.below(5'000)})};
    }

    /// To a whole number of seconds after a pass began, or a millisecond beside it.
    TStep toLimit(TDice& d) const
    {
        const auto record = FGate->StackItem(d.below(FGate->StackItemsCount()));
        const int limit = FGate->property("TimeOut").toInt();
        const qint64 today = ground.now() / kMsPerDay * kMsPerDay;
        const qint64 seconds =
            d.pick({1, 2, 2, 3, 4, limit + 2, limit + 3, limit + 3, limit + 10, limit + 11});
        const qint64 start = std::llround(record->Starttime * kMsPerDay);
        return {Jump, {}, today + start + seconds * 1'000 + d.pick({-1, 0, 0, 1, 50})};
    }

    TStep table(TDice& d)
    {
        TWords say = words(d);
        const int index = d.between(-1, FGate ? FGate->StackItemsCount() : 0);
        const int yesnot = d.pick({0, 0, 1, 1, 1, 2, -1});
        const TStep check{CheckStatus, {say.address(), say.card(), d.text({"R", "", "Ы!"})}};
        const TStep ask{Ask, {}, index, d.between(-1, 4)};
        const TStep relay{
            Relay,
            {d.chance(70) ? say.address() : say.oddAddress(), d.text({"1", "3", "12", "", "x", "٣", " "})},
            yesnot};
        const TStep find{Find, {say.address()}};
        const TStep byRelay{FindByRelay, {say.address(), say.card()}};
        const TStep send{SendCom, {}, index, yesnot};
        return d.pick({find, byRelay, check, check, ask, ask, TStep{Poll}, send, relay, relay});
    }

    TStep lookAround(TDice& d)
    {
        TWords say = words(d);
        const int limit = d.between(-1, 12);
        const qint64 moment = kToday + d.below(int(kMsPerDay));
        const qint64 other = moment + d.pick({-1, 1}) * (limit + d.below(2)) * 1'000LL + d.between(-1, 1);
        const TStep timedOut{TimedOut, {}, moment, other, limit};
        const TStep checksum{Checksum, {d.chance(50) ? say.line() : QString::number(d.below(1'000))}};
        const TStep show{Show, {"COME", say.address(), say.card(), say.status(), "a!&b"}, d.below(3)};
        return d.pick({timedOut, timedOut, checksum, show, TStep{Echo}, TStep{AskConnected}});
    }

    TStep property(TDice& d)
    {
        QStringList list;
        for (int left = d.below(5); left > 0; --left) {
            list += words(d).address();
        }
        const TStep number{Number, {}, d.below(7), d.pick({0, 1, 2, 3, 4, 5, 9, 12, -1, d.below(30)})};
        const TStep door{Door, {d.text({"D", "D", "A", "B", "d", "", "DD", "Я"})}};
        const TStep name{ServerName, {d.text({"", "10.0.0.1", "касса"})}};
        const TStep interval{Interval, {}, d.pick({100, 100, 100, 1, 10, 1'000, 0, -5, 50})};
        return d.pick(
            {number, number, number, number, number, number, door, door, {Devices, list}, interval, name});
    }

    static TStep portStep(TDice& d)
    {
        const int port = d.chance(80) ? 0 : 1;
        const TStep open{d.chance(70) ? OpenPort : ClosePort, {}, port};
        const TStep fail{Fail, d.pick<QStringList>({{}, {}, {"обрыв"}, {""}}), port, 2};
        const TStep give{AssignPort, {}, d.pick({0, 0, 0, 1, -1})};
        const TStep renew{RenewPort, {}, port};
        return d.pick({open, open, open, open, open, fail, fail, give, give, renew});
    }

    TStep edit(TDice& d)
    {
        TWords say = words(d);
        const int index = d.below(FGate ? FGate->StackItemsCount() : 0);
        const int field = d.between(EditStart, EditStatus);
        const QString text = field == EditCard     ? say.card()
                             : field == EditDevice ? say.address()
                             : field == EditHard   ? d.text({"", "RELAY", "x"})
                                                   : say.status();
        return {field, {text}, index, ground.now() % kMsPerDay - d.below(20'000)};
    }

    // ---- one telling for both sides

    void set(const TStep& step)
    {
        switch (step.kind) {
        case AssignPort:
            return FGate->SetComport(ground.port(step.a));
        case Handler:
            return assign(int(step.a), int(step.b));
        case Number:
            return void(FGate->setProperty(kNumbers[step.a], int(step.b)));
        case Door:
            return void(FGate->setProperty("DoorIndex", step.text[0]));
        case Devices:
            return void(FGate->setProperty("DeviceList", step.text));
        case Mode:
            FLineUp = step.b != 0;
            return void(FGate->setProperty("RemoutDevice", int(step.a)));
        case ServerName:
            return void(FGate->setProperty("Server", step.text[0]));
        case Interval:
            FInterval = int(step.a);
            return FGate->SetTimerInterval(int(step.a));
        default:
            return;
        }
    }

    void call(const TStep& step)
    {
        const QStringList& t = step.text;
        const int a = int(step.a);
        const int b = int(step.b);
        switch (step.kind) {
        case Line:
            return FGate->p_hw_ProtocolIn(t[0]);
        case Sweep:
            return FGate->p_hw_CallStackArray();
        case Find:
            return note(QString::number(FGate->p_hw_FindDevice(t[0])));
        case FindByRelay:
            return note(QString::number(FGate->p_hw_FindDeviceByRelay(t[0], t[1])));
        case CheckStatus:
            return note("status " + FGate->p_hw_CheckStatus(t[0], t[1], t[2]));
        case SendCom:
            return FGate->p_hw_SendComCommand(a, b);
        case Relay:
            return FGate->p_hw_relay(t[0], t[1], a);
        case Poll:
            return FGate->p_hw_CheckStatusAll();
        case Ask:
            return note(QString::number(FGate->p_hw_SQLCheck(a, b)));
        case TimedOut:
            return note(QString::number(FGate->p_hw_checktimeout(double(step.a) / kMsPerDay,
                                                                 double(step.b) / kMsPerDay, int(step.c))));
        case Checksum:
            return note(QString::number(FGate->CheckCRC(t[0])));
        case Show: {
            TOther* const senders[] = {FGate.get(), nullptr, FOther.get()};
            return FGate->ShowinternalStatus(senders[a], t[0], t[1], t[2], t[3], t[4]);
        }
        case Echo:
            return FGate->ServerEcho("LOG!x&");
        default:
            return note(QString::number(FGate->Connected()));
        }
    }

    void editRecord(const TStep& step)
    {
        const auto record = FGate->StackItem(int(step.a));
        if (record && step.kind == EditStart) {
            record->Starttime = double(step.b) / kMsPerDay;
        } else if (record) {
            QString* const fields[] = {&record->CardNumber, &record->Device, &record->StatusHard,
                                       &record->Status};
            *fields[step.kind - EditCard] = step.text[0];
        }
    }

    void assign(int event, int number)
    {
        TGate& gate = *FGate;
        switch (event) {
        case 0:
            return TStage::assign(gate, &TGate::SetOnLog, number, teller("log", number, FGate));
        case 1:
            return TStage::assign(gate, &TGate::SetOnError, number, teller("error", number, FGate));
        case 2:
            return TStage::assign(gate, &TGate::SetOnCheckStatus, number, teller("status", number, FGate));
        case 3:
            return TStage::assign(
                gate, &TGate::SetOnCheckSQL, number,
                [this, number](auto* sender, const auto& device, const auto& card, const auto& status,
                               QImage& img, const auto& mode, QVariant& result) {
                    QString said = handlerName("question", number, sender == FGate.get());
                    for (const QVariant& field : {QVariant(device), QVariant(card), QVariant(status),
                                                  QVariant(mode), QVariant(result), QVariant(img.width())}) {
                        said += u'!' + field.toString();
                    }
                    note(said);
                    question(QVariant(mode).toInt(), img, result);
                });
        default:
            return TStage::assign(gate, &TGate::SetOnGetImg, number,
                                  [this, number](auto* sender, const QString& device, QImage& img) {
                                      draw(img);
                                      teller("picture", number, FGate)(sender, device);
                                  });
        }
    }

    // ---- the host

    void question(int mode, QImage& img, QVariant& result)
    {
        if (!FDice.chance(10)) {
            result = words(FDice).answer(mode);
            note(
                QStringLiteral("answers %1 %2").arg(QLatin1StringView(result.typeName()), result.toString()));
        }
        if (FDice.chance(3)) {
            draw(img);
        }
        react(FWild);
    }

    /// Pictures are told apart by their width.
    void draw(QImage& img)
    {
        const int width = FDice.below(9);
        img = width > 0 ? QImage(width, 1, QImage::Format_Mono) : QImage();
    }

    void answer(const QString& what, const TTemper& how)
    {
        note(what);
        react(how);
    }

    void makeGate()
    {
        FGate = ground.world.template make<TGate>(FDesigning);
        ground.farEnd.attach(ground.world);
    }

    TGround<World> ground;
    std::shared_ptr<TOther> FOther = ground.world.template make<TOther>(false);
    std::shared_ptr<TGate> FGate;
    bool FDestroying = false;
    bool FDesigning = false;
    bool FLineUp = true; // the remote server can be reached
    int FInterval = 100;
};

} // namespace

TEST(TurnstileModel, PlaysLikeTheComponent)
{
    compare<TGateStage>(400, kOnlyWithPositions + QStringList{"port: an error that nobody takes"});
}

} // namespace tnv5::turnstile::model
