#include "model/connector_model.h"
#include "model/connector_watched.h"
#include "model/connector_words.h"
#include "model/kit/play.h"
#include "model/kit/real_world.h"

#include <cmath>
#include <gtest/gtest.h>

// Random scenarios of two line connectors and three ports.

namespace tnv5::connector::model {

namespace {

// The first argument of each is the connector.
TNV5_STEPS(CreateConnector,  // with overrides `b`, in the form designer if `c`
           DestroyConnector, //
           SetComport,       // port `b`, none for -1
           SetType,          // link type `b`
           Handler,          // event `b`: handler `c`, 0 none
           SetConnected,     // to `b`; by property if `c`
           GetConnected,     // by property if `b`
           CloseAll, Command, Direct, HandOver, Diagnostic, FromList, Process,
           Width) // of board `b`: `c`

constexpr std::size_t kConnectors = 2;

/// Overrides of the virtual functions, to be combined.
enum EOverride { ovAsk = 1, ovAlways = 2, ovNever = 4, ovWatch = 8, ovSwallow = 16 };

template <class World>
class TConnectorStage final : public TStage
{
    using TConnector = std::conditional_t<World::isModel, TModelConnector, TWatchedConnector>;

public:
    explicit TConnectorStage(quint64 seed)
        : TStage(seed, kStepNames), ground(*this, startMs(30, 1'000), !FTemper.chance(15))
    {
        FWild = {FTemper.pick({0, 10, 40, 120}), FTemper.pick({0, 10, 60})};
        FDestroying = FTemper.chance(30);
    }

    std::vector<TStep> begin(TDice& d) override
    {
        std::vector<TStep> steps = create(d, 0, d.chance(88));
        if (d.chance(35)) {
            append(steps, create(d, 1, d.chance(85)));
        }
        return steps;
    }

    std::vector<TStep> more(TDice& d) override
    {
        const int roll = d.below(100);
        if (roll < 34) {
            return lines(d);
        }
        if (roll < 37) {
            return create(d, connector(d), d.chance(90));
        }
        if (roll < 39) {
            return knownWidthShown(d);
        }
        if (roll < 41) {
            return disturbedOpening(d);
        }
        if (roll < 42 && FDestroying) {
            return destroyedByHandler(d);
        }
        return {any(d, false)};
    }

    TStep any(TDice& d, bool inside) override
    {
        if (inside && d.chance(20)) {
            return FDestroying && d.chance(40) ? TStep{DestroyConnector, {}, connector(d)} : feed(d);
        }
        return d.chance(50) ? talk(d) : d.chance(70) ? setting(d) : portStep(d);
    }

protected:
    void perform(const TStep& step) override
    {
        auto& connector = FConnectors[std::size_t(step.a)];
        if (step.kind == CreateConnector && !connector) {
            connector = ground.world.template make<TConnector>(step.c != 0);
            FBoards[std::size_t(step.a)].clear();
            hook(step, connector.get());
        } else if (step.kind == DestroyConnector && connector) {
            World::destroy(connector);
        } else if (connector) {
            performOn(*connector, step);
        }
    }

    void look() override
    {
        for (std::size_t i = 0; i < kConnectors; ++i) {
            if (FConnectors[i]) {
                lookAt(*FConnectors[i], i);
            }
        }
    }

private:
    // ---- vocabulary

    static int connector(TDice& d) { return d.chance(80) ? 0 : 1; }
    static int port(TDice& d) { return d.chance(75) ? 0 : d.below(kMostPorts); }
    static void append(std::vector<TStep>& steps, const std::vector<TStep>& others)
    {
        steps.insert(steps.end(), others.begin(), others.end());
    }

    // Ports, a connector and everything that makes it work; or nearly everything.
    static std::vector<TStep> create(TDice& d, int who, bool whole)
    {
        std::vector<TStep> steps;
        for (int i = 0; i < kMostPorts; ++i) {
            steps.push_back({NewPort, {}, i});
            for (int which = 0; which < 3; ++which) {
                steps.push_back({Fail, {}, i, which});
            }
        }
        const int overrides = (d.chance(12) ? 1 << d.below(5) : 0) | (d.chance(5) ? 1 << d.below(5) : 0);
        steps.push_back({CreateConnector, {}, who, overrides, d.chance(4)});
        steps.push_back({SetType, {}, who, whole ? 1 : d.below(3)});
        steps.push_back({SetComport, {}, who, whole ? who : d.between(-1, kMostPorts - 1)});
        for (int which = 0; which < 3; ++which) {
            steps.push_back({Handler, {}, who, which, whole || d.chance(60)});
        }
        if (d.chance(70)) {
            steps.push_back({OpenPort, {}, who});
        }
        return steps;
    }

    static TStep feed(TDice& d)
    {
        QByteArray bytes;
        for (int i = d.between(1, d.chance(20) ? 8 : 3); i > 0; --i) {
            bytes += TWords(d).stretchOfWire();
        }
        return fed(d, port(d), bytes);
    }

    // Several lines, sometimes with something else between two reads.
    std::vector<TStep> lines(TDice& d)
    {
        TStep first = feed(d);
        if (!d.chance(20)) {
            return {first};
        }
        TStep second = first;
        first.bytes.truncate(d.below(int(first.bytes.size())));
        second.bytes.remove(0, first.bytes.size());
        first.cuts = second.cuts = {};
        return {first, any(d, false), second};
    }

    // A display of the width that its lines just fit, or nearly.
    static std::vector<TStep> knownWidthShown(TDice& d)
    {
        const int who = connector(d);
        std::vector<TStep> steps{{FromList, {"0.0.0.0", "000A"}, who}};
        for (int board = 0; board < 3; ++board) {
            steps.push_back({Width, {}, who, board, d.between(1, 24)});
        }
        steps.push_back({Command, {TWords(d).displayCommand()}, who});
        return steps;
    }

    // A command opens the port or writes, and what the command needs changes while it does.
    static std::vector<TStep> disturbedOpening(TDice& d)
    {
        const int who = connector(d);
        const TStep port{SetComport, {}, who, d.between(-1, kMostPorts - 1)};
        const TStep type{SetType, {}, who, d.below(3)};
        TStep step = d.chance(50) ? talk(d) : TStep{Command, {TWords(d).command()}, who};
        step.first = {d.pick({port, type, TStep{DestroyPort, {}, 0}, talk(d), talk(d)})};
        if (d.chance(40)) {
            step.first.push_back({Raise});
        }
        return {{SetComport, {}, who, 0}, {d.chance(70) ? ClosePort : OpenPort, {}, 0}, step};
    }

    // The first handler called destroys its connector, and may raise behind that.
    std::vector<TStep> destroyedByHandler(TDice& d)
    {
        TStep step = d.chance(50) ? TStep{PortError, {"gone"}, port(d), 5, d.chance(50)} : talk(d);
        step.first = {{DestroyConnector, {}, connector(d)}};
        if (d.chance(70)) {
            step.first.push_back({Raise});
        }
        std::vector<TStep> steps{step};
        append(steps, create(d, 0, true));
        return steps;
    }

    static TStep talk(TDice& d)
    {
        TWords say(d);
        TStep step{d.pick<int>({Command, Command, Command, Command, Direct, HandOver, Diagnostic, FromList,
                                Process, Process, Process})};
        step.a = connector(d);
        if (step.kind == Command) {
            step.text = {say.command()};
        } else if (step.kind == Diagnostic) {
            step.text = {"", ""};
            say.diagnostic(step.text[0], step.text[1]);
        } else {
            const QString ip = say.ip();
            step.text = {ip, step.kind == FromList ? say.address() : say.hostLine()};
        }
        return step;
    }

    static TStep setting(TDice& d)
    {
        const int who = connector(d);
        const TStep port{SetComport, {}, who, d.chance(20) ? -1 : TConnectorStage::port(d)};
        const TStep handler{Handler, {}, who, d.below(3), d.pick({0, 1, 1, 2})};
        const TStep connected{SetConnected, {}, who, d.below(2), d.below(2)};
        const TStep width{Width, {}, who, d.below(8), d.pick({-1, 0, 1, 2, 5, 10, 16, 20, 21, -20, 300})};
        const TStep time{Advance, {}, d.pick({1, 999, 1000, 1001, 60'000, 86'400'000})};
        const TStep type{SetType, {}, who, d.chance(60) ? 1 : d.below(3)};
        const TStep ask{GetConnected, {}, who, d.below(2)};
        const TStep end{d.chance(30) ? DestroyConnector : CloseAll, {}, who};
        return d.pick({port, port, type, handler, handler, connected, connected, ask, width, width, time,
                       time, TStep{CloseAll, {}, who}, end});
    }

    static TStep portStep(TDice& d)
    {
        const QString text = d.text({"no such device", "", "Доступ запрещён"});
        const int kind = d.pick<int>(
            {OpenPort, OpenPort, ClosePort, Fail, Fail, PortError, PortError, NewPort, DestroyPort});
        if (kind == Fail) {
            return {Fail, d.chance(45) ? QStringList{text} : QStringList(), port(d), d.below(3)};
        }
        return {kind, {text}, port(d), d.pick<qint64>({0, 0, 1, 5, -1, 1'099'511'627'776}), d.chance(45)};
    }

    // ---- one telling for both sides

    void hook(const TStep& step, TConnector* made)
    {
        const qint64 way = step.b;
        const QString who = QString::number(step.a);
        if ((way & (ovAsk | ovAlways | ovNever)) != 0) {
            made->ConnectedHook = [this, who, way, made] {
                note(who + " asked");
                return (way & ovAsk) != 0 ? made->BaseConnected() : (way & ovAlways) != 0;
            };
        }
        if ((way & (ovWatch | ovSwallow)) != 0) {
            made->DirectHook = [this, who, way, made](const QString& ip, const QString& line) {
                note(who + " direct " + shown(ip) + " " + shown(line));
                if ((way & ovWatch) != 0) {
                    made->BaseDirect(ip, line);
                }
            };
        }
    }

    void performOn(TConnector& connector, const TStep& step)
    {
        const QStringList& t = step.text;
        switch (step.kind) {
        case SetComport:
            return connector.SetComport(ground.port(step.b));
        case SetType:
            return void(connector.setProperty("ConnectorType", int(step.b)));
        case Handler:
            return setHandler(step, connector);
        case SetConnected:
            return step.c != 0 ? void(connector.setProperty("IsConnected", step.b != 0))
                               : connector.SetConnected(step.b != 0);
        case GetConnected:
            return note(
                shown({step.b != 0 ? connector.property("IsConnected").toBool() : connector.GetConnected()}));
        case CloseAll:
            return connector.CloseAll();
        case Command:
            return note("result " + shown(connector.SendCommand(said(0, t[0]))));
        case Direct:
            return connector.SendDirectCommand(said(0, t[0]), said(1, t[1]));
        case HandOver:
            return connector.GetCommand(said(1, t[1]));
        case Diagnostic:
            return note(shown(connector.GetDiagnosticValue(t[0], t[1])));
        case Process:
            return connector.ProcessDataToDevice(said(0, t[0]), said(1, t[1]));
        case FromList:
            return note(indexOf(connector, connector.GetDeviceFromList(t[0], t[1])));
        default:
            if (auto* const board = connector.DeviceItem(int(step.b))) {
                board->DisplayLine = int(step.c);
            }
        }
    }

    static QString indexOf(TConnector& connector, const void* board)
    {
        int index = 0;
        while (index < connector.DeviceCount() && connector.DeviceItem(index) != board) {
            ++index;
        }
        return QString::number(index);
    }

    void setHandler(const TStep& step, TConnector& connector)
    {
        static constexpr const char* kNames[] = {"error", "log", "route"};
        static const decltype(&TConnector::SetOnLog) setters[] = {
            &TConnector::SetOnError, &TConnector::SetOnLog, &TConnector::SetOnGetData};
        assign(connector, setters[step.b], int(step.c),
               teller(kNames[step.b], int(10 * step.a + step.c), FConnectors[std::size_t(step.a)]));
    }

    void lookAt(TConnector& connector, std::size_t who)
    {
        note(QStringLiteral("connector %1 type %2 port %3%4%5%6 boards %7")
                 .arg(who)
                 .arg(connector.property("ConnectorType").toInt())
                 .arg(ground.indexOf(connector.ComPort()))
                 .arg(connector.OnError() ? " error" : "", connector.OnLog() ? " log" : "",
                      connector.OnGetData() ? " route" : "")
                 .arg(connector.DeviceCount()));
        if (connector.DeviceItem(-1) || connector.DeviceItem(connector.DeviceCount())) {
            note("too many boards");
        }
        auto& known = FBoards[who];
        for (int i = 0; i < connector.DeviceCount(); ++i) {
            const auto* const board = connector.DeviceItem(i);
            if (std::size_t(i) == known.size()) {
                known.push_back(board);
            }
            note(QStringLiteral("board %1%2 %3 width %4 heard %5")
                     .arg(i)
                     .arg(known[std::size_t(i)] == board ? "" : " moved")
                     .arg(shown(board->IP) + shown(board->Device) + shown(board->DeviceType))
                     .arg(board->DisplayLine)
                     .arg(std::llround(board->LastPing * kMsPerDay)));
        }
    }

    TGround<World> ground;
    std::array<std::shared_ptr<TConnector>, kConnectors> FConnectors;
    std::array<std::vector<const void*>, kConnectors> FBoards; // where each record was when it appeared
    bool FDestroying = false;                                  // handlers may destroy connectors
};

} // namespace

TEST(ConnectorModel, PlaysLikeTheComponent)
{
    compare<TConnectorStage>(800,
                             kOnlyWithPositions + QStringList{"destroyed from the event loop", "remote: *"});
}

} // namespace tnv5::connector::model
