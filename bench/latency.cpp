// Time from a card line to the open command over pseudo-terminals, several programs side by side.
//
//   latency CARDS NAME=COMMAND...
//
// A program named "networked" serves networked gates, all others classic ones.
//
// Every program is started as "COMMAND PORT CARDSFILE". The cards are sent in blocks, one program after the
// other, round and round, so that noise of the machine meets all alike. Every ninth card is a stranger and
// must be refused; the times are those of the members. Prints one line of JSON a program.

#include "bench/latency_peer.h"
#include "bench/program.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tnv5::bench {

namespace {

using std::chrono::nanoseconds;

constexpr int kMembers = 5'000;
constexpr int kFirstMember = 12'345'678;
constexpr int kFirstStranger = 56'780'000;
constexpr int kGates = 8;
constexpr int kStrangerEvery = 9; // meets every gate in turn
constexpr int kBlock = 25;
constexpr int kWarmUpBlocks = 8;
// between two cards: the passage is over and the component's timer, set to 1 ms, has come to rest
constexpr std::chrono::milliseconds kPause{8};
constexpr int kPauseJitterUs = 2'000;
constexpr std::string_view kNetworkedName = "networked"; // the program of this name serves networked gates

/// The members' cards in a file that goes away with this object.
class TCardsFile
{
public:
    TCardsFile()
    {
        const int descriptor = mkstemp(FPath.data());
        FILE* file = descriptor >= 0 ? fdopen(descriptor, "w") : nullptr;
        if (file == nullptr) {
            throw std::runtime_error("cannot write the cards file");
        }
        for (int i = 0; i < kMembers; ++i) {
            std::fprintf(file, "%d\n", kFirstMember + i);
        }
        std::fclose(file);
    }
    ~TCardsFile() { unlink(FPath.c_str()); }
    TCardsFile(const TCardsFile&) = delete;
    TCardsFile& operator=(const TCardsFile&) = delete;

    const std::string& path() const { return FPath; }

private:
    std::string FPath = "/tmp/tnv5-bench-cards-XXXXXX";
};

std::string hexByte(unsigned value)
{
    constexpr char kHex[] = "0123456789ABCDEF";
    return {kHex[value / 16 % 16], kHex[value % 16]};
}

/// The lines of a family of gates, of which there are eight on the line. Every card comes from another one
/// than the card before.
struct TProtocol
{
    std::string (*cardRead)(char gate, const std::string& card);
    std::string (*command)(char gate, bool open);
    std::vector<std::string> (*passage)(char gate);
};

// classic turnstiles, 00A to 07A
const TProtocol kClassic = {
    [](char gate, const std::string& card) { return std::string("$0") + gate + "AR" + card + "\r"; },
    [](char gate, bool open) {
        const std::string fields = open ? "103" : "000";
        unsigned sum =
            static_cast<unsigned>('$') ^ static_cast<unsigned>(gate - '0') ^ static_cast<unsigned>('A');
        for (const char field : fields) {
            sum ^= static_cast<unsigned>(field - '0');
        }
        return std::string("$0") + gate + "A" + fields + hexByte(sum) + "\r";
    },
    [](char gate) {
        const std::string address = std::string("0") + gate + "A";
        return std::vector<std::string>{"#" + address + "Relay 1\r", "$" + address + "P\r",
                                        "$" + address + "G\r"};
    }};

// networked turnstiles, 000T to 007T; two characters that nothing verifies end each of their lines
const TProtocol kNetworked = {
    [](char gate, const std::string& card) { return std::string("$00") + gate + "TRQ" + card + "00\r"; },
    [](char gate, bool open) {
        const std::string line = std::string("$00") + gate + "T" + (open ? "GO" : "PH");
        unsigned crc = 0xFF;
        for (const char character : line) {
            crc ^= static_cast<unsigned char>(character);
            for (int bit = 0; bit < 8; ++bit) {
                crc = ((crc & 0x80U) != 0 ? (crc << 1U) ^ 0x31U : crc << 1U) & 0xFFU;
            }
        }
        return line + hexByte(crc);
    },
    [](char gate) {
        const std::string address = std::string("$00") + gate + "T";
        return std::vector<std::string>{address + "PR00\r", address + "GR00\r"};
    }};

struct TRunner
{
    std::unique_ptr<TLatencyPeer> peer;
    const TProtocol* protocol;
    std::vector<nanoseconds> times;
};

class TRun
{
public:
    explicit TRun(std::vector<TRunner> runners) : FRunners(std::move(runners)) {}

