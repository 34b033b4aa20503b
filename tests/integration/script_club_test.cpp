// One club on four simulated lines, run once by C++ and once by a script: the same events with the same
// values in the same order, and the same bytes on the lines.

#include "sim/board_bus.h"
#include "sim/classic_line.h"
#include "sim/memory_stream.h"
#include "sim/scales.h"
#include "support/fixture.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/js/js_engine.h"
#include "tnv5/registration/load.h"
#include "tnv5/scales/scales_device.h"
#include "tnv5/script/binding.h"
#include "tnv5/switch/switch_device.h"
#include "tnv5/turnstile/turnstile_device.h"

namespace tnv5::integration {
namespace {

using sim::TBehaviour;
using testkit::TMemoryPort;
using tests::TFixture;
using tests::wrote;

/// A port and the simulated devices on its other end.
struct TLineEnd
{
    TLineEnd(TFixture& fixture, const QString& name)
    {
        port.KeepWrites = false;
        port.OnWritten = [this, &fixture, name](const QByteArray& bytes) {
            fixture.trace.note(name + u' ' + wrote(bytes));
            stream.deliverLater(bytes);
        };
        stream.OnWritten = [this](const QByteArray& bytes) { port.feed(bytes); };
        port.Open();
    }

    struct TStream : sim::TByteStream
    {
        void write(const QByteArray& bytes) override { OnWritten(bytes); }
        void deliverLater(const QByteArray& bytes) { deliver(bytes); }
        std::function<void(const QByteArray&)> OnWritten;
    };
    TMemoryPort port;
    TStream stream;
};

struct TClub : TFixture
{
    TClub()
    {
        gates.addController("01A");
        gates.addController("02D");
        bus.addBoard("001T", 20);
        bus.addBoard("000A");
        bus.setPingInterval(500);
    }

