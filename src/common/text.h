#pragma once

#include <QString>
#include <QStringView>
#include <algorithm>

namespace tnv5::common {

/// Part of a text: `count` characters from `index`, counted from 1. What lies outside the text is left out;
/// an index below 1 counts as 1. Example: `Copy(u"01AR5", 4, 100)` is "R5".
inline QStringView Copy(QStringView text, qsizetype index, qsizetype count)
{
    const qsizetype begin = std::max<qsizetype>(index, 1) - 1;
    if (begin >= text.size() || count <= 0) {
        return {};
    }
    return text.sliced(begin, std::min(count, text.size() - begin));
}

/// The rest of a text from `index`, counted from 1.
inline QStringView CopyFrom(QStringView text, qsizetype index)
{
    return Copy(text, index, text.size());
}

/// A text without the characters 0 to 32 at both ends; other white space stays.
inline QStringView Trim(QStringView text)
{
    const auto isBlank = [](QChar character) { return character <= u' '; };
    while (!text.isEmpty() && isBlank(text.front())) {
        text = text.sliced(1);
    }
    while (!text.isEmpty() && isBlank(text.back())) {
        text.chop(1);
    }
    return text;
}

/// Two texts as one, in memory of just that size.
inline QString Joined(QStringView first, QStringView second)
{
    QString text(first.size() + second.size(), Qt::Uninitialized);
    std::copy(second.begin(), second.end(), std::copy(first.begin(), first.end(), text.begin()));
    return text;
}

/// The same characters. For searches over many short texts: most differ in their first characters.
inline bool Same(QStringView first, QStringView second)
{
    return first.size() == second.size() && std::equal(first.begin(), first.end(), second.begin());
}

/// Every occurrence of `old` replaced; an empty `old` replaces nothing.
inline QString ReplaceStr(const QString& text, const QString& old, const QString& replacement)
{
    return old.isEmpty() ? text : QString(text).replace(old, replacement);
}

/// Position of the first occurrence of `part`, counted from 1; 0 when there is none or `part` is empty.
inline qsizetype Pos(QStringView part, QStringView text)
{
    return part.isEmpty() ? 0 : text.indexOf(part) + 1;
}

} // namespace tnv5::common
