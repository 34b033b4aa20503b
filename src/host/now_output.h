#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>

namespace tnv5::host {

/// Writes lines to a file, pipe, terminal or socket without ever waiting for whoever reads them.
///
///     TNowOutput output;
///     output.attach(STDOUT_FILENO);
///     if (output.write("a line\n") == TNowOutput::TWritten::No) { ++lost; }
///
/// A terminal that somebody has stopped, or whose network has gone, takes nothing and never says so: a usual
/// write to it lasts as long as that. Pipes and terminals are therefore opened a second time without waiting;
/// the descriptor itself is shared with the shell and stays as it is. Where that cannot be done (a terminal
/// of another user), pieces are written that are small enough for what says it takes more: a pipe never waits
/// then, a terminal that is stopped in the middle of a piece may.
class TNowOutput
{
public:
    enum class TWritten {
        Yes,   ///< whole, or it has begun: the rest comes before the next line
        No,    ///< left out: nobody takes anything now
        Failed ///< left out, `why` tells
    };

    TNowOutput() = default;
    ~TNowOutput() { close(); }
    TNowOutput(const TNowOutput&) = delete;
    TNowOutput& operator=(const TNowOutput&) = delete;

    /// Writes to what a descriptor of the program stands for, which stays the program's.
    void attach(int descriptor);
    /// Writes behind the end of a file, which is made. @return whether it can be opened, or else `why`
    bool open(const QString& file);
    void close();
    bool isOpen() const { return FDescriptor >= 0; }

    TWritten write(const QByteArray& line);
    /// The last failure.
    const QString& why() const { return FWhy; }
    /// For the end, when nobody needs the program any more: waits from now on, so long altogether.
    void bePatient(int ms) { FPatience.setRemainingTime(ms); }

private:
    qint64 writeSome(const QByteArray& bytes) const;
    bool takesAgain() const;
    bool waitsLonger() const;

    int FDescriptor = -1;
    bool FOwn = false;   // opened here
    bool FWaits = false; // a write may wait, so it is asked before
    bool FSocket = false;
    bool FFull = false; // something was left out, or in part
    QByteArray FRest;   // of a line that was written in part, or the end that such a line lacks
    QString FWhy;
    QDeadlineTimer FPatience{0};
};

} // namespace tnv5::host
