#include "tnv5/testing/memory_port.h"

#include <utility>

namespace tnv5::testkit {

using platform::EComPort;

TMemoryPort::TMemoryPort(QObject* AOwner) : TComPort(AOwner)
{
    SetPort(QStringLiteral("MEMORY"));
}

TMemoryPort::~TMemoryPort() = default;

void TMemoryPort::feedInPieces(const QByteArray& bytes, qsizetype size)
{
    for (qsizetype at = 0; at < bytes.size(); at += size) {
        feed(bytes.mid(at, size));
    }
}

QByteArrayList TMemoryPort::takeWrites()
{
    return std::exchange(FWrites, {});
}

void TMemoryPort::raiseError(platform::TComExceptionKind kind, const QString& message, qint64 osError,
                             const QString& osText)
{
    platform::guarded([&] { fireException(kind, message, osError, osText); });
}

void TMemoryPort::failIfOrdered(const std::function<void()>& before, const std::optional<QString>& failure)
{
    if (const auto handler = before) {
        CallOut(handler);
    }
    if (failure) {
        throw EComPort(*failure);
    }
}

void TMemoryPort::doOpen()
{
    failIfOrdered(OnOpening, OpenFailure);
    FOpen = true;
}

void TMemoryPort::doClose()
{
    failIfOrdered(OnClosing, CloseFailure);
    FOpen = false;
}

void TMemoryPort::applySettings()
{
    if (const auto handler = OnSettings) {
        platform::guarded(handler);
    }
}

void TMemoryPort::doWrite(const QByteArray& bytes)
{
    failIfOrdered(OnWriting, WriteFailure);
    if (KeepWrites) {
        FWrites.append(bytes);
    }
    if (const auto handler = OnWritten) {
        CallOut([&] { handler(bytes); });
    }
}

} // namespace tnv5::testkit
