#pragma once

#include "tnv5/platform/component.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <QScopedValueRollback>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <utility>

/// What the fuzz targets of components share.
namespace tnv5::fuzz {

inline void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// A host that misbehaves in some calls of its handlers.
class THostBase
{
public:
    /// When the input is over.
    void evening() {}

protected:
    /// @param every misbehaves in each so many calls
    /// @param deepest and that often inside one another
    THostBase(std::uint8_t manners, int every, int deepest)
        : FManners(manners), FEvery(every), FDeepest(deepest)
    {
    }

    virtual ~THostBase() = default;
    Q_DISABLE_COPY_MOVE(THostBase)

    /// In each handler.
    void act()
    {
        if (++FCalls % FEvery == 0 && FDepth < FDeepest) {
            const QScopedValueRollback deeper(FDepth, FDepth + 1);
            misbehave();
        }
    }
    virtual void misbehave() = 0;

    [[noreturn]] static void raise() { throw std::runtime_error("host"); }

    /// An answer to a controller's question, or what is none.
    static void answer(QVariant& result, int number)
    {
        switch (number % 5) {
        case 0:
            result = 0;
            break;
        case 1:
        case 2:
            result = 1;
            break;
        case 3:
            result = QStringLiteral("not a number");
            break;
        default:
            break;
        }
    }

    testkit::TManualClock FClock;
    const std::uint8_t FManners;
    int FCalls = 0;

private:
    const int FEvery;
    const int FDeepest;
    int FDepth = 0;
};

/// The same with a component on a port. In the stream, a byte 0xF0 to 0xFF ends a read and is a command.
template <class Component>
class TPortHost : public THostBase
{
public:
    explicit TPortHost(std::uint8_t manners) : THostBase(manners, 5, 2)
    {
        FPort.KeepWrites = false;
        FPort.Open();
    }
    void arrive(std::uint8_t byte)
    {
        if (byte < 0xF0) {
            FRead += static_cast<char>(byte);
            return;
        }
        evening();
        if (FComponent) {
            platform::guarded([&] { command(byte & 0x0F); });
        }
    }

    void evening() { FPort.feed(std::exchange(FRead, {})); }

protected:
    virtual void command(int number) = 0;

    /// The equipment says more; each read makes events, and without an end it would talk for ever.
    void chatter(const QByteArray& bytes)
    {
        if (++FMore < 100) {
            FPort.feed(bytes);
        }
    }

    testkit::TMemoryPort FPort;
    std::unique_ptr<Component> FComponent = std::make_unique<Component>();

private:
    QByteArray FRead;
    int FMore = 0;
};

/// Plays an input to a host of its own: the first bytes are the choices that it is made with, the rest
/// arrives.
template <class Host>
void play(const std::uint8_t* data, std::size_t size)
{
    const auto previous = platform::setExceptionHandler([](const QString&, const std::exception_ptr&) {});
    if (size >= Host::kChoices) {
        Host host(data);
        for (std::size_t i = Host::kChoices; i < size; ++i) {
            host.arrive(data[i]);
        }
        host.evening();
    }
    platform::setExceptionHandler(previous);
}

} // namespace tnv5::fuzz
