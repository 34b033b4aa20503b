#pragma once

#include <QString>

/// What comes from a host, a card or a file is shown as it is, whatever is in it.
namespace tnv5::desk {

/// A text for a tool tip, which would take "<b>" for a command.
inline QString tipText(const QString& text)
{
    QString escaped = text.toHtmlEscaped();
    escaped.replace(u'\n', QStringLiteral("<br>"));
    return escaped.isEmpty() ? escaped : QStringLiteral("<span>%1</span>").arg(escaped);
}

/// A text for a button, which would take "&" for the mark of a key.
inline QString onButton(QString text)
{
    return text.replace(u'&', QStringLiteral("&&"));
}

} // namespace tnv5::desk
