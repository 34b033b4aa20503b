#pragma once

#include "scales_bench.h"

#include <array>

namespace tnv5::tests {

/// One whole weighing of a family as it looks on the wire.
struct TSample
{
    int type;
    QByteArray request;  ///< first request; empty: the scale talks by itself
    QByteArray answer;   ///< handshake that answers it; empty: the weight comes at once
    QByteArray second;   ///< request that the handshake calls for
    QByteArray bytes;    ///< what the scale sends for the weight
    QByteArray packet;   ///< the packet that is cut out of it
    QStringList decoded; ///< lines between "[03]" and the event, the event included
    int weight;
    qsizetype rest = 0; ///< bytes behind the packet, which are looked at once more and dropped
};

inline const std::array<TSample, 8>& samples()
{
    static const std::array<TSample, 8> all = {{
        {1, "D", "\x80\x00"_b, "E", "90", "90", {"log 0 12345", "weight 12345"}, 12345},
        {2,
         "\x05",
         "\x06",
         "\x11",
         "\x01\x02S 01.234kg*\x03\x04",
         "\x01\x02S 01.234kg*\x03\x04",
         {"weight 1234"},
         1234},
        {3,
         "\x00\x00\x03"_b,
         {},
         {},
         "005100000001000000"_b,
         "005100000001000000"_b,
         {"log Ask  005100000001000000", "log 001500", "log 1500"},
         1500},
        {4,
         "\x00\x00\x03\x00\x00\x00\x00\x00"_b,
         {},
         {},
         "00521000000\x00\x01\x80\xFF\x20\x0D"_b,
         "00521000000\x00\x01\x80\xFF\x20\x0D"_b,
         {"log 012500", "log 12500"},
         12500},
        {5, "<\x00!>"_b, {}, {}, "<\x00!00750\x0D>"_b, "\x00!00750\x0D"_b, {"log 00750", "log 750"}, 750},
        {6, "\x05\x0D", {}, {}, "B 00.850 kg\r\n", "B 00.850 kg\r", {"log 00850", "log 850"}, 850, 1},
        {7,
         {},
         {},
         {},
         "\x02ST+ 01250 g  US\r\n",
         "ST+ 01250 g  US",
         {"log 01250", "log ST+ 01250 g  US 1250%"},
         1250},
        {8, {}, {}, {}, "W  002.340kg", "  002.340", {"log   002.340 2340%"}, 2340},
    }};
    return all;
}

inline const TSample& sampleOf(int type)
{
    return samples().at(size_t(type - 1));
}

/// Every family, as a parameter.
class TEveryFamily : public ::testing::TestWithParam<int>, protected TScalesBench
{
protected:
    const TSample& sample() const { return sampleOf(GetParam()); }

    /// The lines of the request of this family.
    QStringList requested() const
    {
        return sample().request.isEmpty() ? QStringList() : sent(sample().request);
    }

    /// Asks without waiting and plays the handshake; what comes next is the weight.
    void prepare()
    {
        use(GetParam());
        scales->GetWeight(true);
        if (!sample().answer.isEmpty()) {
            feed(sample().answer);
        }
        trace.take();
    }

    /// The lines of a packet that came in one read.
    QStringList weighedAtOnce() const
    {
        QStringList lines = received(sample().packet) + sample().decoded;
        if (sample().rest > 0) {
            lines << kStart;
        }
        return lines;
    }
};

} // namespace tnv5::tests
