#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <vector>

namespace tnv5::panel {

/// How an ini file's bytes are read. Without a mark it is UTF-8 as long as all of it is valid UTF-8.
enum class TIniEncoding { Utf8, Utf8WithMark, CodePage };

/// Text of bytes, a mark at their beginning included; what is not valid becomes U+FFFD.
QString textOfUtf8(QByteArrayView bytes);

TIniEncoding iniEncoding(const QByteArray& content);
QString iniText(const QByteArray& bytes, TIniEncoding encoding);
QByteArray iniBytes(const QString& text, TIniEncoding encoding);

/// Whether text comes back from bytes of that encoding as it was.
bool holdsText(TIniEncoding encoding, const QString& text);

/// A file of the code page as UTF-8 with a mark.
QByteArray codePageInUtf8(const QByteArray& content);

/// A line and what ends it: "\n", "\r\n", "\r", or nothing at the end of the file.
struct TIniLine
{
    QByteArray text;
    QByteArray end;
};

/// An ini file cut into lines, which are kept as bytes: what nobody changes comes out as it came in.
struct TIniLines
{
    explicit TIniLines(const QByteArray& content);

    /// Looks for the first section of that name, in any case; blanks around names do not count.
    /// @return whether it is there; its lines are those from `begin` to before `end`. Blank lines and
    /// comments at its end belong to what follows.
    bool find(QStringView section);
    /// Adds the section behind everything, with a blank line before it.
    void append(const QString& section);

    QByteArray content() const;

    TIniEncoding encoding;
    QByteArray lineEnd = "\n"; ///< for new lines: the file's first
    std::vector<TIniLine> lines;
    std::size_t begin = 0;
    std::size_t end = 0;

private:
    QString headerName(const QByteArray& line, bool* isHeader) const;
};

} // namespace tnv5::panel
