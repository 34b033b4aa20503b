#pragma once

#include "scales_fixture.h"
#include "tnv5/scales/families.h"

#include <limits>
#include <vector>

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
    QByteArray blank;   ///< a packet without a weight, where a weight is expected
    qsizetype rest = 0; ///< bytes behind the packet, which are looked at once more and dropped
};

/// By number; every family has one.
inline const std::vector<TSample>& samples()
{
    static const std::vector<TSample> all = {
        {1, "D", "\x80\x00"_b, "E", "90", "90", {"log 0 12345", "weight 12345"}, 12345, "xyz"},
        {2,
         "\x05",
         "\x06",
         "\x11",
         "\x01\x02S 01.234kg*\x03\x04",
         "\x01\x02S 01.234kg*\x03\x04",
         {"weight 1234"},
         1234,
         "\x01\x02X\x04"},
        {3,
         "\x00\x00\x03"_b,
         {},
         {},
         "005100000001000000"_b,
         "005100000001000000"_b,
         {"log Ask  005100000001000000", "log 001500", "log 1500"},
         1500,
         QByteArray(18, ' ')},
        {4,
         "\x00\x00\x03\x00\x00\x00\x00\x00"_b,
         {},
         {},
         "00521000000\x00\x01\x80\xFF\x20\x0D"_b,
         "00521000000\x00\x01\x80\xFF\x20\x0D"_b,
         {"log 012500", "log 12500"},
         12500,
         QByteArray(17, ' ')},
        {5,
         "<\x00!>"_b,
         {},
         {},
         "<\x00!00750\x0D>"_b,
         "\x00!00750\x0D"_b,
         {"log 00750", "log 750"},
         750,
         "<>"},
        {6,
         "\x05\x0D",
         {},
         {},
         "B 00.850 kg\r\n",
         "B 00.850 kg\r",
         {"log 00850", "log 850"},
         850,
         "B\r\n",
         1},
        {7,
         {},
         {},
         {},
         "\x02ST+ 01250 g  US\r\n",
         "ST+ 01250 g  US",
         {"log 01250", "log ST+ 01250 g  US 1250%"},
         1250,
         "\x02\r\n"},
        {8, {}, {}, {}, "W  002.340kg", "  002.340", {"log   002.340 2340%"}, 2340, "Wkg"},
    };
    return all;
}

inline const TSample& sampleOf(int type)
{
    return samples().at(size_t(type - 1));
}

/// The numbers that are no family: none, the first behind the last, and others.
inline std::vector<int> noFamilies()
{
    return {0,   int(scales::families().size()),  -1,
            100, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
}

/// Whether the weight is told by `OnWeight`.
inline bool isTold(const TSample& sample)
{
    return sample.decoded.contains(weighed(sample.weight));
}

/// Every family, as a parameter.
class TEveryFamily : public ::testing::TestWithParam<int>, protected TScalesFixture
{
protected:
    const TSample& sample() const { return sampleOf(GetParam()); }
    const scales::TFamily& family() const { return *scales::familyOf(GetParam()); }

    /// Noise before a packet cannot be told from it.
    bool anyByteBegins() const { return family().findStart(scales::TStep::Ask, "?") == 1; }
    /// Only silence tells packets apart.
    bool everyReadIsAPacket() const
    {
        return anyByteBegins() && family().findStop(scales::TStep::Ask, "?") == 1;
    }

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
