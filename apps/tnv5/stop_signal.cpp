#include "apps/tnv5/stop_signal.h"

#include "tnv5/platform/errors.h"

#include <QSocketNotifier>
#include <csignal>
#include <fcntl.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace tnv5::cli {

namespace {

sigset_t stopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

void block(int how)
{
    const sigset_t signals = stopSignals();
    pthread_sigmask(how, &signals, nullptr);
}

sigset_t hangUp()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGHUP);
    return signals;
}

} // namespace

TStopSignal::TStopSignal(std::function<void()> onStop) : FOnStop(std::move(onStop))
{
    const sigset_t signals = stopSignals();
    FDescriptor = signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
    if (FDescriptor < 0) {
        throw platform::Exception(QStringLiteral("The system does not report signals"));
    }
    block(SIG_BLOCK); // they come through the descriptor instead
    FNotifier = new QSocketNotifier(FDescriptor, QSocketNotifier::Read, this);
    connect(FNotifier, &QSocketNotifier::activated, this, &TStopSignal::onSignal);
}

TStopSignal::~TStopSignal()
{
    delete FNotifier;
    close(FDescriptor);
    block(SIG_UNBLOCK);
}

void TStopSignal::onSignal()
{
    signalfd_siginfo info = {};
    if (read(FDescriptor, &info, sizeof info) != sizeof info) {
        return;
    }
    FReceived = true;
    FNotifier->setEnabled(false);
    block(SIG_UNBLOCK); // the next one ends the program
    platform::guarded(FOnStop);
}

THangUp::THangUp(std::function<void()> onHangUp) : FOnHangUp(std::move(onHangUp))
{
    const sigset_t signals = hangUp();
    FDescriptor = signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
    if (FDescriptor < 0) {
        throw platform::Exception(QStringLiteral("The system does not report signals"));
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    auto* const notifier = new QSocketNotifier(FDescriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &THangUp::onSignal);
}

THangUp::~THangUp()
{
    qDeleteAll(children()); // before the descriptor
    close(FDescriptor);
    signal(SIGHUP, SIG_IGN); // one that still waits must not end what is being written
    const sigset_t signals = hangUp();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void THangUp::onSignal()
{
    signalfd_siginfo info = {};
    while (read(FDescriptor, &info, sizeof info) == sizeof info) { // several are one
    }
    platform::guarded(FOnHangUp);
}

void holdSignals()
{
    block(SIG_BLOCK);
    const sigset_t signals = hangUp();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void failInsteadOfEnding()
{
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

void fillStandardStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            ::open("/dev/null", O_RDWR); // takes the lowest number that is free: this one
        }
    }
}

} // namespace tnv5::cli
