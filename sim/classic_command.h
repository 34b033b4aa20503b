#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QByteArrayView>
#include <optional>

namespace tnv5::sim {

/// A command as a classic controller understands it.
struct TClassicCommand
{
    QByteArray Address; // three characters
    int Relay = 0;
    int Mode = 0;
    int Time = 0;

    /// Addressed to every controller on the line.
    bool broadcast() const { return Address == "000"; }
};

/// The two checksum characters that must follow the seven characters of `command` ("$", address, three
/// digits); nothing when a character that must be a digit is none, or there are not seven.
std::optional<QByteArray> classicChecksum(QByteArrayView command);

/// Reads a command from its "$" up to, not including, the carriage return. Nothing when it is not exactly
/// seven characters and their right checksum in upper case.
std::optional<TClassicCommand> parseClassicCommand(QByteArrayView line);

/// Cuts what comes in on the wire into commands. Bytes outside "$" ... carriage return are skipped, and a "$"
/// inside a command begins it anew.
class TClassicFramer
{
public:
    /// Characters of the longest command; what goes on longer is skipped up to the next "$".
    static constexpr qsizetype kMaxCommand = 32;

    /// Takes the next bytes; returns the commands that they complete, with "$" and without carriage return.
    QByteArrayList take(const QByteArray& bytes);

    /// Bytes that belonged to no command.
    qint64 skippedBytes() const { return FSkipped; }

private:
    void skip();

    QByteArray FCommand; // from its "$" on; empty outside a command
    qint64 FSkipped = 0;
};

} // namespace tnv5::sim
