#pragma once

#include "tnv5/tools/line_cutter.h"
#include "tnv5/tools/recording.h"

#include <QString>

namespace tnv5::tools {

enum class TChecksum {
    None, ///< this kind of line has none, or it cannot be told
    Right,
    Wrong
};

/// What one piece of a line means.
struct TExplanation
{
    TDirection Direction = TDirection::Unknown;
    TChecksum Checksum = TChecksum::None;
    QString Meaning; ///< in plain words, never empty
};

/// A piece of a line of classic controllers, carriage return included.
/// Example: "$01AR12345678\r" is "card 12345678 read at turnstile 01A".
TExplanation explainTurnstile(const QByteArray& piece);

/// A piece of a bus of boards: a board's line with its carriage return, or a command, which has none.
/// Example: "$000APING\r" is "board 000A pings".
TExplanation explainBus(const QByteArray& piece);

/// By protocol. @param scalesType number of the family on the line of a scale, 1 to 8
TExplanation explain(TProtocol protocol, const QByteArray& piece, int scalesType = 0);

/// One line for people: direction, checksum ("right", "WRONG" or "-"), bytes, meaning.
QString explanationLine(const QByteArray& piece, const TExplanation& explanation);

} // namespace tnv5::tools
