#include "bench/line_feeder.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace tnv5::bench {

namespace {

using TSteady = std::chrono::steady_clock;

constexpr int kLineSize = 14;
constexpr int kAddresses = 16;
constexpr std::size_t kPiece = 8; // bytes at which a serial chip interrupts
constexpr std::chrono::milliseconds kStep{2};
constexpr int kStepsPerDrain = 25;

/// One line of equipment.
class TFeed
{
public:
    TFeed(int descriptor, int lines, double phase) : FDescriptor(descriptor), FPhase(phase)
    {
        for (int i = 0; i < lines; ++i) {
            const int address = i % kAddresses;
            FStream += '$';
            FStream += static_cast<char>('0' + address / 10);
            FStream += static_cast<char>('0' + address % 10);
            FStream += "AR" + std::to_string(kFirstSerial + i) + '\r';
        }
    }

    bool done() const { return FWritten == FStream.size(); }

    void writeDue(double elapsedSeconds)
    {
        const double due = std::max(0.0, (elapsedSeconds - FPhase) * kBytesPerSecond);
        const std::size_t until = std::min(FStream.size(), static_cast<std::size_t>(due));
        const bool last = until == FStream.size();
        if (until < FWritten + kPiece && !last) {
            return;
        }
        if (until > FWritten) {
            const ssize_t count = ::write(FDescriptor, FStream.data() + FWritten, until - FWritten);
            FWritten += count > 0 ? static_cast<std::size_t>(count) : 0;
            FLate += until - FWritten;
        }
    }

    void drain() const
    {
        char bytes[4096];
        while (::read(FDescriptor, bytes, sizeof bytes) > 0) {
        }
    }

    std::uint64_t late() const { return FLate; }

private:
    int FDescriptor;
    double FPhase; // seconds by which this line runs behind the first
    std::string FStream;
    std::size_t FWritten = 0;
    std::uint64_t FLate = 0;
};

void feedAll(std::vector<TFeed>& feeds, int resultPipe)
{
    const auto begin = TSteady::now();
    bool told = false;
    for (int step = 0;; ++step) {
        const double elapsed = std::chrono::duration<double>(TSteady::now() - begin).count();
        for (TFeed& feed : feeds) {
            feed.writeDue(elapsed);
        }
        if (step % kStepsPerDrain == 0) {
            std::for_each(feeds.begin(), feeds.end(), [](const TFeed& feed) { feed.drain(); });
        }
        if (!told && std::all_of(feeds.begin(), feeds.end(), [](const TFeed& feed) { return feed.done(); })) {
            std::uint64_t late = 0;
            std::for_each(feeds.begin(), feeds.end(), [&late](const TFeed& feed) { late += feed.late(); });
            told = ::write(resultPipe, &late, sizeof late) == sizeof late;
        }
        std::this_thread::sleep_until(begin + kStep * (step + 1));
    }
}

void makePipe(int (&ends)[2], int flags)
{
    if (pipe2(ends, O_CLOEXEC | flags) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
}

} // namespace

int linesIn(int seconds)
{
    return seconds * kBytesPerSecond / kLineSize;
}

TLineFeeder::TLineFeeder(const std::vector<TPseudoTerminal>& lines, int seconds)
{
    int startEnds[2];
    int resultEnds[2];
    makePipe(startEnds, 0);
    makePipe(resultEnds, O_NONBLOCK);
    FProcess = fork();
    if (FProcess < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (FProcess == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL); // whatever ends the other process
        close(startEnds[1]);
        std::vector<TFeed> feeds;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const double phase =
                static_cast<double>(i * kLineSize) / kBytesPerSecond / static_cast<double>(lines.size());
            feeds.emplace_back(lines[i].descriptor(), linesIn(seconds), phase);
        }
        char go = 0;
        if (read(startEnds[0], &go, 1) == 1) { // not when the other process has ended
            feedAll(feeds, resultEnds[1]);
        }
        _exit(0);
    }
    close(startEnds[0]);
    close(resultEnds[1]);
    FStart = startEnds[1];
    FResult = resultEnds[0];
}

TLineFeeder::~TLineFeeder()
{
    kill(FProcess, SIGTERM);
    waitpid(FProcess, nullptr, 0);
    close(FStart);
    close(FResult);
}

void TLineFeeder::start()
{
    if (write(FStart, "g", 1) != 1) {
        throw std::system_error(errno, std::generic_category(), "feeder");
    }
}

std::optional<std::uint64_t> TLineFeeder::lateBytes() const
{
    std::uint64_t late = 0;
    if (read(FResult, &late, sizeof late) == sizeof late) {
        return late;
    }
    return std::nullopt;
}

} // namespace tnv5::bench
