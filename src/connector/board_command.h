#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <optional>

/// The short commands of device components and the board lines that they become.
///
///     command:     code (2 letters) + IP + ":" + address (4 characters) + argument
///     board line:  "$" + address + body (+ checksum, which is not part of these functions)
namespace tnv5::connector {

struct TBoardCommand
{
    QStringView code;
    QStringView ip;
    QStringView address;
    QStringView relay; ///< argument of "RL": one character
    QStringView whole; ///< the command as it came
};

/// Cuts a command. Without ":" the IP is empty and the address the first four characters, with the argument
/// right behind it; nothing is refused.
/// Example: "RL000A2" is relay "0" of board "RL00".
TBoardCommand parseCommand(QStringView command);

/// Line of a command that makes exactly one; none for "SH" and unknown codes.
/// Example: "RL0.0.0.0:000A2" gives "$000ARL200N".
std::optional<QString> boardLine(const TBoardCommand& command);

/// True for the display command "SH".
bool isDisplayCommand(const TBoardCommand& command);

/// Lines of a display command for a display of `width` characters: clear screen, up to four centred lines,
/// flags. None when the width is not known (-1) or there is no display (0).
QStringList displayLines(const TBoardCommand& command, int width);

/// A text in the middle of `width` characters; one that is as long or longer is not changed.
QString centred(QStringView text, int width);

/// The partner boards' common address: the address without its side letter.
QStringView groupOf(QStringView address);

} // namespace tnv5::connector