    void measure(int cards)
    {
        const int blocks = (cards + kBlock - 1) / kBlock;
        for (int block = -kWarmUpBlocks; block < blocks; ++block) {
            for (TRunner& runner : FRunners) {
                runBlock(runner, block >= 0);
            }
            if (isatty(STDERR_FILENO) != 0) {
                std::fprintf(stderr, "\r  block %d of %d ", std::max(block + 1, 0), blocks);
            }
        }
        if (isatty(STDERR_FILENO) != 0) {
            std::fprintf(stderr, "\r%*s\r", 40, "");
        }
    }

    void print()
    {
        for (TRunner& runner : FRunners) {
            std::sort(runner.times.begin(), runner.times.end());
            std::printf("{\"name\": \"%s\", \"cards\": %zu, \"median_us\": %.1f, \"p99_us\": %.1f}\n",
                        runner.peer->name().c_str(), runner.times.size(), quantileUs(runner.times, 0.5),
                        quantileUs(runner.times, 0.99));
        }
    }

private:
    void runBlock(TRunner& runner, bool counted)
    {
        for (int i = 0; i < kBlock; ++i) {
            const bool stranger = ++FCards % kStrangerEvery == 0;
            const int card = (stranger ? kFirstStranger : kFirstMember) + FMember(FRandom);
            const char gate = static_cast<char>('0' + FCards % kGates);
            const nanoseconds time = runner.peer->ask(runner.protocol->cardRead(gate, std::to_string(card)),
                                                      runner.protocol->command(gate, !stranger));
            if (!stranger) {
                runner.peer->tell(runner.protocol->passage(gate));
                if (counted) {
                    runner.times.push_back(time);
                }
            }
            std::this_thread::sleep_for(kPause + std::chrono::microseconds(FJitterUs(FRandom)));
        }
    }

    static double quantileUs(const std::vector<nanoseconds>& sorted, double quantile)
    {
        const auto index = static_cast<std::size_t>(quantile * static_cast<double>(sorted.size() - 1));
        return static_cast<double>(sorted[index].count()) / 1000.0;
    }

    std::vector<TRunner> FRunners;
    std::mt19937 FRandom{1}; // NOLINT(cert-msc51-cpp): the same cards in every run
    std::uniform_int_distribution<int> FMember{0, kMembers - 1};
    std::uniform_int_distribution<int> FJitterUs{0, kPauseJitterUs};
    int FCards = 0;
};

int run(int argc, char** argv)
{
    const int cards = argc > 2 ? std::atoi(argv[1]) : 0;
    if (cards <= 0) {
        std::fprintf(stderr, "usage: %s CARDS NAME=COMMAND...\n", argv[0]);
        return 2;
    }
    const TCardsFile members;
    std::vector<TRunner> runners;
    for (int i = 2; i < argc; ++i) {
        const std::string argument = argv[i];
        const std::size_t equals = argument.find('=');
        if (equals == std::string::npos) {
            throw std::runtime_error("not NAME=COMMAND: " + argument);
        }
        const std::string name = argument.substr(0, equals);
        runners.push_back({std::make_unique<TLatencyPeer>(name, argument.substr(equals + 1), members.path()),
                           name == kNetworkedName ? &kNetworked : &kClassic,
                           {}});
    }
    TRun measurement(std::move(runners));
    measurement.measure(cards);
    measurement.print();
    return 0;
}

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    return tnv5::bench::runProgram("latency", [&] { return tnv5::bench::run(argc, argv); });
}
