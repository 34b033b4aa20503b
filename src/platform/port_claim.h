#pragma once

#include <QString>

namespace tnv5::platform {

/// Keeps a serial device for one holder, whatever name it is reached by and whoever runs the programs.
///
/// It is an advisory lock on the device itself (flock), as other terminal programs take it. The serial
/// library locks a name, which a link goes around, and marks the device as exclusive, which root goes around.
class TPortClaim
{
public:
    TPortClaim() = default;
    ~TPortClaim() { release(); }
    TPortClaim(const TPortClaim&) = delete;
    TPortClaim& operator=(const TPortClaim&) = delete;

    /// Takes the device, without touching its settings, or waits for nobody.
    /// @return 0, or the system's error: EBUSY when somebody has it
    int take(const QString& port);
    void release();

    /// Whether the device takes about that many bauds: what its driver says that it does.
    bool takesRate(int baudRate) const;

private:
    int FDescriptor = -1;
};

} // namespace tnv5::platform
