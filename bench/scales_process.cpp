#include "bench/scales_process.h"

#include "sim/pty.h"
#include "sim/scales.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace tnv5::bench {

namespace {

constexpr int kPeriodMs = 100; // of the scales that talk by themselves
constexpr char kSpeak = 's';
constexpr char kBeQuiet = 'q';

struct TPlayed
{
    TPlayed(int family, int weight) : pty(QStringLiteral("scale%1").arg(family)), scale(pty, family)
    {
        pty.BaudRate = family == 1 || family == 3 ? 4'800 : 9'600;
        scale.put(weight);
        scale.setPeriodMs(kPeriodMs);
    }

    sim::TPty pty;
    sim::TSimulatedScale scale;
};

using TPlayedScales = std::vector<std::unique_ptr<TPlayed>>;

void obey(int commands, const TPlayedScales& scales)
{
    char command = 0;
    if (::read(commands, &command, 1) != 1) { // the other process has no more need of scales, or has died
        QCoreApplication::quit();
        return;
    }
    for (const auto& played : scales) {
        played->scale.setAnswering(command == kSpeak);
    }
}

void tellPorts(int pipe, const TPlayedScales& scales)
{
    std::string text;
    for (const auto& played : scales) {
        text += played->pty.path().toStdString() + '\n';
    }
    if (::write(pipe, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::system_error(errno, std::generic_category(), "names of ports");
    }
    ::close(pipe);
}

int play(int commands, int ports, int weight)
{
    // left to the end of the commands: the pseudo-terminals are files that have to be removed
    std::signal(SIGINT, SIG_IGN);
    try {
        int argc = 1;
        char name[] = "scales";
        char* argv[] = {name, nullptr};
        const QCoreApplication application(argc, argv);
        TPlayedScales scales;
        for (int family = 1; family <= kFamilies; ++family) {
            scales.push_back(std::make_unique<TPlayed>(family, weight));
        }
        const QSocketNotifier notifier(commands, QSocketNotifier::Read);
        QObject::connect(&notifier, &QSocketNotifier::activated, &notifier,
                         [commands, &scales] { obey(commands, scales); });
        // real scales keep no time together: halfway between the packets of the other one
        QTimer::singleShot(kPeriodMs / 2, [&scales] { scales.back()->scale.setPeriodMs(kPeriodMs); });
        tellPorts(ports, scales);
        return QCoreApplication::exec();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "scales: %s\n", error.what());
        return 1;
    }
}

struct TPipe
{
    TPipe()
    {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), "pipe");
        }
    }
    int ends[2];
};

/// What comes until the other process closes its end, cut into lines.
std::vector<std::string> linesFrom(int pipe)
{
    std::string text;
    char bytes[4096];
    for (ssize_t count = 0; (count = ::read(pipe, bytes, sizeof bytes)) > 0;) {
        text.append(bytes, static_cast<std::size_t>(count));
    }
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

} // namespace

TScalesProcess::TScalesProcess(int weight)
{
    const TPipe commands;
    const TPipe ports;
    FProcess = fork();
    if (FProcess < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (FProcess == 0) {
        ::close(commands.ends[1]);
        ::close(ports.ends[0]);
        _exit(play(commands.ends[0], ports.ends[1], weight));
    }
    ::close(commands.ends[0]);
    ::close(ports.ends[1]);
    FCommands = commands.ends[1];
    FPorts = linesFrom(ports.ends[0]);
    ::close(ports.ends[0]);
    if (FPorts.size() != kFamilies) {
        throw std::runtime_error("there are no simulated scales");
    }
}

TScalesProcess::~TScalesProcess()
{
    ::close(FCommands);
    waitpid(FProcess, nullptr, 0);
}

void TScalesProcess::setSpeaking(bool speaking)
{
    const char command = speaking ? kSpeak : kBeQuiet;
    if (::write(FCommands, &command, 1) != 1) {
        throw std::system_error(errno, std::generic_category(), "scales");
    }
}

} // namespace tnv5::bench
