#include "tnv5/testing/wire.h"

namespace tnv5::testkit {

void TWire::expect(const QByteArray& bytes)
{
    collect();
    if (!FWritten.startsWith(bytes)) {
        throw EExpectation(QStringLiteral("expected on the wire: %1\n     but written: %2")
                               .arg(readable(bytes), readable(FWritten)));
    }
    FWritten.remove(0, bytes.size());
}

void TWire::expectNothing()
{
    collect();
    if (!FWritten.isEmpty()) {
        throw EExpectation(
            QStringLiteral("expected nothing on the wire\n     but written: %1").arg(readable(FWritten)));
    }
}

QString readable(const QByteArray& bytes)
{
    QString text;
    for (const char byte : bytes) {
        const auto code = static_cast<uchar>(byte);
        text += code >= 32 && code < 127 ? QString(QLatin1Char(byte)) : QStringLiteral("<%1>").arg(code);
    }
    return text.isEmpty() ? QStringLiteral("(nothing)") : text;
}

} // namespace tnv5::testkit
