// One text to many clients: texts a second, the time to each client, and processor time, several servers side
// by side.
//
//   fanout CLIENTS SECONDS NAME=COMMAND...
//
// Each command is started and writes "ready plain|mqtt PORT PROCESS" when it listens; PROCESS is the one
// whose processor time counts. On each line "N" that it reads it sends N texts, each with the time in it. Two
// measurements: bursts, the next one when all clients have the last one, for the rate; and single texts with
// pauses, for the delay. Prints one line of JSON a server, or fails when a client that reads was dropped.

#include "bench/audience.h"
#include "bench/program.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tnv5::bench {

namespace {

constexpr int kBurst = 64;
constexpr int kPauseUs = 10'000;
constexpr std::int64_t kNsPerS = 1'000'000'000;

double processorSeconds(int process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text((std::istreambuf_iterator<char>(file)), {});
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string skipped;
    for (int i = 0; i < 11; ++i) {
        fields >> skipped;
    }
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

/// A server in a process of its own, which sends when it is told to.
class TSpeaker
{
public:
    TSpeaker(const std::string& name, const std::string& command) : FName(name)
    {
        int toChild[2];
        int fromChild[2];
        if (pipe(toChild) != 0 || pipe(fromChild) != 0) {
            throw std::runtime_error("no pipe");
        }
        FProcess = fork();
        if (FProcess == 0) {
            dup2(toChild[0], STDIN_FILENO);
            dup2(fromChild[1], STDOUT_FILENO);
            for (const int end : {toChild[0], toChild[1], fromChild[0], fromChild[1]}) {
                close(end);
            }
            execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), nullptr);
            _exit(127);
        }
        close(toChild[0]);
        close(fromChild[1]);
        FIn = fdopen(toChild[1], "w");
        FOut = fdopen(fromChild[0], "r");
        char speech[16] = {};
        if (std::fscanf(FOut, "ready %15s %d %d", speech, &FPort, &FMeasured) != 3) {
            throw std::runtime_error(name + " does not start");
        }
        FSpeech = std::string(speech) == "mqtt" ? TAudience::TSpeech::Mqtt : TAudience::TSpeech::Plain;
    }
    ~TSpeaker()
    {
        std::fclose(FIn); // which ends it
        std::fclose(FOut);
        waitpid(FProcess, nullptr, 0);
    }
    TSpeaker(const TSpeaker&) = delete;
    TSpeaker& operator=(const TSpeaker&) = delete;

    void measure(int clients, int seconds)
    {
        TAudience audience(FSpeech, FPort, clients);
        usleep(200'000); // all of them are known to the server
        say(1);
        audience.hear(clients);

        const double before = processorSeconds(FMeasured);
        const std::int64_t start = nowNs();
        std::int64_t texts = 0;
        while (nowNs() - start < seconds * kNsPerS) {
            say(kBurst);
            audience.hear(std::int64_t{kBurst} * clients);
            texts += kBurst;
        }
        const double wall = static_cast<double>(nowNs() - start) / kNsPerS;
        const double used = processorSeconds(FMeasured) - before;

        std::vector<std::int64_t> delays;
        audience.OnText = [&delays](std::int64_t ns) { delays.push_back(ns); };
        const std::int64_t second = nowNs();
        while (nowNs() - second < seconds * kNsPerS) {
            say(1);
            audience.hear(clients);
            usleep(kPauseUs);
        }
        std::sort(delays.begin(), delays.end());
        const auto quantileUs = [&delays](double quantile) {
            return static_cast<double>(
                       delays[static_cast<std::size_t>(quantile * static_cast<double>(delays.size() - 1))]) /
                   1000.0;
        };
        const double delivered = static_cast<double>(texts) * clients;
        std::printf("{\"name\": \"%s\", \"clients\": %d, \"texts_per_s\": %.0f, \"delivered_per_s\": %.0f, "
                    "\"cpu_us_per_delivery\": %.3f, \"median_us\": %.1f, \"p99_us\": %.1f}\n",
                    FName.c_str(), clients, static_cast<double>(texts) / wall, delivered / wall,
                    1e6 * used / delivered, quantileUs(0.5), quantileUs(0.99));
        std::fflush(stdout);
    }

private:
    void say(int texts)
    {
        std::fprintf(FIn, "%d\n", texts);
        std::fflush(FIn);
    }

    std::string FName;
    pid_t FProcess = -1;
    int FMeasured = 0;
    int FPort = 0;
    TAudience::TSpeech FSpeech = TAudience::TSpeech::Plain;
    FILE* FIn = nullptr;
    FILE* FOut = nullptr;
};

int run(int argc, char** argv)
{
    const int clients = argc > 3 ? std::atoi(argv[1]) : 0;
    const int seconds = argc > 3 ? std::atoi(argv[2]) : 0;
    if (clients <= 0 || seconds <= 0) {
        std::fprintf(stderr, "usage: %s CLIENTS SECONDS NAME=COMMAND...\n", argv[0]);
        return 2;
    }
    std::signal(SIGPIPE, SIG_IGN);
    raiseDescriptorLimit();
    for (int i = 3; i < argc; ++i) {
        const std::string argument = argv[i];
        const std::size_t equals = argument.find('=');
        if (equals == std::string::npos) {
            throw std::runtime_error("not NAME=COMMAND: " + argument);
        }
        TSpeaker(argument.substr(0, equals), argument.substr(equals + 1)).measure(clients, seconds);
    }
    return 0;
}

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    return tnv5::bench::runProgram("fanout", [&] { return tnv5::bench::run(argc, argv); });
}
