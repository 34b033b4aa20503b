#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>

namespace tnv5::tools {

/// One piece of a monitor stream.
struct TMonitorPiece
{
    enum TKind {
        Log,
        Error,
        Status,
        Rest, ///< what belongs to no text
    };

    TKind kind;
    QString text; ///< without its tag and its "&"

    bool operator==(const TMonitorPiece&) const = default;
};

/// Cuts a monitor stream into its texts, however the network has cut and joined them: a text begins with
/// "LOG!", "ERROR!" or "STATUS!" and ends at the next "&". What stands between texts comes out as a rest, but
/// for an "&" alone: that ends a text which stood in another one.
///
///     cutter.take("LOG!ab");   nothing yet
///     cutter.take("c&junk");   the log "abc"
///     cutter.take("ERROR!x&"); the rest "junk", the error "x"
class TMonitorCutter
{
public:
    /// Bytes; a text that has no end by then comes out as a rest, and reading begins anew.
    static constexpr qsizetype kMaxText = 65'536;

    /// Takes the next bytes; returns the pieces that they complete.
    QList<TMonitorPiece> take(QByteArrayView bytes);
    /// The stream has ended: what is left is a rest.
    QList<TMonitorPiece> end();

private:
    void takeOutside(char byte, QList<TMonitorPiece>& pieces);
    void takeInside(char byte, QList<TMonitorPiece>& pieces);
    void endRest(QList<TMonitorPiece>& pieces);

    QByteArray FPending;                              // a text from its tag on, or a rest
    qsizetype FBody = 0;                              // where the text behind the tag begins
    TMonitorPiece::TKind FKind = TMonitorPiece::Rest; // of what is pending
};

} // namespace tnv5::tools
