#pragma once

#include "support/recorder.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"

#include <memory>

namespace tnv5::tests {

using testkit::TManualClock;

/// What every fixture begins with: the time in the test's hand and one recorder, which also hears what
/// reaches the host's exception handler.
///
/// A fixture is a struct, so that a test can make as many as it wants; `TTestOn` is the same for TEST_F:
///
///     struct TScalesFixture : TPortFixture
///     {
///         TScalesFixture()
///         {
///             scales->SetComport(port.get());
///             trace.attach(*scales);
///         }
///         std::unique_ptr<TScalesDevice> scales = std::make_unique<TScalesDevice>();
///     };
///     using TScalesTest = TTestOn<TScalesFixture>;
struct TFixture
{
    explicit TFixture(qint64 startMs = TManualClock::at(12, 0));
    ~TFixture();
    TFixture(const TFixture&) = delete;
    TFixture& operator=(const TFixture&) = delete;

    /// Lets time pass without looking at what happens.
    void skip(qint64 ms);

    TManualClock clock;
    TRecorder trace;

private:
    platform::TExceptionHandler FPreviousHandler;
};

/// The same with one open port in memory; what is written to it is recorded.
struct TPortFixture : TFixture
{
    explicit TPortFixture(qint64 startMs = TManualClock::at(12, 0));

    /// Bytes arrive, as one read; nothing when the port is gone.
    void feed(const QByteArray& bytes);

    /// One line arrives.
    void inject(const QString& line) { feed(platform::toWire(line, "\r")); }

    std::unique_ptr<TMemoryPort> port = std::make_unique<TMemoryPort>();
};

/// A fixture for TEST_F.
template <class Fixture>
class TTestOn : public ::testing::Test, protected Fixture
{
};

} // namespace tnv5::tests