    /// A quarter of an hour with people at all places.
    QStringList play()
    {
        for (int round = 0; round < 30; ++round) {
            gates.readCard("01A", round % 3 == 0 ? "M1" : "stranger");
            clock.advance(700);
            bus.readCard("001T", round % 2 == 0 ? "M2" : "stranger",
                         round % 4 == 0 ? TBehaviour::PassesThrough : TBehaviour::GivesUp);
            gates.pressButton("02D");
            clock.advance(12'000);
            scale.put(100 * round);
            bus.switchRelay("000A", 1, round % 2 == 0);
            clock.advance(17'300);
        }
        return trace.take();
    }

    TLineEnd gateLine{*this, "gates"};
    TLineEnd busLine{*this, "bus"};
    TLineEnd scaleLine{*this, "scale"};
    sim::TClassicLine gates{gateLine.stream};
    sim::TBoardBus bus{busLine.stream};
    sim::TSimulatedScale scale{scaleLine.stream, 2};
};

QString textOf(const QVariant& value)
{
    return value.toString();
}
QString textOf(int value)
{
    return QString::number(value);
}
QString textOf(const QImage&)
{
    return QStringLiteral("image");
}

/// A handler that writes all of its values into the trace.
auto noting(TFixture& club, const QString& word)
{
    return [&club, word](auto*, const auto&... values) {
        club.trace.note((QStringList{word} + QStringList{textOf(values)...}).join(u'|'));
    };
}

struct TCppClub : TClub
{
    TCppClub()
    {
        line.SetDeviceList({"01A", "02D"});
        line.SetComport(&gateLine.port);
        line.SetOnLog(noting(*this, "line log"));
        line.SetOnError(noting(*this, "line error"));
        line.SetOnCheckStatus(noting(*this, "line status"));
        line.SetOnGetImg(noting(*this, "line img"));
        line.SetOnCheckSQL(
            [this](auto*, auto& device, auto& card, auto& status, auto&, auto& mode, auto& result) {
                trace.note(QStringList{"line check", textOf(device), textOf(card), textOf(status),
                                       textOf(mode), textOf(result)}
                               .join(u'|'));
                result = mode.toInt() != 0 || card == "M1" || card == "-2-2-2-2-2" ? 1 : 0;
            });
        connector.SetConnectorType(connector::podComPort);
        connector.SetComport(&busLine.port);
        connector.SetOnLog(noting(*this, "bus log"));
        gate.SetConnector(&connector);
        gate.SetRelayOpen(1);
        gate.SetOnLog(noting(*this, "gate log"));
        gate.SetOnCheckStatus(noting(*this, "gate status"));
        gate.SetOnCheckSQL([this](auto*, auto&, auto& device, auto& type, auto& card, auto& status, auto&,
                                  auto& mode, auto& mess, auto& result) {
            trace.note(QStringList{"gate check", textOf(device), textOf(type), textOf(card), textOf(status),
                                   textOf(mode), textOf(result)}
                           .join(u'|'));
            mess = "|Hello|" + card.toString() + "||||";
            result = mode.toInt() != 0 || card == "M2" ? 1 : 0;
        });
        lamps.SetConnector(&connector);
        connector.SetOnGetData([this](auto*, const QString& text) { // both hear everything
            trace.note("bus data|" + text);
            gate.p_hw_ProtocolIn(text);
            lamps.p_hw_ProtocolIn(text);
        });
        lamps.SetOnCheckStatus(noting(*this, "lamp status"));
        lamps.SetOnNewItem([this](auto*, auto& device, auto& relay, auto& status, auto& now, auto& wanted) {
            trace.note(QStringList{"lamp new", textOf(device), textOf(relay), textOf(status), textOf(now),
                                   textOf(wanted)}
                           .join(u'|'));
            wanted = "ON";
        });
        lamps.SetOnCheckSQL(noting(*this, "lamp check"));
        lamps.p_hw_CheckStatus("0.0.0.0", "000A", "1", "ON", 47'000.5);
        weigher.SetScalesType(2);
        weigher.SetComport(&scaleLine.port);
        weigher.SetOnLog(noting(*this, "scale log"));
        weigher.SetOnError(noting(*this, "scale error"));
        weigher.SetOnWeight([this](auto*, int weight) {
            trace.note("weight " + QString::number(weight));
            if (weight > 2'000) {
                line.p_hw_relay("01A", "2", 1);
            }
        });
        weigher.SetSendInterval(1'000);
    }
    turnstile::TTurnStylerDevice line;
    connector::TDeviceConnector connector;
    d24::TTurnStylerDeviceD24 gate;
    switching::TSwitchDevice lamps;
    scales::TScalesDevice weigher;
};

const char kScript[] = R"js(
const show = v => v === null ? '' : String(v);
const note = (...values) => print(values.map(show).join('|'));
const noting = word => (sender, ...values) => note(word, ...values);
const picture = word => (sender, device, img) => note(word, device, 'image');

const line = new TTurnStylerDevice();
line.DeviceList = ['01A', '02D'];
line.ComPort = gatePort;
line.OnLog = noting('line log');
line.OnError = noting('line error');
line.OnCheckStatus = noting('line status');
line.OnGetImg = picture('line img');
line.OnCheckSQL = (sender, device, card, status, img, mode, result) => {
    note('line check', device, card, status, mode, result.value);
    result.value = mode !== 0 || card === 'M1' || card === '-2-2-2-2-2' ? 1 : 0;
};

const connector = new TDeviceConnector();
connector.ConnectorType = podComPort;
connector.ComPort = busPort;
connector.OnLog = noting('bus log');

const gate = new TTurnStylerDeviceD24();
gate.Connector = connector;
gate.RelayOpen = 1;
gate.OnLog = noting('gate log');
gate.OnCheckStatus = noting('gate status');
gate.OnCheckSQL = (sender, ip, device, type, card, status, img, mode, mess, result) => {
    note('gate check', device, type, card, status, mode, result.value);
    mess.value = '|Hello|' + card + '||||';
    result.value = mode !== 0 || card === 'M2' ? 1 : 0;
};

const lamps = new TSwitchDevice();
lamps.Connector = connector;
connector.OnGetData = (sender, text) => { // both hear everything
    note('bus data', text);
    gate.p_hw_ProtocolIn(text);
    lamps.p_hw_ProtocolIn(text);
};
lamps.OnCheckStatus = noting('lamp status');
lamps.OnNewItem = (sender, device, relay, status, now, wanted) => {
    note('lamp new', device, relay, status, now, wanted.value);
    wanted.value = 'ON';
};
lamps.OnCheckSQL = (sender, device, relay, status, now, mode, result) =>
    note('lamp check', device, relay, status, now, mode, result.value);
lamps.p_hw_CheckStatus('0.0.0.0', '000A', '1', 'ON', 47000.5);

const weigher = new TScalesDevice();
weigher.ScalesType = 2;
weigher.ComPort = scalePort;
weigher.OnLog = noting('scale log');
weigher.OnError = noting('scale error');
weigher.OnWeight = (sender, weight) => {
    print('weight ' + weight);
    if (weight > 2000) {
        line.p_hw_relay('01A', '2', 1);
    }
};
weigher.SendInterval = 1000;
)js";

struct TScriptClub : TClub
{
    TScriptClub()
    {
        registration::load(engine);
        engine.setTimeBudget(std::chrono::minutes(10));
        engine.OnPrint = [this](const QString& text) { trace.note(text); };
        engine.OnError = [this](const js::TScriptFailure& failure) { trace.note(failure.message()); };
        engine.RegisterObject("gatePort", &gateLine.port);
        engine.RegisterObject("busPort", &busLine.port);
        engine.RegisterObject("scalePort", &scaleLine.port);
        engine.evaluate(QString::fromUtf8(kScript), "club.js");
    }
    ~TScriptClub() { registration::unload(); }
    TScriptClub(const TScriptClub&) = delete;
    TScriptClub& operator=(const TScriptClub&) = delete;
    js::TJsEngine engine;
};

template <class Club>
QStringList playOf()
{
    return std::make_unique<Club>()->play();
}

TEST(ScriptClub, LeavesTheSameTraceAsTheSameClubInCpp)
{
    const QStringList cpp = playOf<TCppClub>();
    const QStringList script = playOf<TScriptClub>();
    for (qsizetype i = 0; i < std::min(cpp.size(), script.size()); ++i) {
        ASSERT_EQ(cpp[i].toStdString(), script[i].toStdString()) << "line " << i;
    }
    EXPECT_EQ(cpp.size(), script.size());
    for (const char* word :
         {"line log", "line status", "line check|01A|M1|NEW|0|-1", "line check|02D|-2-2-2-2-2",
          "line check|01A|M1|FINISH|2", "bus log", "bus data", "gate log", "gate status",
          "gate check|001T|T|M2|NEW|0|-1", "gate check|001T|T|M2|TIMEOUT|1", "lamp status", "lamp check",
          "scale log", "weight 2900", "gates write $01A2", "bus write", "scale write"}) {
        EXPECT_TRUE(std::any_of(script.begin(), script.end(), [&](const QString& each) {
            return each.startsWith(QLatin1String(word));
        })) << word;
    }
}

} // namespace
} // namespace tnv5::integration
