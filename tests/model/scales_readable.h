#pragma once

#include <QHash>
#include <QString>
#include <string>

namespace tnv5::scales::model {

/// A text for a trace: anything but plain characters as <code>, a long one cut but told apart.
inline std::string readable(const QString& text)
{
    constexpr qsizetype kLongest = 200;
    std::string plain = "'";
    for (const QChar character : QStringView(text).left(kLongest)) {
        const char16_t code = character.unicode();
        plain += code > 31 && code < 127 && code != u'<' ? std::string(1, char(code))
                                                         : '<' + std::to_string(code) + '>';
    }
    plain += '\'';
    if (text.size() > kLongest) {
        plain += " of " + std::to_string(text.size()) + ", hash " + std::to_string(qHash(text, 0));
    }
    return plain;
}

} // namespace tnv5::scales::model
