#pragma once

#include <QString>
#include <exception>
#include <functional>
#include <utility>

namespace tnv5::platform {

/// Base of every failure that the module raises: an exception that carries a text for people.
class Exception : public std::exception
{
public:
    explicit Exception(const QString& message);
    const QString& message() const { return FMessage; }
    const char* what() const noexcept override { return FUtf8.constData(); }

private:
    QString FMessage;
    QByteArray FUtf8;
};

/// Ends the operation under way without telling anyone: the guard of the event loop swallows it.
class EAbort : public Exception
{
public:
    EAbort() : Exception(QStringLiteral("Operation aborted")) {}
};

/// A serial port that cannot be opened, closed or written. `osError()` is the system's number, 0 if none.
class EComPort : public Exception
{
public:
    explicit EComPort(const QString& message, qint64 osError = 0) : Exception(message), FOsError(osError) {}
    qint64 osError() const { return FOsError; }

private:
    qint64 FOsError;
};

/// A socket that cannot be opened or written.
class ESocketError : public Exception
{
public:
    using Exception::Exception;
};

/// A text or value that is not what it must be converted to.
class EConvertError : public Exception
{
public:
    using Exception::Exception;
};

/// Thrown inside a component after a host handler destroyed it, so that nothing touches it any more.
/// Never leaves the component: `TComponent::Operation` ends it. Not an `Exception` on purpose, so that a
/// `catch (const Exception&)` on the way out cannot mistake it for a failure.
struct TDestroyed
{
};

/// Receives what no one else caught. `message` is the text of the exception, `error` the exception itself.
using TExceptionHandler = std::function<void(const QString& message, const std::exception_ptr& error)>;

/// Sets the handler for exceptions that reach the event loop and returns the previous one. Without a handler
/// they are written to the Qt log as critical messages.
TExceptionHandler setExceptionHandler(TExceptionHandler handler);

/// Text of the exception being handled; only valid inside a `catch` block.
QString exceptionMessage();

/// Hands the exception being handled to the host's exception handler; `EAbort` and `TDestroyed` are silent.
/// Never throws. Only valid inside a `catch` block.
void reportException() noexcept;

/// The one guard for everything that enters from the event loop (packet, socket, tick): runs `body` and
/// reports what escapes from it.
/// @return false when an exception ended `body`.
template <class Body>
bool guarded(Body&& body) noexcept
{
    try {
        std::forward<Body>(body)();
        return true;
    } catch (...) {
        reportException();
        return false;
    }
}

} // namespace tnv5::platform
