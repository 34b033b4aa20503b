#pragma once

#include "tnv5/platform/errors.h"

#include <QString>
#include <QStringView>

/// Texts as the model of the line connector cuts them; positions count from 1.
namespace tnv5::connector::model {

/// Part of a text: `count` characters from `index`, counted from 1.
inline QString part(const QString& text, qsizetype index, qsizetype count)
{
    return index > text.size() || count <= 0 ? QString() : text.mid(index - 1, count);
}

inline QString rest(const QString& text, qsizetype index)
{
    return part(text, index, text.size() + 1);
}

/// Position of `what`, counted from 1; 0 when there is none.
inline qsizetype position(const QString& what, const QString& text)
{
    for (qsizetype i = 0; !what.isEmpty() && i + what.size() <= text.size(); ++i) {
        if (QStringView(text).sliced(i, what.size()) == what) {
            return i + 1;
        }
    }
    return 0;
}

inline bool holds(const QString& text, const char* what)
{
    return position(QString::fromLatin1(what), text) > 0;
}

inline QString trimmed(QString text)
{
    while (!text.isEmpty() && text.front().unicode() <= 32) {
        text.remove(0, 1);
    }
    while (!text.isEmpty() && text.back().unicode() <= 32) {
        text.chop(1);
    }
    return text;
}

inline int number(const QString& text)
{
    qsizetype at = 1;
    while (part(text, at, 1) == " ") {
        ++at;
    }
    const bool negative = part(text, at, 1) == "-";
    if (negative || part(text, at, 1) == "+") {
        ++at;
    }
    const QString figures = rest(text, at);
    int value = 0;
    for (const QChar figure : figures) {
        if (figure < u'0' || figure > u'9') {
            throw platform::EConvertError("'" + text + "' is not a valid integer value");
        }
        value = value * 10 + (figure.unicode() - u'0');
    }
    if (figures.isEmpty()) {
        throw platform::EConvertError("'" + text + "' is not a valid integer value");
    }
    return negative ? -value : value;
}

} // namespace tnv5::connector::model
