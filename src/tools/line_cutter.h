#pragma once

#include <QByteArray>
#include <QByteArrayList>

namespace tnv5::tools {

/// What is spoken on a line.
enum class TProtocol { Bus, Turnstile, Scales };

/// Cuts what is heard on a wire into the pieces that people want to see one by one: lines with their start
/// character and carriage return, commands, and what lies between. Every byte comes out in exactly one piece,
/// in its order.
///
/// A piece ends behind a carriage return. On a bus, where the commands to the boards have no end of their
/// own, it also ends before a "$" or "#" when its checksum is right, and when nothing follows for a moment.
/// On the line of a scale it ends with the packet of the scale's family, or when nothing follows.
class TLineCutter
{
public:
    /// A piece is not longer than this.
    static constexpr qsizetype kMaxPiece = 4'096;

    /// @param scalesType number of the family on the line of a scale, from 1 on
    explicit TLineCutter(TProtocol protocol, int scalesType = 0)
        : FProtocol(protocol), FScalesType(scalesType)
    {
    }

    /// Takes the next bytes; returns the pieces that they complete.
    QByteArrayList take(QByteArrayView bytes);
    /// Nothing followed for a moment: what is waiting is all there is.
    QByteArrayList pause();
    bool waiting() const { return !FPending.isEmpty(); }

private:
    QByteArrayList takeOfScales(QByteArrayView bytes);
    bool endsBeforeStart() const;
    void flush(QByteArrayList& pieces);

    TProtocol FProtocol;
    int FScalesType;
    QByteArray FPending;
};

} // namespace tnv5::tools
