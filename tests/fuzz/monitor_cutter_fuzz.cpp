// A monitor stream is cut the same however the network cuts it, no piece is longer than its limit, nothing
// but
// "&" is lost, and every piece has a line and an object that can be read again.

#include "tnv5/platform/code_page.h"
#include "tnv5/tools/monitor_report.h"

#include <QJsonDocument>
#include <cstdint>
#include <cstdlib>

using namespace tnv5::tools;

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

QList<TMonitorPiece> cut(QByteArrayView bytes, qsizetype size)
{
    TMonitorCutter cutter;
    QList<TMonitorPiece> pieces;
    for (qsizetype at = 0; at < bytes.size(); at += size) {
        pieces += cutter.take(bytes.sliced(at, std::min(size, bytes.size() - at)));
    }
    return pieces + cutter.end();
}

QString withoutEnds(QString text)
{
    return text.remove(u'&');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const qsizetype first = bytes.isEmpty() ? 1 : 1 + (static_cast<unsigned char>(bytes.front()) & 0x0f);
    const QList<TMonitorPiece> pieces = cut(bytes, std::max<qsizetype>(bytes.size(), 1));
    require(cut(bytes, first) == pieces);
    QString all;
    for (const TMonitorPiece& piece : pieces) {
        require(piece.text.size() <= TMonitorCutter::kMaxText);
        static const QString kTags[] = {"LOG!", "ERROR!", "STATUS!", ""};
        all += kTags[piece.kind] + piece.text;
        for (const TStation station : {TStation::Turnstile, TStation::D24, TStation::Switch}) {
            const TMonitorReport report = monitorReport(station, piece);
            require(monitorLine(report).startsWith(report.kind));
            const QString line = jsonLine(monitorObject(report, {}));
            require(QJsonDocument::fromJson(line.toUtf8()).object().value("text") == report.text);
        }
    }
    require(withoutEnds(all) == withoutEnds(tnv5::platform::fromWire(bytes)));
    return 0;
}
