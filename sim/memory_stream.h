#pragma once

#include "sim/byte_stream.h"

#include <QByteArrayList>
#include <utility>

namespace tnv5::sim {

/// A stream in memory: a test feeds what the device hears and takes what it said.
class TMemoryStream final : public TByteStream
{
public:
    void write(const QByteArray& bytes) override
    {
        if (KeepWrites) {
            FWrites.append(bytes);
        }
        if (const auto handler = OnWritten) {
            handler(bytes);
        }
    }

    /// Hands bytes to the device as one read.
    void feed(const QByteArray& bytes) { deliver(bytes); }

    /// Everything that the device wrote since the last call, one entry a write.
    QByteArrayList takeWrites() { return std::exchange(FWrites, {}); }
    /// The same as one byte string.
    QByteArray takeWritten() { return takeWrites().join(); }

    /// Called after each write, for example to answer it.
    std::function<void(const QByteArray& bytes)> OnWritten;

    /// Off: what is written goes to `OnWritten` only and is not kept. On by default.
    bool KeepWrites = true;

private:
    QByteArrayList FWrites;
};

} // namespace tnv5::sim
