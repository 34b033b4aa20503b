#include "bench/latency_peer.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace tnv5::bench {

using std::chrono::nanoseconds;
using TSteady = std::chrono::steady_clock;

namespace {

constexpr std::chrono::seconds kStartLimit{20};
constexpr std::chrono::seconds kAnswerLimit{2};

int remainingMs(TSteady::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - TSteady::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

} // namespace

TLatencyPeer::TLatencyPeer(std::string name, const std::string& command, const std::string& cardsPath)
    : FName(std::move(name))
{
    start(command, cardsPath);
    awaitReady();
}

TLatencyPeer::~TLatencyPeer()
{
    if (FProcess > 0) {
        kill(-FProcess, SIGTERM); // with whatever it has started itself
        waitpid(FProcess, nullptr, 0);
    }
    if (FOutput >= 0) {
        close(FOutput);
    }
}

void TLatencyPeer::start(const std::string& command, const std::string& cardsPath)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        fail("no pipe");
    }
    const std::string line = "exec " + command + " " + FLine.portPath() + " " + cardsPath;
    FProcess = fork();
    if (FProcess == 0) {
        setpgid(0, 0);
        dup2(ends[1], STDOUT_FILENO);
        execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
        _exit(127);
    }
    setpgid(FProcess, FProcess); // here too: whoever comes first
    close(ends[1]);
    FOutput = ends[0];
    if (FProcess < 0) {
        fail("cannot be started");
    }
}

void TLatencyPeer::awaitReady()
{
    const auto deadline = TSteady::now() + kStartLimit;
    std::string output;
    while (output.find("ready\n") == std::string::npos) {
        pollfd wait{FOutput, POLLIN, 0};
        char bytes[256];
        if (poll(&wait, 1, remainingMs(deadline)) <= 0) {
            fail("does not get ready");
        }
        const ssize_t count = read(FOutput, bytes, sizeof bytes);
        if (count <= 0) {
            fail("ended before it was ready");
        }
        output.append(bytes, static_cast<std::size_t>(count));
    }
}

nanoseconds TLatencyPeer::ask(const std::string& card, const std::string& expected)
{
    const auto asked = TSteady::now();
    const auto deadline = asked + kAnswerLimit;
    send(card);
    std::string answer;
    while (answer.size() < expected.size()) {
        char bytes[256];
        const ssize_t count = read(FLine.descriptor(), bytes, sizeof bytes);
        if (count > 0) {
            answer.append(bytes, static_cast<std::size_t>(count));
            continue;
        }
        pollfd wait{FLine.descriptor(), POLLIN, 0};
        if (poll(&wait, 1, remainingMs(deadline)) <= 0) {
            fail("did not answer " + card);
        }
    }
    const auto answered = TSteady::now();
    if (answer != expected) {
        fail("answered " + card + " with " + answer + " instead of " + expected);
    }
    return answered - asked;
}

void TLatencyPeer::tell(const std::vector<std::string>& lines)
{
    for (const std::string& line : lines) {
        send(line);
    }
}

void TLatencyPeer::send(const std::string& bytes)
{
    if (write(FLine.descriptor(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        fail(std::string("cannot be written to: ") + std::strerror(errno));
    }
}

void TLatencyPeer::fail(const std::string& what) const
{
    throw std::runtime_error(FName + " " + what);
}

} // namespace tnv5::bench
