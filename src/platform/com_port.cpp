#include "tnv5/platform/com_port.h"

#include "tnv5/platform/com_data_packet.h"

namespace tnv5::platform {

TComPort::TComPort(QObject* AOwner) : TComponent(AOwner) {}

TComPort::~TComPort() = default;

void TComPort::SetBaudRate(int Value)
{
    FLine.baudRate = Value;
    applySettings();
}

void TComPort::SetDataBits(int Value)
{
    FLine.dataBits = Value;
    applySettings();
}

void TComPort::SetParity(TParity Value)
{
    FLine.parity = Value;
    applySettings();
}

void TComPort::SetStopBits(TStopBits Value)
{
    FLine.stopBits = Value;
    applySettings();
}

void TComPort::SetLine(const TLineSettings& Value)
{
    FLine = Value;
    applySettings();
}

void TComPort::SetConnected(bool Value)
{
    if (Value) {
        Open();
    } else {
        Close();
    }
}

void TComPort::Open()
{
    Operation([this] {
        if (!Connected()) {
            doOpen();
        }
    });
}

void TComPort::Close()
{
    Operation([this] { doClose(); });
}

void TComPort::Write(const QByteArray& bytes)
{
    Operation([&] {
        if (!Connected()) {
            throw EComPort(QStringLiteral("Port %1 is not open").arg(FPort));
        }
        doWrite(bytes);
    });
}

void TComPort::deliver(const QByteArray& bytes)
{
    FBytesRead += bytes.size();
    FReads.push_back({bytes, FPackets, 0});

    // A handler may pump messages and so come here again with the next read: the reads still under way are
    // then finished first, so that no splitter sees them out of order.
    const QPointer<TComPort> self(this);
    while (self && !FReads.empty()) {
        TRead& read = FReads.front();
        if (read.next == read.packets.size()) {
            FReads.pop_front();
            continue;
        }
        const QByteArray piece = read.bytes;
        const QPointer<TComDataPacket> packet = read.packets.at(read.next++);
        if (packet && packet->ComPort() == this) {
            packet->append(piece);
        }
    }
}

void TComPort::fireException(TComExceptionKind kind, const QString& message, qint64 osError,
                             const QString& osText)
{
    CallOut([&] { guarded([&] { Q_EMIT errorReported(kind, message); }); });
    Fire(OnException, kind, message, osError, osText);
}

void TComPort::attach(TComDataPacket* packet)
{
    FPackets.append(packet);
}

void TComPort::detach(TComDataPacket* packet)
{
    FPackets.removeIf([packet](const QPointer<TComDataPacket>& other) { return !other || other == packet; });
}

} // namespace tnv5::platform
