#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tnv5::bench {

/// Lets this process and those that it starts have as many descriptors as the system allows.
void raiseDescriptorLimit();

/// What every measured text begins with; behind it stand 20 digits, the time of sending in nanoseconds.
constexpr char kTextMark[] = "LOG!";
constexpr std::size_t kTimeDigits = 20;

/// Nanoseconds of a clock that all processes of a machine share.
std::int64_t nowNs();

/// Many clients of a server on loopback, which count the texts that reach them.
class TAudience
{
public:
    enum class TSpeech {
        Plain, ///< the monitor stream
        Mqtt   ///< subscribers of everything, quality of service 0
    };

    /// Connects, one after the other. @throws std::system_error
    TAudience(TSpeech speech, int port, int clients);
    ~TAudience();
    TAudience(const TAudience&) = delete;
    TAudience& operator=(const TAudience&) = delete;

    /// Clients that do not read from now on.
    void deafen(int clients);

    /// Reads until so many texts have come to all clients together, or for ever.
    /// @throws std::runtime_error when a client is dropped that reads
    void hear(std::int64_t texts);

    /// Called for each text with the time from sending to reading, in nanoseconds.
    std::function<void(std::int64_t)> OnText;

private:
    struct TClient
    {
        int descriptor = -1;
        std::string rest; // a text that has not come to its end
    };

    int connectTo(int port) const;
    void subscribe(int descriptor) const;
    std::int64_t read(TClient& client);

    TSpeech FSpeech;
    int FPoll = -1;
    std::vector<TClient> FClients;
};

} // namespace tnv5::bench
