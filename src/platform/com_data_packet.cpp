#include "tnv5/platform/com_data_packet.h"

#include <algorithm>

namespace tnv5::platform {

TComDataPacket::TComDataPacket(QObject* AOwner) : TComponent(AOwner) {}

TComDataPacket::~TComDataPacket()
{
    if (FComPort) {
        FComPort->detach(this);
    }
}

void TComDataPacket::SetComPort(TComPort* Value)
{
    if (FComPort) {
        FComPort->detach(this);
    }
    FComPort = Value;
    ++FAttachments;
    take(buffered());
    FInside = false;
    if (FComPort) {
        FComPort->attach(this);
    }
}

void TComDataPacket::append(const QByteArray& bytes)
{
    if (buffered() == 0) {
        FBuffer = bytes; // shared with the port: nothing is copied in the usual case of whole lines
    } else {
        FBuffer.remove(0, FTaken);
        FBuffer.append(bytes);
    }
    FTaken = 0;
    if (!FAsking) { // a custom handler that pumps messages: the call under way serves these bytes too
        Operation([this] { serve(); });
    }
}

void TComDataPacket::serve()
{
    while (buffered() > 0) {
        const quint64 attachment = FAttachments;
        if (!FInside && !findStart()) {
            if (attachment == FAttachments) {
                return;
            }
            continue;
        }
        QByteArray packet;
        switch (takePacket(packet)) {
        case TTake::Nothing:
            return;
        case TTake::Packet:
            hand(packet);
            break;
        case TTake::Overlong:
        case TTake::Again:
            break;
        }
    }
}

bool TComDataPacket::findStart()
{
    const quint64 attachment = FAttachments;
    const qsizetype position = ask(OnCustomStart);
    if (attachment != FAttachments) {
        return false; // the position belongs to a buffer that is gone
    }
    const bool byString = position == -1;
    qsizetype index = position - 1;
    if (byString) {
        index = FStartString.isEmpty() ? -1 : waiting().indexOf(FStartString);
    }
    if (index < 0 || index >= buffered()) {
        keepBeginningOfStart();
        return false;
    }
    take(index);
    FInside = true;
    FBegin = byString ? FStartString.size() : 0;
    return true;
}

TComDataPacket::TTake TComDataPacket::takePacket(QByteArray& packet)
{
    const quint64 attachment = FAttachments;
    const qsizetype position = ask(OnCustomStop);
    if (attachment != FAttachments) {
        return TTake::Again;
    }
    if (position == -1) {
        return takeByString(packet);
    }
    if (position <= 0) {
        return waitForMore();
    }
    const qsizetype size = std::min(position, buffered());
    if (size > kMaxPacket) {
        return dropOverlong();
    }
    packet = waiting().first(size).toByteArray();
    take(size);
    FInside = false;
    return TTake::Packet;
}

TComDataPacket::TTake TComDataPacket::takeByString(QByteArray& packet)
{
    const QByteArrayView view = waiting().first(std::min(buffered(), kMaxPacket));
    const qsizetype stop = FStopString.isEmpty() || FBegin > view.size()
                               ? -1
                               : view.indexOf(FStopString, std::max(FBegin, FScanned));
    if (stop < 0) {
        FScanned = std::max<qsizetype>(0, view.size() - FStopString.size() + 1);
        return waitForMore();
    }
    packet = view.sliced(FBegin, stop - FBegin).toByteArray();
    take(stop + FStopString.size());
    FInside = false;
    return TTake::Packet;
}

TComDataPacket::TTake TComDataPacket::waitForMore()
{
    return buffered() < kMaxPacket ? TTake::Nothing : dropOverlong();
}

TComDataPacket::TTake TComDataPacket::dropOverlong()
{
    // always the same number of bytes, so that the stream may be cut anywhere
    take(std::min(kMaxPacket, buffered()));
    FInside = false;
    ++FDropped;
    return TTake::Overlong;
}

void TComDataPacket::hand(const QByteArray& packet)
{
    if (const auto handler = OnPacket) {
        CallOut([&] { guarded([&] { handler(this, packet); }); });
    }
}

void TComDataPacket::take(qsizetype count)
{
    FTaken += count;
    FScanned = 0;
    if (buffered() == 0) {
        FBuffer.clear();
        FTaken = 0;
    }
}

void TComDataPacket::keepBeginningOfStart()
{
    const qsizetype longest = std::min(FStartString.size() - 1, buffered());
    for (qsizetype size = longest; size > 0; --size) {
        if (waiting().endsWith(QByteArrayView(FStartString).first(size))) {
            take(buffered() - size);
            return;
        }
    }
    take(buffered());
}

qsizetype TComDataPacket::ask(const TCustomEvent& event)
{
    qsizetype position = -1;
    if (const auto handler = event) {
        FBuffer.remove(0, FTaken);
        FTaken = 0;
        const QByteArray buffer = FBuffer;
        FAsking = true;
        CallOut([&] {
            if (!guarded([&] { handler(this, buffer, position); })) {
                position = 0;
            }
        });
        FAsking = false;
    }
    return position;
}

} // namespace tnv5::platform
