#pragma once

#include "tnv5/platform/errors.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QElapsedTimer>
#include <QFile>
#include <QList>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

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

// What a recording that is read as a whole may hold at most; `TRecordingReader` reads any.
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

/// Where entries come from one by one; nothing at the end. May raise ERecording.
using TEntrySource = std::function<std::optional<TEntry>()>;

/// Entries that are at hand.
TEntrySource entriesOf(QList<TEntry> entries);

/// What of a recording lies between two moments, in microseconds since its beginning, both included. The
/// first entry waits from `fromUs` on. @param toUs below 0: to the end
TEntrySource part(TEntrySource source, qint64 fromUs, qint64 toUs);

/// Reads recordings of any size, one file after the other as if they were one.
class TRecordingReader
{
public:
    static constexpr qint64 kMaxLine = qint64{1024} * 1024; ///< bytes

    explicit TRecordingReader(const QStringList& files) : FFiles(files) {}

    /// The last line of a file is broken and has no end, as a power cut leaves it: it is not read.
    std::function<void(const QString& text)> OnHalfLine;

    /// The next entry. @throws ERecording with file and line
    std::optional<TEntry> next();

private:
    bool openNext();
    QByteArray takeLine();

    QStringList FFiles; // not opened yet
    std::unique_ptr<QFile> FFile;
    QByteArray FBuffer;
    qsizetype FLine = 0;
};

/// Writes a recording as it happens. Nothing is kept back: what was added is in the file.
class TRecorder
{
public:
    /// Writes the header and, as a remark, what is recorded. The device must outlive this, and must be
    /// unbuffered for what cannot be written to be noticed at once.
    /// @throws ERecording when it cannot be written.
    TRecorder(QIODevice& device, const QString& remark);

    /// Adds bytes that come now. @throws ERecording when they cannot be written; what was written of them is
    /// taken back where the device is a file, so that it can be read.
    void add(TDirection direction, const QByteArray& bytes);

    /// Goes on in another device, with a header of its own; times go on. @throws ERecording
    void goOnIn(QIODevice& device);

private:
    void begin();
    void write(const QByteArray& line);

    QIODevice* FDevice;
    QByteArray FRemark;
    QElapsedTimer FSinceLast;
};

/// The file of a recording that is being made: one, or several of a size.
///
/// None is ever overwritten unless `force` says so. With a size the next file is begun when one has reached
/// it: gate.rec, gate.rec.2, gate.rec.3, the next free number each time.
class TRecordFile
{
public:
    /// @param rotateAt bytes; 0: never. @throws ERecording
    TRecordFile(const QString& name, const QString& remark, bool force, qint64 rotateAt);
    ~TRecordFile();
    TRecordFile(const TRecordFile&) = delete;
    TRecordFile& operator=(const TRecordFile&) = delete;

    /// @throws ERecording
    void add(TDirection direction, const QByteArray& bytes);

private:
    std::unique_ptr<QFile> open(const QString& name) const;
    QString freeName();

    QString FName;
    bool FForce;
    qint64 FRotateAt;
    int FNumber = 1;
    std::unique_ptr<QFile> FFile;
    std::unique_ptr<TRecorder> FRecorder;
};

} // namespace tnv5::tools
