#pragma once

#include "support/fixture.h"
#include "tnv5/scales/scales_device.h"

namespace tnv5::host {

/// A scale of family 2 on a port in memory.
struct TScaleFixture : tests::TPortFixture
{
    static constexpr int kOverload = -1;
    static constexpr int kNegative = -2;

    TScaleFixture()
    {
        port->OnWritten = [this](const QByteArray& bytes) {
            if (answering) {
                feed(bytes == "\x05" ? QByteArray("\x06") : packet());
            }
        };
        scales.SetIDLang(2);
        scales.SetComport(port.get());
        scales.SetScalesType(2);
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

    scales::TScalesDevice scales;
    int load = 0; ///< in grams, or one of the above
    bool answering = true;
};

} // namespace tnv5::host
