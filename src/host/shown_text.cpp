#include "tnv5/host/shown_text.h"

namespace tnv5::host {

QString harmless(const QString& line)
{
    QString text;
    for (const QChar character : line) {
        if (character.category() == QChar::Other_Control) {
            text += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QChar(u'0'));
        } else {
            text += character;
        }
    }
    return text;
}

QString quoted(const QString& text)
{
    return u'"' + text + u'"';
}

} // namespace tnv5::host
