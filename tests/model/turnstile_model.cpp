#include "model/turnstile_core.h"

#include "tnv5/platform/errors.h"

#include <algorithm>

namespace tnv5::turnstile::model {

namespace {

// The upper half of windows-1251; 0x98 is not assigned and stays as it is.
constexpr char16_t kUpperHalf[] = u"ЂЃ‚ѓ„…†‡€‰Љ‹ЊЌЋЏђ‘’“”•–—\u0098™љ›њќћџ"
                                  u"\u00A0ЎўЈ¤Ґ¦§Ё©Є«¬\u00AD®Ї°±Ііґµ¶·ё№є»јЅѕї"
                                  u"АБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯабвгдежзийклмнопрстуфхцчшщъыьэюя";
constexpr std::size_t kHalf = 128;
static_assert(std::size(kUpperHalf) == kHalf + 1);

constexpr qsizetype kLongestPacket = 65'536; // with its start and stop character

std::vector<TBranch*>& registry()
{
    static std::vector<TBranch*> all;
    return all;
}

} // namespace

TCounter::TCounter(const char* text) : TBranch{text}
{
    registry().push_back(this);
}

const std::vector<TBranch*>& branches()
{
    return registry();
}

QString textOf(const QByteArray& bytes)
{
    QString text;
    for (const char byte : bytes) {
        const auto code = static_cast<uchar>(byte);
        text += code < kHalf ? QChar(code) : QChar(kUpperHalf[code - kHalf]);
    }
    return text;
}

QByteArray bytesOf(const QString& text)
{
    QByteArray bytes;
    for (const QChar character : text) {
        const auto* const end = std::end(kUpperHalf) - 1;
        const auto* const found = std::find(std::begin(kUpperHalf), end, character.unicode());
        if (character.unicode() < kHalf) {
            bytes += static_cast<char>(character.unicode());
        } else if (found != end) {
            bytes += static_cast<char>(kHalf + static_cast<std::size_t>(found - std::begin(kUpperHalf)));
        } else {
            bytes += '?';
        }
    }
    return bytes;
}

// ---- splitters and timer

void TModelGate::TSplitter::append(const QByteArray& bytes)
{
    buffer += bytes;
    while (true) {
        const qsizetype begin = buffer.indexOf(start);
        if (begin < 0) {
            if (!buffer.isEmpty()) {
                hit<"splitter: no start">();
            }
            buffer.clear();
            return;
        }
        if (begin > 0) {
            hit<"splitter: noise before a start">();
            buffer.remove(0, begin);
        }
        const qsizetype stop = buffer.indexOf('\r');
        if (stop >= 0 && stop < kLongestPacket) {
            const QByteArray body = buffer.mid(1, stop - 1);
            buffer.remove(0, stop + 1);
            if (body.isEmpty()) {
                hit<"splitter: empty packet">();
            } else if (body.contains(start)) {
                hit<"splitter: start inside a packet">();
            }
            const auto handler = packet;
            handler(body);
        } else if (buffer.size() >= kLongestPacket) {
            hit<"splitter: packet too long">();
            buffer.remove(0, kLongestPacket);
        } else {
            hit<"splitter: unfinished packet">();
            return;
        }
    }
}

/// The exception being handled reaches the event loop.
void TModelGate::TCore::toLoop() const
{
    try {
        throw;
    } catch (const TGone&) {
        hit<"destroyed from the event loop">();
    } catch (const platform::EAbort&) {
        hit<"silent end">();
    } catch (...) {
        hit<"exception to the event loop">();
        owner.FHost.unhandled(raisedText());
    }
}

template <class Body>
void TModelGate::TCore::fromLoop(Body body)
{
    try {
        body();
    } catch (...) {
        toLoop();
    }
}

TModelGate::TCore::TCore(TModelGate& gate, bool inDesigner) : owner(gate), designing(inDesigner)
{
    for (const char start : {'$', '#'}) {
        const auto splitter = std::make_shared<TSplitter>();
        splitter->start = start;
        splitter->packet = [this, start](const QByteArray& body) {
            fromLoop([&] { line(QChar(start) + textOf(body)); });
        };
        splitters.push_back(splitter);
    }
}

void TModelGate::TCore::attach(const std::shared_ptr<TPort>& to)
{
    if (to == port) {
        hit<"the same port again">();
        return;
    }
    if (either<"port in the designer", "port attached">(designing)) {
        port = to;
        return;
    }
    for (const auto& splitter : splitters) {
        if (splitter->port) {
            std::erase(splitter->port->splitters, splitter);
        }
        splitter->buffer.clear();
        splitter->port = to;
        if (to) {
            to->splitters.push_back(splitter);
        }
    }
    port = to;
}

void TModelGate::TCore::rearm()
{
    due = timerEnabled && interval > 0 ? std::optional(owner.FNow + interval) : std::nullopt;
}

void TModelGate::TCore::setTimerEnabled(bool value)
{
    if (!designing && timerEnabled != value) {
        timerEnabled = value;
        rearm();
    }
}

void TModelGate::TCore::setTimerInterval(int ms)
{
    const bool before = timerEnabled;
    setTimerEnabled(false);
    interval = ms;
    setTimerEnabled(before);
}

void TModelGate::TCore::tick()
{
    fromLoop([this] { pass(); });
}

// ---- gate

TModelGate::TModelGate(IHost& host, qint64 startMs) : FHost(host), FNow(startMs)
{
    for (int index = 0; index < kPorts; ++index) {
        FPorts[static_cast<std::size_t>(index)] = std::make_shared<TPort>();
        FPorts[static_cast<std::size_t>(index)]->index = index;
    }
}

TModelGate::~TModelGate()
{
    if (FCore) {
        destroy();
    }
}

void TModelGate::create(bool designing)
{
    FCore = std::make_shared<TCore>(*this, designing);
}

void TModelGate::destroy()
{
    FCore->designing = false; // so that the splitters leave the port
    FCore->attach(nullptr);
    FCore->gone = true;
    FCore->due.reset();
    FCore.reset();
}

void TModelGate::feed(int port, const QByteArray& bytes)
{
    deliver(FPorts[static_cast<std::size_t>(port)], bytes);
}

void TModelGate::deliver(const std::shared_ptr<TPort>& port, const QByteArray& bytes)
{
    if (!port->reads.empty()) {
        hit<"a read inside a read">();
    }
    port->reads.push_back({bytes, port->splitters});
    const auto core = FCore; // a splitter calls into it to the end
    while (!port->gone && !port->reads.empty()) {
        TPort::TRead& read = port->reads.front();
        if (read.next == read.splitters.size()) {
            port->reads.pop_front();
            continue;
        }
        const QByteArray piece = read.bytes;
        const auto splitter = read.splitters[read.next++];
        if (splitter->port == port) {
            splitter->append(piece);
        }
    }
}

void TModelGate::setOpen(int port, bool open)
{
    FPorts[static_cast<std::size_t>(port)]->open = open;
}

void TModelGate::setWriteFailure(int port, const QString& message)
{
    FPorts[static_cast<std::size_t>(port)]->writeFailure = message;
}

void TModelGate::renewPort(int port)
{
    auto& place = FPorts[static_cast<std::size_t>(port)];
    place->gone = true;
    for (const auto& splitter : place->splitters) {
        splitter->port.reset();
    }
    if (FCore && FCore->port == place) {
        FCore->port.reset();
    }
    place = std::make_shared<TPort>();
    place->index = port;
}

void TModelGate::assignPort(int port)
{
    FCore->attach(port == kNoPort ? nullptr : FPorts[static_cast<std::size_t>(port)]);
}

int TModelGate::assignedPort() const
{
    return FCore->port ? FCore->port->index : kNoPort;
}

void TModelGate::advance(qint64 ms)
{
    const qint64 target = FNow + ms;
    while (FCore && FCore->due && *FCore->due <= target) {
        const auto core = FCore;
        const qint64 when = *core->due;
        FNow = std::max(FNow, when);
        core->due = when + core->interval;
        core->tick();
    }
    FNow = std::max(FNow, target);
}

void TModelGate::jumpTo(qint64 ms)
{
    if (FCore && FCore->due) {
        *FCore->due += ms - FNow;
    }
    FNow = ms;
}

void TModelGate::setNumber(TNumber which, int value)
{
    FCore->numbers[static_cast<std::size_t>(which)] = value;
}

int TModelGate::number(TNumber which) const
{
    return FCore->numbers[static_cast<std::size_t>(which)];
}

void TModelGate::setText(TText which, const QString& value)
{
    (which == TText::DoorIndex ? FCore->doorIndex : FCore->server) = value;
}

QString TModelGate::text(TText which) const
{
    return which == TText::DoorIndex ? FCore->doorIndex : FCore->server;
}

void TModelGate::setMode(TMode mode)
{
    FCore->mode = mode;
}

TMode TModelGate::mode() const
{
    return FCore->mode;
}

void TModelGate::setDeviceList(const QStringList& addresses)
{
    FCore->devices = addresses;
}

QStringList TModelGate::deviceList() const
{
    return FCore->devices;
}

void TModelGate::assign(TEvent event, int handler)
{
    FCore->handlers[static_cast<std::size_t>(event)] = handler;
}

std::vector<TRecord> TModelGate::records() const
{
    std::vector<TRecord> all;
    for (const auto& record : FCore->stack) {
        all.push_back(*record);
    }
    return all;
}

void TModelGate::edit(int index, TField field, const QString& value)
{
    TRecord& record = *FCore->at(index);
    switch (field) {
    case TField::Card:
        record.card = value;
        break;
    case TField::Device:
        record.device = value;
        break;
    case TField::Status:
        record.status = value;
        break;
    case TField::StatusHard:
        record.statusHard = value;
        break;
    }
}

void TModelGate::editStart(int index, qint64 startMs)
{
    FCore->at(index)->startMs = startMs;
}

namespace {

/// Runs a method that the host calls; one that outlives the gate ends quietly.
template <class Result, class Body>
Result quietly(Result ifGone, Body body)
{
    try {
        return body();
    } catch (const TGone&) {
        hit<"destroyed inside a call">();
        return ifGone;
    }
}

template <class Body>
void quietly(Body body)
{
    quietly(0, [&] {
        body();
        return 0;
    });
}

} // namespace

void TModelGate::protocolIn(const QString& line)
{
    quietly([&, core = FCore] { core->line(line); });
}

int TModelGate::findDevice(const QString& device)
{
    const int index = FCore->find(device);
    either<"find: no pass", "find: a pass">(index < 0);
    return index;
}

int TModelGate::findDeviceByRelay(const QString& device, const QString& relay)
{
    return FCore->findByRelay(device, relay);
}

QString TModelGate::checkStatus(const QString& device, const QString& card, const QString& status)
{
    return quietly(QString(), [&, core = FCore] { return core->checkStatus(device, card, status); });
}

void TModelGate::callStackArray()
{
    quietly([core = FCore] { core->pass(); });
}

int TModelGate::sqlCheck(int index, int mode)
{
    return quietly(-1, [&, core = FCore] { return core->sql(core->at(index), mode); });
}

void TModelGate::sendComCommand(int index, int yesnot)
{
    quietly([&, core = FCore] { core->sendCom(core->at(index), yesnot); });
}

void TModelGate::relay(const QString& device, const QString& relay, int yesnot)
{
    quietly([&, core = FCore] { core->relay(device, relay, yesnot); });
}

void TModelGate::checkStatusAll()
{
    quietly([core = FCore] { core->poll(); });
}

bool TModelGate::checkTimeout(double first, double second, int limit)
{
    return either<"time-out", "no time-out">(TCore::elapsed(first, second, limit));
}

bool TModelGate::checkCrc(const QString& message)
{
    const QString last = message.right(2);
    return TCore::checksum(last) == last;
}

void TModelGate::setTimerInterval(int ms)
{
    FCore->setTimerInterval(ms);
}

void TModelGate::showStatus(TSender sender, const QStringList& values)
{
    quietly([&, core = FCore] { core->showStatus(sender, values); });
}

void TModelGate::serverEcho(const QString& text)
{
    quietly([&, core = FCore] { core->host([&] { FHost.echo(text); }); });
}

bool TModelGate::connected()
{
    return FCore->mode == TMode::Alone ? FCore->port && FCore->port->open : FHost.connected();
}

} // namespace tnv5::turnstile::model
