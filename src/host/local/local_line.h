#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <optional>

namespace tnv5::host {

/// Most bytes of a line of the local socket, without its end.
constexpr qsizetype kMaxLocalLine = 1 << 20;

/// Cuts what arrives into lines, however it is cut on its way. Never holds more than one overlong line.
///
///     TLineBuffer buffer;
///     buffer.add(bytes);
///     while (auto line = buffer.take()) { ... }
///     if (buffer.overlong()) { ... } // nothing more comes of it
class TLineBuffer
{
public:
    /// More bytes. @return false when they are not taken, because the line is too long
    bool add(const QByteArray& bytes);
    /// The next whole line without its end ("\n" or "\r\n"); none: it has not come wholly.
    std::optional<QByteArray> take();
    /// A line is longer than `kMaxLocalLine`.
    bool overlong() const { return FOverlong; }
    bool empty() const { return FRead >= FBytes.size(); }
    /// Whether a whole line can be taken.
    bool ready();

private:
    qsizetype endOfLine();

    QByteArray FBytes;
    qsizetype FRead = 0;     // taken
    qsizetype FSearched = 0; // no end of line before
    bool FOverlong = false;
};

/// A line of the local socket, with its end.
QByteArray toLine(const QJsonObject& object);
/// The object of a line; none: it is something else.
std::optional<QJsonObject> fromLine(const QByteArray& line);

} // namespace tnv5::host
