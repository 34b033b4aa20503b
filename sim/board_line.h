#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <optional>

namespace tnv5::sim {

/// The two checksum digits that must follow a line: CRC-8, polynomial 0x31, initial value 0xFF, most
/// significant bit first, over everything from the start character on.
QByteArray boardChecksum(QByteArrayView line);

enum class TBoardOrder {
    Unknown,   // a right checksum over something that no board knows
    Echo,      // the answer to a ping
    Hardware,  // "HW": tell what you are
    Open,      // "GO"
    Refuse,    // "PH"
    Guard,     // "SDG"
    Relay,     // "RL": relay, two digits of time, "N"
    ClearRows, // "CS"
    ShowRow,   // "PSN100": row 1 to 4, text
    Light,     // "BFL1", to both boards of a pair
    Sound      // "BES", to both boards of a pair
};

/// A command as a board understands it.
struct TBoardCommand
{
    QByteArray Address; // four characters; three for both boards of a pair
    TBoardOrder Order = TBoardOrder::Unknown;
    int Number = 0;  // relay or row
    int Time = 0;    // of a relay; 0: until told otherwise
    QByteArray Text; // of a row
};

/// Reads a command from its "$" to its checksum. Nothing when it is too short or the checksum is wrong.
std::optional<TBoardCommand> parseBoardCommand(QByteArrayView line);

/// Cuts what comes in on the wire into commands, although nothing marks where one ends.
///
/// A command that has a fixed form is complete as soon as its right checksum is there. Everything else, rows
/// of text above all, goes on until the next "$" or until nothing follows for a moment. As a row's text may
/// hold "$" itself, a "$" ends it only when what stands before it carries its right checksum; otherwise both
/// readings are kept until one of them proves right.
class TBoardFramer
{
public:
    /// Characters of the longest command; what goes on longer is a wrong one.
    static constexpr qsizetype kMaxCommand = 1'024;
    /// "$" that may be waiting to find out whether they begin a command.
    static constexpr qsizetype kMaxStarts = 16;

    struct TFramed
    {
        QByteArray Line; // from "$" to the checksum
        bool Right = false;
    };

    /// Takes the next bytes; returns the commands that they complete.
    QList<TFramed> take(const QByteArray& bytes);
    /// Nothing followed for a moment: what is waiting is all there is.
    QList<TFramed> pause();

    bool waiting() const { return !FPending.isEmpty(); }
    /// Bytes that belonged to no command.
    qint64 skippedBytes() const { return FSkipped; }

private:
    QByteArrayView from(qsizetype start) const { return QByteArrayView(FPending).sliced(start); }
    void begin(QList<TFramed>& found);
    bool completeByForm() const;
    std::optional<qsizetype> rightStart() const;
    bool settle(QList<TFramed>& found);
    void accept(qsizetype start, QList<TFramed>& found);
    void refuse(qsizetype upTo, QList<TFramed>& found);

    QByteArray FPending;      // from the first "$" on
    QList<qsizetype> FStarts; // where "$" stands in it
    qint64 FSkipped = 0;
};

} // namespace tnv5::sim
