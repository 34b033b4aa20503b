#include "model/kit/real_world.h"

#include <stdexcept>

namespace tnv5::modelkit {

TRealWorld::TRealWorld(qint64 startMs, bool cyrillic, std::function<void(const QString&)> unhandled)
    : clock(startMs),
      FBefore(platform::setExceptionHandler(
          [tell = std::move(unhandled)](const QString& message, const std::exception_ptr&) {
              tell(message);
          }))
{
    const QByteArray page = cyrillic ? "windows-1251" : "ISO-8859-1";
    if (platform::codePage() != page) {
        platform::setCodePage(page);
    }
}

std::shared_ptr<TRealWorld::Port> TRealWorld::makePort()
{
    auto port = std::make_shared<Port>();
    port->KeepWrites = false;
    return port;
}

void TRealWorld::portError(Port& port, const QString& message, qint64 osError, bool inside)
{
    const auto kind = platform::TComExceptionKind::Resource;
    inside ? port.raiseErrorInside(kind, message, osError, "system's text")
           : port.raiseError(kind, message, osError, "system's text");
}

void TRealWorld::raise(ERaise kind, const QString& text)
{
    switch (kind) {
    case ERaise::Abort:
        throw platform::EAbort();
    case ERaise::Standard:
        throw std::runtime_error(text.toStdString());
    case ERaise::Unknown:
        throw 42; // NOLINT: anything may be thrown
    default:
        throw platform::Exception(text);
    }
}

QString TRealWorld::caught()
{
    ERaise kind = ERaise::Exception;
    try {
        throw;
    } catch (const platform::TDestroyed&) {
        return QStringLiteral("what must not leave a component");
    } catch (const platform::EAbort&) {
        kind = ERaise::Abort;
    } catch (const platform::Exception&) {
        kind = ERaise::Exception;
    } catch (const std::exception&) {
        kind = ERaise::Standard;
    } catch (...) {
        kind = ERaise::Unknown;
    }
    return QString::number(int(kind)) + u' ' + platform::exceptionMessage();
}

} // namespace tnv5::modelkit
