#pragma once

#include "tnv5/platform/errors.h"
#include "tnv5/testing/memory_port.h"

namespace tnv5::testkit {

/// What came out is not what a test expects; the message shows both.
class EExpectation : public platform::Exception
{
public:
    using Exception::Exception;
};

/// Expect and inject on an in-memory port, so that a test reads like a transcript of the line.
///
///     TWire wire(port);
///     wire.inject("$01AR12345678\r");
///     wire.expect("$01A10366\r");
///     wire.expectNothing();
///
/// Works with any test framework: an expectation that fails raises `EExpectation`.
class TWire
{
public:
    explicit TWire(TMemoryPort& port) : FPort(port) {}

    /// Bytes arrive, as one read.
    void inject(const QByteArray& bytes) { FPort.feed(bytes); }

    /// The next bytes written are exactly these; what was written after them stays for the next expectation.
    /// @throws EExpectation
    void expect(const QByteArray& bytes);

    /// Nothing more was written. @throws EExpectation
    void expectNothing();

private:
    void collect() { FWritten += FPort.takeWritten(); }

    TMemoryPort& FPort;
    QByteArray FWritten;
};

/// Bytes as people read them: control characters as <13>, everything from 127 on as <255>.
QString readable(const QByteArray& bytes);

} // namespace tnv5::testkit
