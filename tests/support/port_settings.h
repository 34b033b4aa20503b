#pragma once

#include "tnv5/testing/memory_port.h"

#include <gtest/gtest.h>

namespace tnv5::tests {

/// What a component sets up on its port.
struct TPortSettings
{
    int baudRate;
    int dataBits;
    platform::TParity parity;
    platform::TStopBits stopBits;
    int readGap;

    bool operator==(const TPortSettings&) const = default;
};

/// Settings that no component has.
inline constexpr TPortSettings kSpoilt{19'200, 7, platform::TParity::Odd, platform::TStopBits::Two, 77};

inline TPortSettings settingsOf(const testkit::TMemoryPort& port)
{
    return {port.BaudRate(), port.DataBits(), port.Parity(), port.StopBits(), port.ReadGap()};
}

inline void spoilSettings(testkit::TMemoryPort& port)
{
    port.SetBaudRate(kSpoilt.baudRate);
    port.SetDataBits(kSpoilt.dataBits);
    port.SetParity(kSpoilt.parity);
    port.SetStopBits(kSpoilt.stopBits);
    port.SetReadGap(kSpoilt.readGap);
}

inline void PrintTo(const TPortSettings& settings, std::ostream* out)
{
    *out << settings.baudRate << ' ' << settings.dataBits << ' ' << int(settings.parity) << ' '
         << int(settings.stopBits) << ' ' << settings.readGap;
}

} // namespace tnv5::tests
