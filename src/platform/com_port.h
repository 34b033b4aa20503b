#pragma once

#include "tnv5/platform/component.h"

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <deque>

namespace tnv5::platform {

class TComDataPacket;

// Hosts and scripts may write any number into the properties of these types: an unknown one is kept, and the
// port is opened as with the first of the list.
enum class TParity : int { None, Odd, Even, Mark, Space };
enum class TStopBits : int { One, OneAndHalf, Two };

/// How bytes go over the line.
struct TLineSettings
{
    int baudRate = 9600;
    int dataBits = 8;
    TParity parity = TParity::None;
    TStopBits stopBits = TStopBits::One;
};

/// What failed when the operating system reported an error; `Resource`: the device is gone.
enum class TComExceptionKind { Open, Write, Resource, Unknown };

/// Error event of a port: what it was doing, a text of the port's own, and the operating system's error
/// number (0 if there is none) and text.
using TComportError =
    std::function<void(TComponent* Sender, TComExceptionKind Kind, const QString& ComportMessage,
                       qint64 WinError, const QString& WinMessage)>;

/// A serial port. `TSerialPort` is a real one, `testkit::TMemoryPort` one in memory.
///
/// What is read goes whole to the first attached packet splitter, then whole to the next, in order of
/// attachment, also when a handler pumps messages and more is read meanwhile.
class TComPort : public TComponent
{
    Q_OBJECT
    Q_PROPERTY(QString Port READ Port WRITE SetPort)
    Q_PROPERTY(int BaudRate READ BaudRate WRITE SetBaudRate)
    Q_PROPERTY(int DataBits READ DataBits WRITE SetDataBits)
    Q_PROPERTY(tnv5::platform::TParity Parity READ Parity WRITE SetParity)
    Q_PROPERTY(tnv5::platform::TStopBits StopBits READ StopBits WRITE SetStopBits)
    Q_PROPERTY(int ReadGap READ ReadGap WRITE SetReadGap)
    Q_PROPERTY(bool Connected READ Connected WRITE SetConnected)

public:
    explicit TComPort(QObject* AOwner = nullptr);
    ~TComPort() override;

    /// Name of the port, such as "/dev/ttyUSB0". The settings of an open port take effect at once, the name
    /// when it is next opened.
    QString Port() const { return FPort; }
    void SetPort(const QString& Value) { FPort = Value; }

    // What the system refuses on an open port is told of through `OnException`, whose handler may destroy the
    // port.
    int BaudRate() const { return FLine.baudRate; }
    void SetBaudRate(int Value);
    int DataBits() const { return FLine.dataBits; }
    void SetDataBits(int Value);
    TParity Parity() const { return FLine.parity; }
    void SetParity(TParity Value);
    TStopBits StopBits() const { return FLine.stopBits; }
    void SetStopBits(TStopBits Value);
    /// The four of them at once.
    void SetLine(const TLineSettings& Value);

    /// Quiet time in milliseconds after which a real port hands over what came; 0: at once. For equipment
    /// whose answers are told apart by silence.
    int ReadGap() const { return FReadGap; }
    void SetReadGap(int Value) { FReadGap = Value; }

    virtual bool Connected() const = 0;
    void SetConnected(bool Value);

    /// Opens the port; opening an open port does nothing. @throws EComPort
    void Open();
    /// Closes the port. @throws EComPort
    void Close();
    /// Writes bytes, as they are. @throws EComPort when the port is closed or the write fails.
    void Write(const QByteArray& bytes);

    /// Error reports of the operating system on an open port. One slot: the last one to set it has it. For
    /// those who only want to know, there is `errorReported`.
    TComportError OnException;

    /// Bytes read since the port was created.
    qint64 bytesRead() const { return FBytesRead; }

Q_SIGNALS:
    /// Every error report, just before `OnException`, for any number of observers. What they raise goes to
    /// the exception handler.
    void errorReported(tnv5::platform::TComExceptionKind kind, const QString& message);

protected:
    virtual void doOpen() = 0;
    virtual void doClose() = 0;
    virtual void doWrite(const QByteArray& bytes) = 0;
    /// The settings changed, perhaps of an open port. The last thing that is done: the port may be destroyed
    /// by it.
    virtual void applySettings() {}

    /// Hands one read to the splitters. What their handlers raise goes to the exception handler.
    void deliver(const QByteArray& bytes);
    /// Tells the observers, then calls `OnException`; what that raises leaves this function.
    void fireException(TComExceptionKind kind, const QString& message, qint64 osError, const QString& osText);

private:
    friend class TComDataPacket;
    void attach(TComDataPacket* packet);
    void detach(TComDataPacket* packet);

    struct TRead
    {
        QByteArray bytes;
        QList<QPointer<TComDataPacket>> packets; // the splitters attached when it came
        qsizetype next;                          // the first one that has not seen it yet
    };

    QString FPort;
    TLineSettings FLine;
    int FReadGap = 0;
    qint64 FBytesRead = 0;
    QList<QPointer<TComDataPacket>> FPackets;
    std::deque<TRead> FReads;
};

} // namespace tnv5::platform
