#pragma once

#include "tnv5/platform/com_port.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

namespace tnv5::scales {

/// Step of the dialogue with a scale: a handshake is expected, or a weight.
enum class TStep { Hey, Ask };

/// What to do about one packet.
struct TDecision
{
    bool ask = false;             ///< the next packets carry a weight
    bool askOnceWritten = false;  ///< the same, but only after `write` has gone out
    QStringList log;              ///< lines for the log
    QByteArray write;             ///< next request of the dialogue
    int message = -1;             ///< number of a message to report, counted from 0
    std::optional<QString> field; ///< weight as it stands in the packet, to be converted and stored
    bool logField = true;         ///< the field is logged before it is converted
    bool tolerant = false;     ///< a field that is no number counts as 0, and the closing line has the packet
    std::optional<int> change; ///< weight that is notified when it differs by `kHysteresis` or more
};

/// Smaller changes of a notified weight are dropped; intended.
constexpr int kHysteresis = 3;

/// Position in the receive buffer, counted from 1: 0 not found, -1 left to the start and stop strings.
using TFind = qsizetype (*)(TStep step, const QByteArray& buffer);
using TDecode = TDecision (*)(TStep step, const QByteArray& packet, int lastWeight);

/// One protocol family: everything that sets it apart from the others.
struct TFamily
{
    QString name;                                    ///< text in the list of families
    std::optional<platform::TLineSettings> settings; ///< none: the host's settings stay
    int readGapMs = 0;                               ///< quiet time after which a read is handed over
    QByteArray request;                              ///< first request; empty: the scale talks by itself
    bool requestAfterReset = false; ///< where the request stands when a scale has not answered
    QByteArray start;               ///< start and stop string; both empty: those set before stay
    QByteArray stop;
    TFind findStart = nullptr;
    TFind findStop = nullptr;
    qsizetype endSize = 0; ///< bytes of the end that `findStop` looks for anywhere; 0: it needs all of them
    TDecode decode = nullptr;

    bool continuous() const { return request.isEmpty(); }
};

/// Bytes of a packet as text, one to one.
inline QString bytesAsText(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes);
}

/// The characters "0" to "9" of a text, in order.
QString digitsOf(const QString& text);

/// A weight field: nothing when it is blank. Trimming decides only that; the field stays as it was taken.
std::optional<QString> fieldUnlessBlank(const QString& field);

/// Positions that leave the search to the strings.
qsizetype byStrings(TStep step, const QByteArray& buffer);
/// A packet begins with the first byte.
qsizetype fromFirstByte(TStep step, const QByteArray& buffer);

} // namespace tnv5::scales
