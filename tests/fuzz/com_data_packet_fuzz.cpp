// Any stream in any cut gives the same packets, within bounded memory. The first byte chooses the strings,
// the second one the size of the pieces.

#include "tnv5/platform/com_data_packet.h"
#include "tnv5/testing/memory_port.h"

#include <QByteArrayList>
#include <cstdint>
#include <cstdlib>

using namespace tnv5::platform;

namespace {

struct TStrings
{
    const char* start;
    const char* stop;
};

constexpr TStrings kStrings[] = {{"$", "\r"},   {"#", "\r"}, {"<>", "kg"},
                                 {"aab", "aa"}, {"", "\r"},  {"$", ""}};

QByteArrayList packetsOf(const TStrings& strings, const QByteArray& stream, qsizetype piece)
{
    QByteArrayList packets;
    tnv5::testkit::TMemoryPort port;
    TComDataPacket packet;
    packet.SetStartString(strings.start);
    packet.SetStopString(strings.stop);
    packet.OnPacket = [&](TComDataPacket*, const QByteArray& body) { packets << body; };
    packet.SetComPort(&port);
    port.feedInPieces(stream, piece);
    if (packet.buffered() > TComDataPacket::kMaxPacket) {
        std::abort();
    }
    return packets;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    const TStrings& strings = kStrings[data[0] % std::size(kStrings)];
    const QByteArray stream(reinterpret_cast<const char*>(data) + 2, static_cast<qsizetype>(size) - 2);
    if (packetsOf(strings, stream, stream.size() + 1) != packetsOf(strings, stream, 1 + data[1] % 16)) {
        std::abort();
    }
    return 0;
}
