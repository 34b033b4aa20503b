#include "tnv5/host/local/local_line.h"

#include <QJsonDocument>
#include <algorithm>

namespace tnv5::host {

bool TLineBuffer::add(const QByteArray& bytes)
{
    if (FOverlong) {
        return false;
    }
    if (FRead > 0) {
        FBytes.remove(0, FRead);
        FSearched -= FRead;
        FRead = 0;
    }
    FBytes += bytes;
    return true;
}

qsizetype TLineBuffer::endOfLine()
{
    const qsizetype end = FBytes.indexOf('\n', std::max(FSearched, FRead));
    FSearched = end < 0 ? FBytes.size() : end;
    const qsizetype length = FSearched - FRead;
    if (length > kMaxLocalLine + 1) { // one for a "\r"
        FOverlong = true;
        FBytes.clear();
        FRead = FSearched = 0;
        return -1;
    }
    return end;
}

bool TLineBuffer::ready()
{
    return !FOverlong && endOfLine() >= 0;
}

std::optional<QByteArray> TLineBuffer::take()
{
    const qsizetype end = FOverlong ? -1 : endOfLine();
    if (end < 0) {
        return std::nullopt;
    }
    QByteArray line = FBytes.mid(FRead, end - FRead);
    FRead = FSearched = end + 1;
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    if (line.size() > kMaxLocalLine) {
        FOverlong = true;
        return std::nullopt;
    }
    return line;
}

QByteArray toLine(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<QJsonObject> fromLine(const QByteArray& line)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(line, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        return std::nullopt;
    }
    return document.object();
}

} // namespace tnv5::host
