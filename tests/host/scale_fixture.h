#pragma once

#include "tnv5/scales/scales_device.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

namespace tnv5::host {

/// A scale of family 2 on a port in memory.
struct TScaleOnPort
{
    static constexpr int kOverload = -1;
    static constexpr int kNegative = -2;

    TScaleOnPort()
    {
        port.OnWritten = [this](const QByteArray& bytes) {
            if (answering) {
                port.feed(bytes == "\x05" ? QByteArray("\x06") : packet());
            }
        };
        scales.SetIDLang(2);
        scales.SetComport(&port);
        scales.SetScalesType(2);
        port.Open();
    }

    QByteArray packet() const
    {
        if (load == kOverload) {
            return "\x01\x02"
                   "F 99.999kge\x03\x04";
        }
        const QByteArray digits = QByteArray::number(load == kNegative ? 40 : load).rightJustified(6, '0');
        return QByteArray("\x01\x02S") + (load == kNegative ? "-" : " ") + digits + "kge\x03\x04";
    }

    testkit::TManualClock clock;
    testkit::TMemoryPort port;
    scales::TScalesDevice scales;
    int load = 0; ///< in grams, or one of the above
    bool answering = true;
};

} // namespace tnv5::host
