#include "tnv5/platform/serial_port.h"

#include <QSerialPort>
#include <cerrno>
#include <poll.h>
#include <system_error>

namespace tnv5::platform {

namespace {

QSerialPort::Parity toQt(TParity parity)
{
    switch (parity) {
    case TParity::None:
        return QSerialPort::NoParity;
    case TParity::Odd:
        return QSerialPort::OddParity;
    case TParity::Even:
        return QSerialPort::EvenParity;
    case TParity::Mark:
        return QSerialPort::MarkParity;
    case TParity::Space:
        return QSerialPort::SpaceParity;
    }
    return QSerialPort::NoParity;
}

QSerialPort::StopBits toQt(TStopBits stopBits)
{
    switch (stopBits) {
    case TStopBits::One:
        return QSerialPort::OneStop;
    case TStopBits::OneAndHalf:
        return QSerialPort::OneAndHalfStop;
    case TStopBits::Two:
        return QSerialPort::TwoStop;
    }
    return QSerialPort::OneStop;
}

QSerialPort::DataBits toQtDataBits(int bits)
{
    return bits >= 5 && bits <= 8 ? static_cast<QSerialPort::DataBits>(bits) : QSerialPort::Data8;
}

// The serial library keeps its own error classes; hosts and installers want the operating system's number.
int osErrorOf(QSerialPort::SerialPortError error)
{
    switch (error) {
    case QSerialPort::NoError:
        return 0;
    case QSerialPort::DeviceNotFoundError:
        return ENOENT;
    case QSerialPort::PermissionError:
        return EACCES;
    case QSerialPort::OpenError:
        return EBUSY;
    case QSerialPort::NotOpenError:
        return EBADF;
    case QSerialPort::UnsupportedOperationError:
        return ENOTSUP;
    case QSerialPort::TimeoutError:
        return ETIMEDOUT;
    default:
        return EIO;
    }
}

TComExceptionKind kindOf(QSerialPort::SerialPortError error)
{
    switch (error) {
    case QSerialPort::ResourceError:
    case QSerialPort::ReadError: // an unplugged device is reported as either
        return TComExceptionKind::Resource;
    case QSerialPort::WriteError:
        return TComExceptionKind::Write;
    case QSerialPort::DeviceNotFoundError:
    case QSerialPort::PermissionError:
    case QSerialPort::OpenError:
        return TComExceptionKind::Open;
    default:
        return TComExceptionKind::Unknown;
    }
}

QString osTextOf(int osError)
{
    return QString::fromStdString(std::generic_category().message(osError));
}

} // namespace

TSerialPort::TSerialPort(QObject* AOwner) : TComPort(AOwner)
{
    FQuiet.OnTimer = [this](TTimer*) { onQuiet(); };
}

TSerialPort::~TSerialPort()
{
    dropPort();
}

bool TSerialPort::Connected() const
{
    return FSerial != nullptr && FSerial->isOpen();
}

bool TSerialPort::settled() const
{
    if (!Connected()) {
        return true;
    }
    pollfd entry{FSerial->handle(), POLLIN, 0}; // asking makes the system hand on what it has in hand
    ::poll(&entry, 1, 0);
    return entry.revents == 0 && FSerial->bytesAvailable() == 0 && FSerial->bytesToWrite() == 0;
}

// Nothing of the device is touched before it is ours: its settings are those of who holds it.
void TSerialPort::claim()
{
    if (BaudRate() < 1) {
        throw EComPort(
            QStringLiteral("Cannot open port %1: there is no rate of %2 baud").arg(Port()).arg(BaudRate()),
            EINVAL);
    }
    if (FClaim.take(Port()) == EBUSY) {
        throw EComPort(QStringLiteral("Cannot open port %1: another program has it open").arg(Port()), EBUSY);
    } // what else is wrong the serial library tells
}

void TSerialPort::doOpen()
{
    dropPort();
    claim();
    FSerial = new QSerialPort(this);
    FSerial->setPortName(Port());
    applySettings();
    FCalling = true;
    const bool opened = FSerial->open(QIODevice::ReadWrite);
    FCalling = false;
    if (!opened) {
        const int osError = osErrorOf(FSerial->error());
        const QString text = FSerial->errorString();
        dropPort();
        throw EComPort(QStringLiteral("Cannot open port %1: %2").arg(Port(), text), osError);
    }
    if (!FClaim.takesRate(BaudRate())) {
        dropPort();
        throw EComPort(QStringLiteral("Cannot open port %1: the device has no rate of %2 baud")
                           .arg(Port())
                           .arg(BaudRate()),
                       EINVAL);
    }
    // queued: the library does not report anew while a report is being handled, so that a line which arrives
    // while a handler pumps messages would wait for the one after it
    connect(FSerial, &QSerialPort::readyRead, this, &TSerialPort::onReadyRead, Qt::QueuedConnection);
    connect(FSerial, &QSerialPort::errorOccurred, this, &TSerialPort::onError);
}

void TSerialPort::doClose()
{
    dropPort();
}

void TSerialPort::doWrite(const QByteArray& bytes)
{
    if (FSerial->bytesToWrite() + bytes.size() > kMaxUnsent) {
        throw EComPort(QStringLiteral("Port %1 does not take any more data").arg(Port()), EAGAIN);
    }
    FCalling = true;
    const bool accepted = FSerial->write(bytes) == bytes.size();
    // sent at once: waiting for the next turn of the event loop would cost a person at the gate time
    const bool sent =
        accepted && (FSerial->flush() || FSerial->error() == QSerialPort::NoError || forgiveFullLine());
    FCalling = false;
    if (!sent) {
        const int osError = osErrorOf(FSerial->error());
        const QString text = FSerial->errorString();
        FSerial->clearError();
        throw EComPort(QStringLiteral("Cannot write to port %1: %2").arg(Port(), text), osError);
    }
}

// The library takes a line that has no room just now for one that has gone. It keeps what it was given, and
// sends it when there is room. Only for writes: when a device goes, what the library tells may look like
// this.
// @return whether that was it
bool TSerialPort::forgiveFullLine()
{
    if (FSerial->errorString() != qt_error_string(EAGAIN)) {
        return false;
    }
    FSerial->clearError();
    return true;
}

// What is refused is told of once, when all are set: a handler may close or destroy the port.
void TSerialPort::applySettings()
{
    if (FSerial == nullptr) {
        return;
    }
    FCalling = true;
    FSerial->clearError();
    FSerial->setBaudRate(BaudRate());
    FSerial->setDataBits(toQtDataBits(DataBits()));
    FSerial->setParity(toQt(Parity()));
    FSerial->setStopBits(toQt(StopBits()));
    FCalling = false;
    onError();
}

void TSerialPort::onReadyRead()
{
    const QByteArray bytes = Connected() ? FSerial->readAll() : QByteArray();
    if (bytes.isEmpty()) {
        return;
    }
    FWaiting += bytes;
    FQuiet.SetEnabled(false);
    if (ReadGap() > 0 && FWaiting.size() < kMaxWaiting) {
        FQuiet.SetInterval(ReadGap());
        FQuiet.SetEnabled(true);
    } else {
        guarded([this] { deliver(std::exchange(FWaiting, {})); });
    }
}

void TSerialPort::onQuiet()
{
    FQuiet.SetEnabled(false);
    if (moreHasCome()) { // the event loop was busy, not the line quiet
        onReadyRead();
        return;
    }
    const QPointer<TSerialPort> self(this);
    deliver(std::exchange(FWaiting, {}));
    if (self && Connected() && kindOf(FSerial->error()) == TComExceptionKind::Resource) {
        onError(); // the device has gone, and the library tells it only once: when it was asked just now
    }
}

bool TSerialPort::moreHasCome()
{
    FCalling = true; // that nothing has come is no error
    const bool come = FSerial->waitForReadyRead(0);
    FCalling = false;
    return come || FSerial->bytesAvailable() > 0;
}

void TSerialPort::onError()
{
    const QSerialPort::SerialPortError error = FSerial->error();
    if (error == QSerialPort::NoError || FCalling) {
        return;
    }
    const QString text = FSerial->errorString();
    const int osError = osErrorOf(error);
    const QPointer<TSerialPort> self(this);
    FReporting = true;
    guarded([&] {
        if (kindOf(error) == TComExceptionKind::Resource) {
            dropPort(); // the device is gone; the handler sees a closed port
        } else {
            FSerial->clearError();
        }
        fireException(kindOf(error), text, osError, osTextOf(osError));
    });
    if (self) {
        FReporting = false;
    }
}

void TSerialPort::dropPort()
{
    FClaim.release();
    if (FSerial == nullptr) {
        return;
    }
    FQuiet.SetEnabled(false);
    FWaiting.clear();
    QSerialPort* serial = std::exchange(FSerial, nullptr);
    serial->disconnect(this);
    serial->close();
    if (FReporting) { // it is the sender of the signal being handled: it must live until the event loop is
                      // reached
        serial->setParent(nullptr);
        serial->deleteLater();
    } else {
        delete serial;
    }
}

} // namespace tnv5::platform
