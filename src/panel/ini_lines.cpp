#include "tnv5/panel/ini_lines.h"

#include "tnv5/common/text.h"
#include "tnv5/platform/code_page.h"

#include <QStringDecoder>

namespace tnv5::panel {

using common::Trim;

namespace {

const QByteArray kMark = QByteArrayLiteral("\xef\xbb\xbf");

bool isUtf8(const QByteArray& bytes)
{
    return textOfUtf8(bytes).toUtf8() == bytes;
}

bool isRemark(const QByteArray& line)
{
    const QByteArray text = line.trimmed();
    return text.isEmpty() || text.startsWith(';') || text.startsWith('#');
}

TIniLine lineAt(const QByteArray& content, qsizetype from)
{
    qsizetype to = from;
    while (to < content.size() && content[to] != '\n' && content[to] != '\r') {
        ++to;
    }
    const QByteArrayView rest = QByteArrayView(content).sliced(to);
    const qsizetype ends = rest.startsWith("\r\n") ? 2 : rest.isEmpty() ? 0 : 1;
    return {content.mid(from, to - from), content.mid(to, ends)};
}

} // namespace

TIniEncoding iniEncoding(const QByteArray& content)
{
    if (content.startsWith(kMark)) {
        return TIniEncoding::Utf8WithMark;
    }
    return isUtf8(content) ? TIniEncoding::Utf8 : TIniEncoding::CodePage;
}

QString textOfUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::ConvertInitialBom | QStringDecoder::Flag::Stateless);
    return decoder.decode(bytes);
}

QString iniText(const QByteArray& bytes, TIniEncoding encoding)
{
    return encoding == TIniEncoding::CodePage ? platform::fromWire(bytes) : textOfUtf8(bytes);
}

QByteArray iniBytes(const QString& text, TIniEncoding encoding)
{
    return encoding == TIniEncoding::CodePage ? platform::toWire(text) : text.toUtf8();
}

bool holdsText(TIniEncoding encoding, const QString& text)
{
    return encoding != TIniEncoding::CodePage || platform::fromWire(platform::toWire(text)) == text;
}

QByteArray codePageInUtf8(const QByteArray& content)
{
    return kMark + platform::fromWire(content).toUtf8();
}

TIniLines::TIniLines(const QByteArray& content) : encoding(iniEncoding(content))
{
    qsizetype at = 0;
    while (at < content.size()) {
        lines.push_back(lineAt(content, at));
        at += lines.back().text.size() + lines.back().end.size();
    }
    if (!lines.empty() && !lines.front().end.isEmpty()) {
        // a lone "\r" in front of a blank line's "\n" would become one line end with it
        const bool mixed = lines.front().end == "\r" && content.contains('\n');
        lineEnd = mixed ? QByteArray("\n") : lines.front().end;
    }
}

/// "[name]"; a name may hold brackets when the line ends with its own.
QString TIniLines::headerName(const QByteArray& line, bool* isHeader) const
{
    const bool marked = encoding == TIniEncoding::Utf8WithMark && &line == &lines.front().text;
    const QString text = iniText(marked ? line.mid(kMark.size()) : line, encoding);
    const QStringView header = Trim(text);
    const qsizetype close = header.endsWith(u']') ? header.size() - 1 : header.indexOf(u']');
    *isHeader = header.startsWith(u'[') && close > 0;
    return *isHeader ? Trim(header.mid(1, close - 1)).toString() : QString();
}

bool TIniLines::find(QStringView section)
{
    const QStringView wanted = Trim(section);
    bool found = false;
    std::size_t next = lines.size(); // the header behind
    for (std::size_t i = 0; i < lines.size(); ++i) {
        bool isHeader = false;
        const QString name = headerName(lines[i].text, &isHeader);
        if (isHeader && found) {
            next = i;
            break;
        }
        if (isHeader && name.compare(wanted, Qt::CaseInsensitive) == 0) {
            found = true;
            begin = i + 1;
        }
    }
    end = found ? next : begin;
    while (end > begin && isRemark(lines[end - 1].text)) {
        --end;
    }
    return found;
}

void TIniLines::append(const QString& section)
{
    if (!lines.empty() && !lines.back().text.trimmed().isEmpty()) {
        lines.push_back({{}, lineEnd});
    }
    lines.push_back({iniBytes(u'[' + section + u']', encoding), lineEnd});
    begin = lines.size();
    end = begin;
}

QByteArray TIniLines::content() const
{
    QByteArray all;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const bool cut = lines[i].end.isEmpty() && i + 1 < lines.size();
        all += lines[i].text + (cut ? lineEnd : lines[i].end);
    }
    return all;
}

} // namespace tnv5::panel
