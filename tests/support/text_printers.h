#pragma once

#include <QByteArray>
#include <QString>
#include <ostream>

// Lets GoogleTest show texts instead of memory; it finds these by name.

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toPercentEncoding(" !\"#$&'()*+,/:;<=>?@[]^`{|}").toStdString() << '"';
}
