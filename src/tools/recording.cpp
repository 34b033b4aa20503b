#include "tnv5/tools/recording.h"

#include "tnv5/common/read_up_to.h"

#include <algorithm>
#include <optional>

namespace tnv5::tools {

namespace {

constexpr qint64 kUsPerSecond = 1'000'000;
constexpr qsizetype kDecimals = 6;
constexpr qsizetype kMaxSecondsDigits = 5;

bool isDecimal(char c)
{
    return c >= '0' && c <= '9';
}

std::optional<int> hexDigit(char c)
{
    if (isDecimal(c)) {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? std::optional<int>(lower - 'a' + 10) : std::nullopt;
}

/// Reads one line from left to right.
class TLineReader
{
public:
    TLineReader(QByteArrayView line, qsizetype number) : FRest(line), FNumber(number) {}

    TEntry entry()
    {
        TEntry entry;
        entry.WaitUs = wait();
        blank();
        entry.Direction = direction();
        if (!FRest.isEmpty()) {
            blank();
        }
        while (!FRest.isEmpty()) {
            entry.Bytes += byte();
        }
        return entry;
    }

private:
    [[noreturn]] void fail(const QString& what) const
    {
        throw ERecording(QStringLiteral("line %1: %2").arg(FNumber).arg(what));
    }

    char take()
    {
        const char c = FRest.front();
        FRest = FRest.sliced(1);
        return c;
    }

    bool takeIf(char wanted)
    {
        const bool there = !FRest.isEmpty() && FRest.front() == wanted;
        if (there) {
            take();
        }
        return there;
    }

    QByteArrayView digits()
    {
        const auto* const end = std::find_if_not(FRest.begin(), FRest.end(), isDecimal);
        const QByteArrayView found = FRest.first(end - FRest.begin());
        FRest = FRest.sliced(found.size());
        return found;
    }

    qint64 wait()
    {
        const bool plus = takeIf('+');
        const QByteArrayView seconds = digits();
        const bool point = takeIf('.');
        const QByteArrayView decimals = digits();
        if (!plus || !point || seconds.isEmpty() || seconds.size() > kMaxSecondsDigits ||
            decimals.size() != kDecimals) {
            fail(QStringLiteral("an entry begins with its time, such as +0.012345"));
        }
        const qint64 us =
            seconds.toByteArray().toLongLong() * kUsPerSecond + decimals.toByteArray().toLongLong();
        if (us > kMaxWaitUs) {
            fail(QStringLiteral("nothing waits longer than a day"));
        }
        return us;
    }

    void blank()
    {
        if (!takeIf(' ')) {
            fail(QStringLiteral("a blank is missing between time, direction and bytes"));
        }
    }

    TDirection direction()
    {
        if (takeIf('<')) {
            return TDirection::FromEquipment;
        }
        if (takeIf('>')) {
            return TDirection::ToEquipment;
        }
        if (takeIf('?')) {
            return TDirection::Unknown;
        }
        fail(QStringLiteral("the direction must be <, > or ?"));
    }

    char byte()
    {
        const char c = take();
        if (c < ' ' || c > '~') {
            fail(QStringLiteral("a byte outside plain ASCII must be written as \\x and two digits"));
        }
        return c == '\\' ? escape() : c;
    }

    char escape()
    {
        if (takeIf('\\')) {
            return '\\';
        }
        if (takeIf('r')) {
            return '\r';
        }
        if (takeIf('n')) {
            return '\n';
        }
        if (takeIf('t')) {
            return '\t';
        }
        const auto high = takeIf('x') && FRest.size() >= 2 ? hexDigit(take()) : std::nullopt;
        const auto low = high ? hexDigit(take()) : std::nullopt;
        if (!low) {
            fail(QStringLiteral(
                "after a backslash only \\, r, n, t or x and two hexadecimal digits may follow"));
        }
        return static_cast<char>(*high * 16 + *low);
    }

    QByteArrayView FRest;
    qsizetype FNumber;
};

/// Takes the next line out of `text`, without its line end.
QByteArrayView takeLine(QByteArrayView& text)
{
    const qsizetype feed = text.indexOf('\n');
    QByteArrayView line = feed < 0 ? text : text.first(feed);
    text = feed < 0 ? QByteArrayView() : text.sliced(feed + 1);
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    return line;
}

} // namespace

char directionMark(TDirection direction)
{
    switch (direction) {
    case TDirection::FromEquipment:
        return '<';
    case TDirection::ToEquipment:
        return '>';
    case TDirection::Unknown:
        break;
    }
    return '?';
}

QByteArray escaped(QByteArrayView bytes)
{
    QByteArray text;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        const bool atEdge = i == 0 || i == bytes.size() - 1;
        if (c == '\\') {
            text += "\\\\";
        } else if (c == '\r') {
            text += "\\r";
        } else if (c == '\n') {
            text += "\\n";
        } else if (c == '\t') {
            text += "\\t";
        } else if (c < ' ' || c > '~' || (c == ' ' && atEdge)) {
            text += "\\x" + QByteArray(1, c).toHex();
        } else {
            text += c;
        }
    }
    return text;
}

QByteArray formatEntry(const TEntry& entry)
{
    const qint64 us = std::clamp<qint64>(entry.WaitUs, 0, kMaxWaitUs);
    const QByteArray decimals = QByteArray::number(us % kUsPerSecond).rightJustified(kDecimals, '0');
    QByteArray line =
        '+' + QByteArray::number(us / kUsPerSecond) + '.' + decimals + ' ' + directionMark(entry.Direction);
    if (!entry.Bytes.isEmpty()) {
        line += ' ' + escaped(entry.Bytes);
    }
    return line;
}

QByteArray formatRecording(const QList<TEntry>& entries)
{
    QByteArray text = kRecordingHeader + '\n';
    for (const TEntry& entry : entries) {
        text += formatEntry(entry) + '\n';
    }
    return text;
}

QList<TEntry> parseRecording(QByteArrayView text)
{
    if (text.size() > kMaxRecording) {
        throw ERecording(QStringLiteral("the recording is longer than %1 bytes").arg(kMaxRecording));
    }
    if (takeLine(text) != kRecordingHeader) {
        throw ERecording(QStringLiteral("line 1: this is no recording; it must begin with \"%1\"")
                             .arg(QString::fromLatin1(kRecordingHeader)));
    }
    QList<TEntry> entries;
    for (qsizetype number = 2; !text.isEmpty(); ++number) {
        const QByteArrayView line = takeLine(text);
        if (line.isEmpty() || line.startsWith('#')) {
            continue;
        }
        if (entries.size() >= kMaxEntries) {
            throw ERecording(QStringLiteral("line %1: the recording has more than %2 entries")
                                 .arg(number)
                                 .arg(kMaxEntries));
        }
        entries.append(TLineReader(line, number).entry());
    }
    return entries;
}

TEntrySource entriesOf(QList<TEntry> entries)
{
    return [entries = std::move(entries), at = qsizetype{0}]() mutable {
        return at < entries.size() ? std::optional(entries[at++]) : std::nullopt;
    };
}

TEntrySource part(TEntrySource source, qint64 fromUs, qint64 toUs)
{
    return [source = std::move(source), fromUs, toUs, at = qint64{0}, given = qint64{0}]() mutable {
        given = std::max(given, fromUs); // time of the entry that was given last
        std::optional<TEntry> entry = source();
        for (; entry; entry = source()) {
            at += entry->WaitUs;
            if (at >= fromUs) {
                break;
            }
        }
        if (entry && toUs >= 0 && at > toUs) {
            entry.reset();
        }
        if (entry) {
            entry->WaitUs = at - given;
            given = at;
        }
        return entry;
    };
}

std::optional<TEntry> TRecordingReader::next()
{
    for (;;) {
        if (!FFile && !openNext()) {
            return std::nullopt;
        }
        const QByteArray whole = takeLine();
        if (whole.isEmpty()) {
            FFile.reset();
            continue;
        }
        QByteArrayView rest(whole);
        const QByteArrayView line = tools::takeLine(rest);
        if (line.isEmpty() || line.startsWith('#')) {
            continue;
        }
        try {
            return TLineReader(line, FLine).entry();
        } catch (const ERecording& error) {
            if (whole.endsWith('\n')) {
                throw ERecording(FFile->fileName() + QStringLiteral(": ") + error.message());
            }
            if (OnHalfLine) {
                OnHalfLine(QStringLiteral("%1: line %2 is only half there and is left out")
                               .arg(FFile->fileName())
                               .arg(FLine));
            }
        }
    }
}

bool TRecordingReader::openNext()
{
    if (FFiles.isEmpty()) {
        return false;
    }
    FFile = std::make_unique<QFile>(FFiles.takeFirst());
    FLine = 0;
    if (!FFile->open(QIODevice::ReadOnly)) {
        throw ERecording(QStringLiteral("%1: %2").arg(FFile->fileName(), FFile->errorString()));
    }
    const QByteArray first = takeLine();
    QByteArrayView rest(first);
    if (tools::takeLine(rest) != kRecordingHeader) {
        throw ERecording(QStringLiteral("%1: line 1: this is no recording; it must begin with \"%2\"")
                             .arg(FFile->fileName(), QString::fromLatin1(kRecordingHeader)));
    }
    return true;
}

// With its end; empty at the end of the file.
QByteArray TRecordingReader::takeLine()
{
    ++FLine;
    FBuffer.resize(kMaxLine + 1); // once: a device makes a buffer of the longest line for each one otherwise
    QByteArray line(FBuffer.constData(),
                    std::max(FFile->readLine(FBuffer.data(), FBuffer.size()), qint64{0}));
    if (line.isEmpty() && FFile->error() != QFileDevice::NoError) {
        throw ERecording(QStringLiteral("%1: %2").arg(FFile->fileName(), FFile->errorString()));
    }
    if (line.size() >= kMaxLine - 1 && !line.endsWith('\n')) {
        throw ERecording(QStringLiteral("%1: line %2: the line is longer than a mebibyte")
                             .arg(FFile->fileName())
                             .arg(FLine));
    }
    return line;
}

QList<TEntry> readRecording(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        throw ERecording(QStringLiteral("%1: %2").arg(fileName, file.errorString()));
    }
    try {
        return parseRecording(common::ReadUpTo(file, kMaxRecording + 1));
    } catch (const ERecording& error) {
        throw ERecording(QStringLiteral("%1: %2").arg(fileName, error.message()));
    }
}

} // namespace tnv5::tools
