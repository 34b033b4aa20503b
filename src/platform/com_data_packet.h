#pragma once

#include "tnv5/platform/com_port.h"

#include <QByteArray>
#include <QPointer>
#include <functional>

namespace tnv5::platform {

/// Splits what a port reads into packets between a start and a stop string, or where custom handlers say.
///
/// The same packets come out however the stream is cut into reads. What stands before a start string is
/// dropped; a start string inside a packet is content; empty packets are delivered. A packet is taken out of
/// the buffer before its handler runs, so that an exception in it ends that packet only; it goes to the
/// exception handler. An unfinished packet survives closing and reopening the port; attaching to a port
/// empties the buffer.
///
///     packet.SetStartString("$");
///     packet.SetStopString("\r");
///     packet.OnPacket = [](TComDataPacket*, const QByteArray& body) { ... };
///     packet.SetComPort(&port);
class TComDataPacket : public TComponent
{
    Q_OBJECT
    Q_PROPERTY(QByteArray StartString READ StartString WRITE SetStartString)
    Q_PROPERTY(QByteArray StopString READ StopString WRITE SetStopString)

public:
    /// Longest packet, start and stop string included. A longer one is dropped and counted, and reading
    /// resumes at the next start string.
    static constexpr qsizetype kMaxPacket = 65'536;

    /// Sets `Pos` to a 1-based position in `Str`, the receive buffer. It is preset to -1, which leaves the
    /// search to the start or stop string; 0 or less otherwise: not found. An end position is that of the
    /// last byte of the packet.
    using TCustomEvent = std::function<void(TComDataPacket* Sender, const QByteArray& Str, qsizetype& Pos)>;
    /// One packet: the bytes between the strings, both excluded, or everything up to the custom position.
    using TPacketEvent = std::function<void(TComDataPacket* Sender, const QByteArray& Str)>;

    explicit TComDataPacket(QObject* AOwner = nullptr);
    ~TComDataPacket() override;

    /// The port that is listened to; not owned. Setting it, also to the same port again, empties the buffer.
    TComPort* ComPort() const { return FComPort; }
    void SetComPort(TComPort* Value);

    /// An empty string is never found. A new start string counts for the next packet, a new stop string at
    /// once.
    QByteArray StartString() const { return FStartString; }
    void SetStartString(const QByteArray& Value) { FStartString = Value; }
    QByteArray StopString() const { return FStopString; }
    void SetStopString(const QByteArray& Value)
    {
        FStopString = Value;
        FScanned = 0; // it may stand where the old one was not
    }

    TCustomEvent OnCustomStart;
    TCustomEvent OnCustomStop;
    TPacketEvent OnPacket;

    /// Takes one read. Called by the port; tests may call it directly.
    void append(const QByteArray& bytes);

    /// Packets dropped because they were longer than `kMaxPacket`.
    qint64 dropped() const { return FDropped; }
    /// Bytes waiting for the rest of a packet, or for the rest of a start string.
    qsizetype buffered() const { return FBuffer.size() - FTaken; }

private:
    enum class TTake { Nothing, Packet, Overlong, Again };

    QByteArrayView waiting() const { return QByteArrayView(FBuffer).sliced(FTaken); }
    void serve();
    bool findStart();
    TTake takePacket(QByteArray& packet);
    TTake takeByString(QByteArray& packet);
    TTake waitForMore();
    TTake dropOverlong();
    void hand(const QByteArray& packet);
    void take(qsizetype count);
    void keepBeginningOfStart();
    qsizetype ask(const TCustomEvent& event);

    QPointer<TComPort> FComPort;
    QByteArray FStartString;
    QByteArray FStopString;
    QByteArray FBuffer;
    qsizetype FTaken = 0;   // bytes at the beginning of the buffer that are done with
    qsizetype FBegin = 0;   // length of the start string that the packet under way was found by
    qsizetype FScanned = 0; // bytes of the packet that are known to hold no stop string
    bool FInside = false;
    bool FAsking = false;
    quint64 FAttachments = 0; // tells whether a custom handler has attached anew, which empties the buffer
    qint64 FDropped = 0;
};

} // namespace tnv5::platform
