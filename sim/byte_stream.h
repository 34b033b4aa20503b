#pragma once

#include <QByteArray>
#include <functional>

namespace tnv5::sim {

/// The line that a simulated device speaks over: a pseudo-terminal, a memory stream in a test, or a filter
/// in front of either.
class TByteStream
{
public:
    TByteStream() = default;
    virtual ~TByteStream() = default;
    TByteStream(const TByteStream&) = delete;
    TByteStream& operator=(const TByteStream&) = delete;

    /// Sends bytes to the other side. Never blocks; what cannot be sent is lost, as on a real line. A device
    /// makes one call for each of its lines.
    virtual void write(const QByteArray& bytes) = 0;

    /// Called with bytes from the other side, cut wherever the line cut them. The device on the stream sets
    /// this and clears it when it goes.
    std::function<void(const QByteArray& bytes)> OnRead;

protected:
    /// Hands bytes to `OnRead`, which may be replaced, or destroy the stream, while it runs.
    void deliver(const QByteArray& bytes)
    {
        if (const auto handler = OnRead) {
            handler(bytes);
        }
    }
};

} // namespace tnv5::sim
