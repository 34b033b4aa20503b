#include "tnv5/platform/errors.h"

#include <QLoggingCategory>

namespace tnv5::platform {

namespace {

Q_LOGGING_CATEGORY(lcErrors, "tnv5.errors")

TExceptionHandler& currentHandler()
{
    static TExceptionHandler handler;
    return handler;
}

void handOver(const QString& message) noexcept
{
    try {
        if (const TExceptionHandler handler = currentHandler()) {
            handler(message, std::current_exception());
        } else {
            qCCritical(lcErrors, "%s", qUtf8Printable(message));
        }
    } catch (...) {
        qCCritical(lcErrors, "The exception handler itself failed while it was handling: %s",
                   qUtf8Printable(message));
    }
}

} // namespace

Exception::Exception(const QString& message) : FMessage(message), FUtf8(message.toUtf8()) {}

TExceptionHandler setExceptionHandler(TExceptionHandler handler)
{
    return std::exchange(currentHandler(), std::move(handler));
}

QString exceptionMessage()
{
    try {
        throw;
    } catch (const Exception& error) {
        return error.message();
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    } catch (...) {
        return QStringLiteral("Unknown exception");
    }
}

void reportException() noexcept
{
    try {
        throw;
    } catch (const EAbort&) {
        return;
    } catch (const TDestroyed&) {
        return;
    } catch (...) {
        handOver(exceptionMessage());
    }
}

} // namespace tnv5::platform
