#include "apps/tnv5/stop_signal.h"

#include "tnv5/platform/errors.h"

#include <QSocketNotifier>
#include <csignal>
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

} // namespace tnv5::cli
