#include "sim/line_faults.h"

#include <QPointer>
#include <QScopeGuard>
#include <algorithm>

namespace tnv5::sim {

namespace {

constexpr int kPercent = 100;
constexpr int kByteValues = 256;
constexpr int kNoiseTries = 64; // for one byte that noise may contain
constexpr int kMostNoise = 4'096;

} // namespace

TLineFaults::TLineFaults(TByteStream& stream, std::mt19937::result_type seed) : FStream(stream), FRandom(seed)
{
    FStream.OnRead = [this](const QByteArray& bytes) {
        if (!FSilent) {
            deliver(bytes);
        }
    };
}

TLineFaults::~TLineFaults()
{
    FStream.OnRead = nullptr;
}

void TLineFaults::write(const QByteArray& bytes)
{
    if (bytes.isEmpty()) {
        return;
    }
    if (FSilent || FWaiting + bytes.size() > kMaxWaiting) {
        ++FLost;
        return;
    }
    const QByteArray spoilt = strikes(NoisePercent) ? noise() + bytes : bytes;
    if (CoalesceLines > 1) {
        hold(spoilt);
        return;
    }
    const QPointer<TLineFaults> self(this);
    release(); // what was held while coalescing was still on
    if (self) {
        spoil(spoilt, 1);
    }
}

void TLineFaults::setSilent(bool silent)
{
    FSilent = silent;
    if (!silent) {
        return;
    }
    FLost += FHeldLines;
    for (const TPiece& piece : FPieces) {
        FLost += piece.Lines;
    }
    FPieces.clear();
    FHeld.clear();
    FHeldLines = 0;
    FWaiting = 0;
    FGap.clear();
    FHolding.clear();
    FInGap = false;
}

bool TLineFaults::strikes(int percent)
{
    return percent > 0 && below(kPercent) < percent;
}

// The standard's distributions differ from library to library; this does not.
int TLineFaults::below(int limit)
{
    return limit > 1 ? int(FRandom() % std::mt19937::result_type(limit)) : 0;
}

QByteArray TLineFaults::noise()
{
    ++FNoisy;
    const int length = 1 + below(std::clamp(MaxNoiseBytes, 1, kMostNoise));
    QByteArray bytes;
    for (int tries = 0; bytes.size() < length && tries < length * kNoiseTries; ++tries) {
        const char byte = char(below(kByteValues));
        if (!NoiseAvoids.contains(byte)) {
            bytes += byte;
        }
    }
    return bytes;
}

void TLineFaults::hold(const QByteArray& bytes)
{
    FHeld += bytes;
    FWaiting += bytes.size();
    if (++FHeldLines >= CoalesceLines) {
        release();
    } else if (FHeldLines == 1) {
        FHolding.after(CoalesceMs, [this] { release(); });
    }
}

void TLineFaults::release()
{
    FHolding.clear();
    if (FHeldLines > 0) {
        const QByteArray bytes = std::exchange(FHeld, {});
        FWaiting -= bytes.size();
        spoil(bytes, std::exchange(FHeldLines, 0));
    }
}

void TLineFaults::spoil(const QByteArray& bytes, int lines)
{
    qsizetype pieces = 1;
    if (MaxPieces > 1 && bytes.size() > 1 && strikes(CutPercent)) {
        ++FCut;
        pieces = std::min<qsizetype>(2 + below(MaxPieces - 1), bytes.size());
    }
    qsizetype from = 0;
    int gap = 0;
    for (; pieces > 0; --pieces) {
        const qsizetype left = bytes.size() - from;
        const qsizetype length = pieces == 1 ? left : 1 + below(int(left - pieces + 1));
        FPieces.push_back({bytes.mid(from, length), gap, pieces == 1 ? lines : 0});
        from += length;
        gap = PieceGapMs;
    }
    FWaiting += bytes.size();
    pump();
}

void TLineFaults::pump()
{
    if (FPumping || FInGap) {
        return;
    }
    const QPointer<TLineFaults> self(this);
    FPumping = true;
    const auto done = qScopeGuard([&] {
        if (self) {
            FPumping = false;
        }
    });
    while (self && !FPieces.empty()) {
        if (const int gap = std::exchange(FPieces.front().GapMs, 0); gap > 0) {
            FInGap = true;
            FGap.after(gap, [this] {
                FInGap = false;
                pump();
            });
            return;
        }
        const QByteArray bytes = std::move(FPieces.front().Bytes);
        FPieces.pop_front();
        FWaiting -= bytes.size();
        FStream.write(bytes);
    }
}

} // namespace tnv5::sim
