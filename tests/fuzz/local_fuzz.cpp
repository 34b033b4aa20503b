// Anything over the local socket, cut anywhere: each line is answered, and every answer is a line itself. A
// zero byte is where a piece ends.

#include "fuzz_host.h"
#include "tnv5/host/local/local_line.h"
#include "tnv5/host/local/local_request.h"

#include <QJsonValue>

using namespace tnv5;

namespace {

using fuzz::require;

/// A club that opens no gate.
class TClosedClub final : public host::IClubControl
{
public:
    QJsonObject state() override { return {{QStringLiteral("club"), QStringLiteral("closed")}}; }
    QString open(const QString& gate, const QString& who, const QString& reason) override
    {
        require(!gate.isEmpty() && !who.isEmpty() && !reason.isEmpty());
        return QStringLiteral("closed");
    }
    QString reload() override { return {}; }
    QByteArray picture(const QString&) override { return {}; }
    QJsonArray journal(qint64, int limit) override
    {
        require(limit >= 1 && limit <= host::kMaxJournalRows);
        return {};
    }
};

void answer(const QByteArray& line)
{
    TClosedClub club;
    if (const std::optional<QJsonObject> request = host::fromLine(line)) {
        const QJsonObject answered = host::answerTo(club, *request, QStringLiteral("desk1"));
        require(answered.value(u"ok").isBool());
        QByteArray written = host::toLine(answered);
        require(written.endsWith('\n'));
        written.chop(1);
        require(host::fromLine(written) == answered);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray all(reinterpret_cast<const char*>(data), qsizetype(size));
    QByteArrayList lines;
    host::TLineBuffer buffer;
    for (const QByteArray& piece : all.split('\0')) {
        require(buffer.add(piece) || buffer.overlong());
        while (const std::optional<QByteArray> line = buffer.take()) {
            require(!line->contains('\n'));
            lines << *line;
            answer(*line);
        }
    }
    host::TLineBuffer atOnce; // the cuts make no difference
    atOnce.add(QByteArray(all).replace('\0', QByteArray()));
    for (const QByteArray& line : lines) {
        require(atOnce.take() == line);
    }
    require(!atOnce.take());
    return 0;
}
