#pragma once

#include "tnv5/platform/errors.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QElapsedTimer>
#include <QList>

class QIODevice;

/// Recordings of what went over a line: text that people read, edit and compare, and that keeps every byte.
///
///     # tnv5 recording 1
///     # anything after a "#" at the beginning of a line is a remark; empty lines are skipped
///     +0.000000 < $01AR12345678\r
///     +0.001250 > $01A10366\r
///
/// Each entry: the seconds since the entry before, with six decimals; "<" from the equipment, ">" to it, "?"
/// not known; the bytes. Bytes 33 to 126 stand for themselves, and so does a blank that is neither first nor
/// last; "\\" is a backslash, "\r" 13, "\n" 10, "\t" 9, and "\x" with two hexadecimal digits any byte.
namespace tnv5::tools {

enum class TDirection { FromEquipment, ToEquipment, Unknown };

/// "<", ">" or "?".
char directionMark(TDirection direction);

struct TEntry
{
    qint64 WaitUs = 0; ///< microseconds since the entry before
    TDirection Direction = TDirection::Unknown;
    QByteArray Bytes;
};

/// A recording that cannot be read; the message begins with the number of the line.
class ERecording : public platform::Exception
{
public:
    using Exception::Exception;
};

// What a recording may hold at most; one that holds more is refused.
constexpr qint64 kMaxRecording = 64LL * 1024 * 1024; ///< bytes of text
constexpr qsizetype kMaxEntries = 1'000'000;
constexpr qint64 kMaxWaitUs = 86'400LL * 1'000'000; ///< one day

/// First line of every recording, without line end.
inline const QByteArray kRecordingHeader = QByteArrayLiteral("# tnv5 recording 1");

/// Bytes as a recording shows them.
QByteArray escaped(QByteArrayView bytes);

/// One entry as a line, without line end. A wait that is negative or too long is cut to what is allowed.
QByteArray formatEntry(const TEntry& entry);

/// The whole recording.
QByteArray formatRecording(const QList<TEntry>& entries);

/// Reads a recording. Lines may end in a line feed or carriage return and line feed.
/// @throws ERecording
QList<TEntry> parseRecording(QByteArrayView text);

/// Reads a file. @throws ERecording also when the file cannot be read.
QList<TEntry> readRecording(const QString& fileName);

/// Writes a recording as it happens.
class TRecorder
{
public:
    /// Writes the header and, as a remark, what is recorded. The device must outlive this.
    /// @throws ERecording when it cannot be written.
    TRecorder(QIODevice& device, const QString& remark);

    /// Adds bytes that come now. @throws ERecording when they cannot be written.
    void add(TDirection direction, const QByteArray& bytes);

private:
    void write(const QByteArray& line);

    QIODevice& FDevice;
    QElapsedTimer FSinceLast;
};

} // namespace tnv5::tools
