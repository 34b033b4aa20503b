#include "model/kit/model_world.h"

#include <algorithm>

namespace tnv5::modelkit {

namespace {

constexpr qsizetype kLongestPacket = 65'536; // with its start and stop string

} // namespace

TBranch::TBranch(const char* text) : name(text)
{
    branches().push_back(this);
}

std::vector<TBranch*>& branches()
{
    static std::vector<TBranch*> all;
    return all;
}

// ---- time

TModelTimer::TModelTimer(TModelWorld& world, int interval, std::function<void()> tick)
    : FWorld(world), FInterval(interval), FTick(std::move(tick))
{
    FWorld.clock.FTimers.push_back(this);
}

TModelTimer::~TModelTimer()
{
    std::erase(FWorld.clock.FTimers, this);
}

void TModelTimer::arm()
{
    FDue = FEnabled && FInterval > 0 ? std::optional(FWorld.clock.nowMs() + FInterval) : std::nullopt;
}

void TModelTimer::setEnabled(bool value)
{
    if (FEnabled != value) {
        FEnabled = value;
        arm();
    }
}

void TModelTimer::setInterval(int ms)
{
    FInterval = ms;
    arm();
}

void TModelClock::advance(qint64 ms)
{
    const qint64 target = FNow + ms;
    while (true) {
        TModelTimer* next = nullptr;
        for (TModelTimer* const timer : FTimers) {
            if (timer->FDue && *timer->FDue <= target && (next == nullptr || *timer->FDue < *next->FDue)) {
                next = timer;
            }
        }
        if (next == nullptr) {
            break;
        }
        FNow = qMax(FNow, *next->FDue);
        *next->FDue += next->FInterval;
        next->FWorld.guarded(next->FTick);
    }
    FNow = qMax(FNow, target);
}

void TModelClock::jumpTo(qint64 ms)
{
    for (TModelTimer* const timer : FTimers) {
        if (timer->FDue) {
            *timer->FDue += ms - FNow;
        }
    }
    FNow = ms;
}

// ---- splitter

void TModelSplitter::attach(TModelPort* port)
{
    if (FInside) {
        hit<"splitter: attaching throws half a packet away">();
    }
    if (FPort != nullptr) {
        std::erase(FPort->FSplitters, this);
    }
    FPort = port;
    if (port != nullptr) {
        port->FSplitters.push_back(this);
    }
    FBuffer.clear();
    FInside = false;
    ++FAttachments;
}

void TModelSplitter::append(const QByteArray& bytes)
{
    FBuffer += bytes;
    if (FAsking) {
        hit<"splitter: a read in a search">();
        return; // the search under way goes on with it
    }
    if (FDelivering > 0) {
        hit<"splitter: a read in a packet">();
    }
    try {
        for (int rounds = 0; !FBuffer.isEmpty() && step(); ++rounds) {
            if (rounds == 1) {
                hit<"splitter: again in one read">();
            }
        }
    } catch (const TGone&) {
        hit<"splitter: gone in a search">();
    }
}

/// One round; false when the next read must be awaited.
bool TModelSplitter::step()
{
    if (!FInside) {
        const TAnswer answer = ask(OnStart);
        if (answer.obsolete) {
            hit<"splitter: attached in a search">();
            return true;
        }
        FStartLength = answer.position == -1 ? Start.size() : -1;
        const qsizetype begin = FStartLength < 0  ? answer.position - 1
                                : Start.isEmpty() ? -1
                                                  : FBuffer.indexOf(Start);
        if (begin < 0) {
            hit<"splitter: no start">();
            FBuffer.clear(); // no start string is longer than one byte: nothing can be the beginning of one
            return false;
        }
        either<"splitter: start position", "splitter: start string">(FStartLength < 0);
        if (begin > 0) {
            hit<"splitter: noise before a start">();
        }
        FBuffer.remove(0, begin);
        FInside = true;
    }
    return takePacket();
}

bool TModelSplitter::takePacket()
{
    const TAnswer answer = ask(OnStop);
    if (answer.obsolete) {
        hit<"splitter: attached in a search">();
        return true;
    }
    const bool byString = answer.position == -1;
    const qsizetype begin = byString ? qMax<qsizetype>(FStartLength, 0) : 0;
    qsizetype end = answer.position;
    qsizetype taken = answer.position;
    if (byString) {
        end = Stop.isEmpty() ? -1 : FBuffer.indexOf(Stop, begin);
        taken = end < 0 ? 0 : end + Stop.size();
    }
    if (taken > 0 ? taken > kLongestPacket : FBuffer.size() >= kLongestPacket) {
        hit<"splitter: packet too long">();
        FBuffer.remove(0, kLongestPacket);
        FInside = false;
        return true;
    }
    if (taken <= 0) {
        hit<"splitter: unfinished packet">();
        return false;
    }
    if (FStartLength < 0) {
        either<"splitter: stop string behind a start position", "splitter: stop position">(byString);
    } else {
        either<"splitter: stop string", "splitter: stop position behind a start string">(byString);
    }
    const QByteArray packet = FBuffer.mid(begin, end - begin);
    FBuffer.remove(0, taken);
    FInside = false;
    hand(packet);
    return true;
}

void TModelSplitter::hand(const QByteArray& packet)
{
    if (packet.isEmpty()) {
        hit<"splitter: empty packet">();
    } else if (!Start.isEmpty() && packet.contains(Start)) {
        hit<"splitter: start inside a packet">();
    }
    ++FDelivering;
    FWorld.guarded([&] { FOnPacket(packet); });
    --FDelivering;
}

TModelSplitter::TAnswer TModelSplitter::ask(const TAsk& handler)
{
    TAnswer answer;
    if (!handler) {
        return answer;
    }
    const int attachments = FAttachments;
    FAsking = true;
    try {
        handler(QByteArray(FBuffer), answer.position);
    } catch (const TFailure&) {
        hit<"splitter: a search raises">();
        answer.position = 0; // counts as not found
        FWorld.report();
    }
    FAsking = false;
    answer.obsolete = attachments != FAttachments;
    return answer;
}

// ---- port

/// False when the hook has destroyed the port: then the operation ends quietly, and what the hook raised
/// besides is reported.
template <class... Args>
bool TModelPort::outlives(const std::function<void(Args...)>& hook, const Args&... args)
{
    if (const auto handler = hook) {
        try {
            handler(args...);
        } catch (...) {
            if (!FDead) {
                throw;
            }
            FWorld.report();
        }
    }
    if (FDead) {
        hit<"port: destroyed inside its own operation">();
    }
    return !FDead;
}

void TModelPort::Open()
{
    if (FOpen || !outlives(OnOpening)) {
        return;
    }
    if (OpenFailure) {
        throw TFailure{*OpenFailure};
    }
    FOpen = true;
}

void TModelPort::Close()
{
    if (!outlives(OnClosing)) {
        return;
    }
    if (CloseFailure) {
        throw TFailure{*CloseFailure};
    }
    FOpen = false;
}

void TModelPort::Write(const QByteArray& bytes)
{
    if (!FOpen) {
        throw TFailure{"Port " + FPort + " is not open"};
    }
    if (!outlives(OnWriting)) {
        return;
    }
    if (WriteFailure) {
        throw TFailure{*WriteFailure};
    }
    outlives<const QByteArray&>(OnWritten, bytes);
}

void TModelPort::feed(const QByteArray& bytes)
{
    if (!FReads.empty()) {
        hit<"port: a read inside a read">();
    }
    FReads.push_back({bytes, FSplitters});
    // A handler that feeds comes here again: the reads still under way are finished first.
    while (!FDead && !FReads.empty()) {
        TRead& read = FReads.front();
        if (read.next == read.splitters.size()) {
            FReads.pop_front();
            continue;
        }
        TModelSplitter* const splitter = read.splitters[read.next++];
        const QByteArray piece = read.bytes;
        if (splitter->attachedTo(this)) {
            splitter->append(piece);
        } else {
            hit<"port: a splitter leaves during a read">();
        }
    }
}

void TModelPort::raiseErrorInside(const QString& message, qint64 osError)
{
    if (!OnException) {
        hit<"port: an error that nobody takes">();
    }
    outlives<const QString&, qint64>(OnException, message, osError);
}

void TModelPort::raiseError(const QString& message, qint64 osError)
{
    FWorld.guarded([&] { raiseErrorInside(message, osError); });
}

// ---- world

TModelWorld::TModelWorld(qint64 startMs, bool usesCyrillic, std::function<void(const QString&)> unhandled)
    : cyrillic(usesCyrillic), FUnhandled(std::move(unhandled))
{
    clock.jumpTo(startMs);
}

void TModelWorld::raise(ERaise kind, const QString& text)
{
    throw TFailure{kind == ERaise::Abort     ? QStringLiteral("Operation aborted")
                   : kind == ERaise::Unknown ? QStringLiteral("Unknown exception")
                                             : text,
                   kind};
}

QString TModelWorld::caught()
{
    try {
        throw;
    } catch (const TFailure& failure) {
        return QString::number(int(failure.kind)) + u' ' + failure.text;
    } catch (...) {
        return QStringLiteral("what must not leave a component");
    }
}

void TModelWorld::report() const
{
    try {
        throw;
    } catch (const TGone&) {
        hit<"destroyed from the event loop">();
    } catch (const TFailure& failure) {
        if (!either<"an abort is silent", "an exception reaches the event loop">(failure.kind ==
                                                                                 ERaise::Abort)) {
            FUnhandled(failure.text);
        }
    }
}

} // namespace tnv5::modelkit
