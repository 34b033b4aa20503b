#pragma once

#include "tnv5/platform/com_port.h"

#include <QByteArrayList>
#include <optional>

namespace tnv5::testkit {

/// A serial port in memory: a test feeds bytes, reads what was written, and orders failures.
///
///     TMemoryPort port;
///     gate.SetComport(&port);
///     port.Open();
///     port.feed("$01AR12345678\r");
///     port.takeWritten(); // "$01A10366\r"
class TMemoryPort final : public platform::TComPort
{
    Q_OBJECT

public:
    explicit TMemoryPort(QObject* AOwner = nullptr);
    ~TMemoryPort() override;

    bool Connected() const override { return FOpen; }

    /// Hands bytes to the splitters as one read, whether the port is open or not.
    void feed(const QByteArray& bytes) { deliver(bytes); }
    /// Hands bytes over in pieces of `size`.
    void feedInPieces(const QByteArray& bytes, qsizetype size);

    /// Everything written since the last call, one entry a write.
    QByteArrayList takeWrites();
    /// The same as one byte string.
    QByteArray takeWritten() { return takeWrites().join(); }

    /// While set, opening, closing or writing raises `EComPort` with the text.
    std::optional<QString> OpenFailure;
    std::optional<QString> CloseFailure;
    std::optional<QString> WriteFailure;

    /// Called inside opening, closing and writing, before they take effect; what they raise leaves the
    /// operation. They may destroy the port.
    std::function<void()> OnOpening;
    std::function<void()> OnClosing;
    std::function<void()> OnWriting;

    /// Called when settings have changed; what it raises goes to the exception handler. It may destroy the
    /// port.
    std::function<void()> OnSettings;

    /// Called after each successful write, for example to answer it.
    std::function<void(const QByteArray& bytes)> OnWritten;

    /// Off: written bytes go to `OnWritten` only and are not kept. On by default.
    bool KeepWrites = true;

    /// Reports an error of the operating system, as a real port does from the event loop; what the error
    /// handler raises goes to the exception handler.
    void raiseError(platform::TComExceptionKind kind, const QString& message, qint64 osError,
                    const QString& osText);
    /// The same from inside an operation (see `OnOpening`): what the error handler raises leaves this
    /// function.
    void raiseErrorInside(platform::TComExceptionKind kind, const QString& message, qint64 osError,
                          const QString& osText)
    {
        Operation([&] { fireException(kind, message, osError, osText); });
    }

protected:
    void doOpen() override;
    void doClose() override;
    void doWrite(const QByteArray& bytes) override;
    void applySettings() override;

private:
    void failIfOrdered(const std::function<void()>& before, const std::optional<QString>& failure);

    bool FOpen = false;
    QByteArrayList FWrites;
};

} // namespace tnv5::testkit
