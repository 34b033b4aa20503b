#include "support/dialogue_page.h"

#include "support/recorder.h"

#include <QFile>
#include <QRegularExpression>

namespace tnv5::tests {

QString pageOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

QByteArray unescaped(const QString& text)
{
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar next = text[i] == u'\\' && i + 1 < text.size() ? text[i + 1] : QChar();
        if (next == u'x') {
            bytes += char(text.mid(i + 2, 2).toInt(nullptr, 16));
            i += 3;
        } else if (!next.isNull()) {
            bytes += next == u'r' ? '\r' : next == u'n' ? '\n' : '\\';
            ++i;
        } else {
            bytes += text[i].toLatin1();
        }
    }
    return bytes;
}

QList<QStringList> dialoguesOf(const QString& page)
{
    static const QRegularExpression block(QStringLiteral("^```dialogue\n(.*?)\n```$"),
                                          QRegularExpression::MultilineOption |
                                              QRegularExpression::DotMatchesEverythingOption);
    QList<QStringList> result;
    for (auto match = block.globalMatch(page); match.hasNext();) {
        result << match.next().captured(1).split(u'\n');
    }
    return result;
}

std::string normalised(const QStringList& lines)
{
    QStringList result;
    for (const QString& line : lines) {
        QString text = shown(unescaped(line));
        while (text.endsWith(u' ')) {
            text.chop(1);
        }
        result << text;
    }
    return result.join(u'\n').toStdString();
}

} // namespace tnv5::tests
