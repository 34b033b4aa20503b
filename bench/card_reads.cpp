#include "bench/card_reads.h"

#include <QFile>
#include <QtEndian>

namespace tnv5::bench {

namespace {

constexpr int kFirstCard = 56'780'000;

// two digits and a channel letter: 00A to 99A, then 00B and so on
QByteArray addressOf(int index)
{
    return QByteArray::number(index % 100).rightJustified(2, '0') + static_cast<char>('A' + index / 100);
}

} // namespace

QList<QByteArray> cardReads(int readSize, int addresses)
{
    // as many lines as a read has bytes: the stream then ends with a line and with a read
    QByteArray stream;
    for (int line = 0; line < readSize; ++line) {
        stream += '$' + addressOf(line % addresses) + 'R' + QByteArray::number(kFirstCard + line) + '\r';
    }
    QList<QByteArray> reads;
    for (qsizetype at = 0; at < stream.size(); at += readSize) {
        reads.append(stream.mid(at, readSize));
    }
    return reads;
}

bool saveReads(const QList<QByteArray>& reads, const char* path)
{
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    for (const QByteArray& read : reads) {
        char size[sizeof(quint32)];
        qToBigEndian(static_cast<quint32>(read.size()), size);
        file.write(size, sizeof size);
        file.write(read);
    }
    return file.flush();
}

} // namespace tnv5::bench
