#include "support/fixture.h"

namespace tnv5::tests {

namespace {

QString nameOf(const QString& message, const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const platform::EConvertError&) {
        return QStringLiteral("EConvertError");
    } catch (...) {
        return message;
    }
}

} // namespace

TFixture::TFixture(qint64 startMs)
    : clock(startMs),
      FPreviousHandler(
          platform::setExceptionHandler([this](const QString& message, const std::exception_ptr& error) {
              trace.note(raised(nameOf(message, error)));
          }))
{
}

TFixture::~TFixture()
{
    platform::setExceptionHandler(FPreviousHandler);
}

void TFixture::skip(qint64 ms)
{
    clock.advance(ms);
    trace.take();
}

TPortFixture::TPortFixture(qint64 startMs) : TFixture(startMs)
{
    port->Open();
    trace.attach(*port);
}

void TPortFixture::feed(const QByteArray& bytes)
{
    if (port) {
        port->feed(bytes);
    }
}

} // namespace tnv5::tests
