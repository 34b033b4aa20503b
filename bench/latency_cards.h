#pragma once

#include <QFile>
#include <QSet>
#include <QString>

namespace tnv5::bench {

/// The cards of a file, one a line.
inline QSet<QString> loadCards(const QString& path)
{
    QSet<QString> cards;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.atEnd()) {
            cards.insert(QString::fromLatin1(file.readLine().trimmed()));
        }
    }
    return cards;
}

} // namespace tnv5::bench
