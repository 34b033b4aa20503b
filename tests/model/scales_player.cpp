#include "model/scales_player.h"

#include "model/scales_readable.h"

namespace tnv5::scales::model {

namespace {

constexpr int kDeepest = 3;
constexpr int kMostNested = 40;
constexpr int kMostPasses = 80;

const char* eventName(TEvent event)
{
    static constexpr const char* kNames[] = {"log",     "error",   "weight", "opening",  "closing",
                                             "writing", "written", "wait",   "unhandled"};
    return kNames[size_t(event)];
}

std::string yes(bool value)
{
    return value ? "true" : "false";
}

} // namespace

TPlayer::TPlayer(std::unique_ptr<TSide> side, const TTemper& temper, quint64 seed)
    : FSide(std::move(side)), FTemper(temper), FRandom(seed)
{
    FSide->host = [this](TEvent event, const QString& text) { hear(event, text); };
    FSide->startAt(temper.start);
}

TView TPlayer::view() const
{
    if (!FSide->exists()) {
        return {};
    }
    return {true, FSide->scalesType(), FSide->lastWeight(), FAsked};
}

void TPlayer::note(const std::string& line)
{
    FTrace.push_back(std::string(size_t(FDepth) * 2, ' ') + line);
}

void TPlayer::play(const TAction& action)
{
    FNested = 0;
    FPasses = 0;
    perform(action);
    writeState();
}

void TPlayer::hear(TEvent event, const QString& text)
{
    note(std::string(eventName(event)) + ' ' + readable(text));
    if (event == TEvent::Unhandled) {
        return;
    }
    if (event == TEvent::Written) {
        FAsked = text == QStringLiteral("E") || text == QString(QChar(0x11));
    }
    struct TDeeper
    {
        explicit TDeeper(int& depth) : FDepth(depth) { ++FDepth; }
        ~TDeeper() { --FDepth; }
        Q_DISABLE_COPY_MOVE(TDeeper)
        int& FDepth;
    };
    const TDeeper deeper(FDepth);
    if (FDepth == 1) {
        FPassing = event == TEvent::Wait;
    }
    if (event == TEvent::Wait) {
        pass();
    } else if (FDepth <= kDeepest && FNested < kMostNested) {
        interfere(event);
    }
}

/// What a handler does, or the scale when something was written to it.
void TPlayer::interfere(TEvent event)
{
    if (event == TEvent::Written && FRandom.chance(FTemper.answers)) {
        ++FNested;
        perform(anyFeed(FRandom, view(), FTemper));
    }
    if (event == TEvent::Weight && FTemper.interference > 0 && FRandom.chance(30)) {
        interfereWithWeight();
    }
    if (FRandom.permille(FTemper.interference)) {
        ++FNested;
        perform(anyAction(FRandom, view(), FTemper));
    }
    if (FRandom.permille(FTemper.raising)) {
        perform({.what = TDo::Raise,
                 .number = FRandom.below(4),
                 .text = QStringLiteral("trouble"),
                 .careless = true});
    }
}

void TPlayer::interfereWithWeight()
{
    ++FNested;
    const int weight = qMin(view().lastWeight, 1'000'000);
    perform(FRandom.pick<TAction>({{.what = TDo::LastWeight, .number = weight + FRandom.below(3)},
                                   {.what = TDo::LastWeight, .number = -1},
                                   {.what = TDo::GetWeight},
                                   {.what = TDo::Handler, .number = int(TEvent::Weight)},
                                   {.what = TDo::Destroy}}));
}

/// One pass of the message loop; a wait must end, so that time goes on in each.
void TPlayer::pass()
{
    if (++FPasses > kMostPasses) {
        FSide->raise(QStringLiteral("the host gives up waiting"), false);
    }
    const int kind = FPasses > kMostPasses / 2 ? 100 : FRandom.below(100);
    if (FDepth <= kDeepest && FNested < kMostNested) {
        if (kind < 35) {
            ++FNested;
            perform(anyFeed(FRandom, view(), FTemper));
        } else if (FRandom.permille(FTemper.interference * 2)) {
            ++FNested;
            perform(anyAction(FRandom, view(), FTemper));
        }
    }
    const qint64 ms = FRandom.pick({1, 10, 50, 100, 500, 999, 1000, 2000, 3000, 3999, 4000, 4001});
    perform({.what = TDo::Advance, .ms = ms, .careless = true});
}

void TPlayer::perform(const TAction& action)
{
    note("* " + describe(action));
    if (action.careless) {
        act(action);
        return;
    }
    try {
        act(action);
    } catch (...) {
        note("raises " + readable(FSide->caught()));
    }
}

void TPlayer::act(const TAction& action)
{
    switch (action.what) {
    case TDo::Feed: {
        qsizetype at = 0;
        for (const int size : action.cuts) {
            FSide->feed(action.number, action.bytes.mid(at, size));
            at += size;
        }
        FSide->feed(action.number, action.bytes.mid(at));
        break;
    }
    case TDo::Advance:
        FSide->advance(action.ms);
        break;
    case TDo::Jump:
        FSide->jump(FSide->now() + action.ms);
        break;
    case TDo::HostOpen:
        FSide->openByHost(action.number);
        break;
    case TDo::HostClose:
        FSide->closeByHost(action.number);
        break;
    case TDo::Fault:
        FSide->setFault(action.number, TFault(action.other),
                        action.text.isEmpty() ? std::nullopt : std::optional(action.text));
        break;
    case TDo::Name:
        FSide->setName(action.number, action.text);
        break;
    case TDo::Settings:
        FSide->setSettings(action.number, action.settings);
        break;
    case TDo::RenewPort:
        if (FDepth == 0 || (FDepth == 1 && FPassing)) { // not while it may be at work
            FSide->renewPort(action.number);
        }
        break;
    case TDo::Create:
        if (FDepth == 0 && !FSide->exists()) {
            FSide->create(FTemper.design);
        }
        break;
    case TDo::Raise:
        FSide->raise(action.text, action.number == 0);
        break;
    default:
        if (FSide->exists()) {
            actOnComponent(action);
        }
    }
}

void TPlayer::actOnComponent(const TAction& action)
{
    switch (action.what) {
    case TDo::GetWeight:
    case TDo::WeighAndWait:
        note("weight is " + std::to_string(FSide->getWeight(action.what == TDo::GetWeight)));
        break;
    case TDo::SetType:
        FSide->setScalesType(action.number);
        break;
    case TDo::SetUp:
        FSide->setUpComport();
        break;
    case TDo::SetComport:
        FSide->setComport(action.number);
        break;
    case TDo::Reset:
        FSide->reset();
        break;
    case TDo::Connect:
        note("connection " + yes(FSide->setConnection(action.number != 0)));
        break;
    case TDo::Interval:
        FSide->setSendInterval(action.number);
        break;
    case TDo::LastWeight:
        FSide->setLastWeight(action.number);
        break;
    case TDo::Lang:
        FSide->setLang(action.number);
        break;
    case TDo::Handler:
        FSide->assignHandler(TEvent(action.number), action.other);
        break;
    case TDo::Write:
        FSide->writeToPort(action.text);
        break;
    case TDo::Destroy:
        FSide->destroy();
        break;
    case TDo::Message:
        note("message " + readable(FSide->message(action.number)));
        break;
    case TDo::List:
        note("list " + readable(FSide->list().join(u'|')));
        break;
    default:
        help(action);
    }
}

void TPlayer::help(const TAction& action)
{
    note("digits " + readable(FSide->digitsOnly(action.text)));
    note("replaced " + readable(FSide->replaceStr(action.text, action.more, QString::number(action.number))));
    note("lrc " + std::to_string(FSide->lrc(action.text)));
    note("between " + yes(FSide->between(action.first, action.second, action.other)));
    note("bits " + readable(FSide->byteToBin(action.number & 255)));
    QString bits = QString::number(uint(action.number), 2);
    if (action.number % 3 == 0) {
        bits = action.text + bits;
    }
    note("int " + std::to_string(FSide->binToInt(bits)) + ", byte " + std::to_string(FSide->binToByte(bits)));
}

void TPlayer::writeState()
{
    std::string state = "= now " + std::to_string(FSide->now());
    for (int port = 0; port < kPorts; ++port) {
        const TPortState p = FSide->portState(port);
        for (const int value : {p.baudRate, p.dataBits, p.parity, p.stopBits, p.readGap, int(p.connected)}) {
            state += (value == p.baudRate ? " port " : "/") + std::to_string(value);
        }
    }
    if (FSide->exists()) {
        state += " type " + std::to_string(FSide->scalesType()) + " weight " +
                 std::to_string(FSide->lastWeight()) + " lang " + std::to_string(FSide->lang()) +
                 " interval " + std::to_string(FSide->sendInterval()) + " port " +
                 std::to_string(FSide->comport()) + " connected " + yes(FSide->isConnected());
    }
    note(state);
}

} // namespace tnv5::scales::model
