#pragma once

#include "tnv5/platform/com_port.h"
#include "tnv5/platform/port_claim.h"
#include "tnv5/platform/timer.h"

class QSerialPort;

namespace tnv5::platform {

/// A real serial port, or the device end of a pseudo-terminal.
///
/// A device is opened once: another object or program that asks for it, by whatever name and also as root,
/// gets an EComPort with EBUSY. A rate that the device does not have is one with EINVAL.
///
/// A port that goes away (unplugged adapter) closes itself and then reports the error through `OnException`;
/// it is not opened again unless someone calls `Open`.
class TSerialPort final : public TComPort
{
    Q_OBJECT

public:
    /// Bytes that may wait to be sent; a write that would exceed this raises.
    static constexpr qint64 kMaxUnsent = 65'536;
    /// Bytes that may wait for the line to be quiet (`ReadGap`); then they are handed over at once.
    static constexpr qsizetype kMaxWaiting = 65'536;

    explicit TSerialPort(QObject* AOwner = nullptr);
    ~TSerialPort() override;

    bool Connected() const override;

    /// Whether nothing is on its way at this end: what came has been read, what was written has left, and a
    /// device that went away has been noticed. Bytes that wait for the line to be quiet (`ReadGap`) have been
    /// read. For tests and simulations that hold back the time until their lines have settled.
    bool settled() const;

protected:
    void doOpen() override;
    void doClose() override;
    void doWrite(const QByteArray& bytes) override;
    void applySettings() override;

private:
    void onReadyRead();
    void onQuiet();
    bool moreHasCome();
    bool forgiveFullLine();
    void onError();
    void dropPort();
    void claim();

    TPortClaim FClaim;
    QSerialPort* FSerial = nullptr;
    QByteArray FWaiting; // read, but the line has not been quiet long enough
    TTimer FQuiet;
    bool FCalling = false;   // inside a call whose failure is not for the error event
    bool FReporting = false; // inside an error signal of the serial library
};

} // namespace tnv5::platform
