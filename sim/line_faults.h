#pragma once

#include "sim/byte_stream.h"
#include "sim/later.h"

#include <QObject>
#include <deque>
#include <random>

namespace tnv5::sim {

/// A bad cable, to order: stands between a device and its stream and spoils what the device sends.
///
///     TPty pty(QStringLiteral("gate"));
///     TLineFaults cable(pty, 42);
///     TClassicLine line(cable);
///     cable.CutPercent = 30;
///
/// With every fault off it passes everything on at once and unchanged. The same seed and the same writes give
/// the same faults. The order of lines is always kept. The stream must outlive it.
class TLineFaults final : public QObject, public TByteStream
{
    Q_OBJECT

public:
    /// Bytes that may wait in the cable; a line that would exceed this is lost whole.
    static constexpr qsizetype kMaxWaiting = 65'536;

    /// @param seed of the random choices
    explicit TLineFaults(TByteStream& stream, std::mt19937::result_type seed = 1);
    ~TLineFaults() override;

    void write(const QByteArray& bytes) override;

    /// Noise: how many lines of a hundred have one to `MaxNoiseBytes` random bytes in front.
    int NoisePercent = 0;
    int MaxNoiseBytes = 8;
    /// Bytes that noise never contains. By default the starts of lines, so that noise stays between lines;
    /// empty it and noise swallows lines as well.
    QByteArray NoiseAvoids = QByteArrayLiteral("$#");

    /// Cuts: how many lines of a hundred go out in two to `MaxPieces` pieces, `PieceGapMs` apart.
    int CutPercent = 0;
    int MaxPieces = 3;
    int PieceGapMs = 5;

    /// Coalescing: lines are held until there are so many, or the first has waited `CoalesceMs`, and go out
    /// in one write. 0 or 1 holds nothing.
    int CoalesceLines = 0;
    int CoalesceMs = 50;

    /// Silence: nothing gets through in either direction; what was on its way is lost.
    void setSilent(bool silent);
    bool silent() const { return FSilent; }

    qint64 noisyLines() const { return FNoisy; }
    qint64 cutLines() const { return FCut; }
    /// Lines lost to silence or to a full cable.
    qint64 lostLines() const { return FLost; }

private:
    struct TPiece
    {
        QByteArray Bytes;
        int GapMs; // wait after the piece before
        int Lines; // lines that are through with it
    };

    bool strikes(int percent);
    int below(int limit);
    QByteArray noise();
    void hold(const QByteArray& bytes);
    void release();
    void spoil(const QByteArray& bytes, int lines);
    void pump();

    TByteStream& FStream;
    std::mt19937 FRandom;
    TLater FGap;
    TLater FHolding;
    std::deque<TPiece> FPieces;
    qsizetype FWaiting = 0; // bytes in FPieces and FHeld
    bool FInGap = false;
    bool FPumping = false;
    QByteArray FHeld;
    int FHeldLines = 0;
    bool FSilent = false;
    qint64 FNoisy = 0;
    qint64 FCut = 0;
    qint64 FLost = 0;
};

} // namespace tnv5::sim
