#pragma once

#include "tnv5/platform/errors.h"

#include <QObject>
#include <functional>
#include <type_traits>
#include <utility>

namespace tnv5::platform {

class TComponent;

/// Log and error event of every component: the sender and one line of text.
using TLogEvent = std::function<void(TComponent* Sender, const QString& Str)>;

/// Base of every component: a QObject whose owner is its parent and frees it.
///
/// A component that is being edited in the form designer (`Designing()`) creates no parts and touches no
/// hardware. It is in that state when its owner is, or when it is created inside a `TDesignScope`.
///
/// Host handlers may pump messages, replace handlers, raise, or destroy the component. `Fire` and `CallOut`
/// make every call to the host, and `Operation` wraps every public method that makes such calls: after a
/// handler has destroyed the component, the operation ends without touching it again.
class TComponent : public QObject
{
    Q_OBJECT

public:
    explicit TComponent(QObject* AOwner = nullptr);
    ~TComponent() override;

    TComponent(const TComponent&) = delete;
    TComponent& operator=(const TComponent&) = delete;

    bool Designing() const { return FDesigning; }

protected:
    /// Runs code of the host's, or code that may run some.
    /// @throws TDestroyed when the component was destroyed meanwhile; else whatever `body` throws.
    template <class Body>
    void CallOut(Body&& body);

    /// Runs code of the host's and hands the text of an exception in it to `failed`, which may raise in its
    /// turn.
    /// @throws TDestroyed when the component was destroyed meanwhile; else what `failed` throws.
    template <class Body, class Failed>
    void Attempt(Body&& body, Failed&& failed);

    /// Calls an event handler, if one is assigned, with this component as sender.
    /// @throws what CallOut throws.
    template <class... Params, class... Args>
    void Fire(const std::function<void(TComponent*, Params...)>& event, Args&&... args);

    /// Runs the body of a public method. When a handler destroys the component inside it, the outermost
    /// operation returns `ifDestroyed` (nothing for a body that returns nothing) to its caller.
    template <class Body, class Result>
    Result Operation(Body&& body, Result ifDestroyed);
    template <class Body>
    void Operation(Body&& body);

private:
    bool FDesigning;
    int FDepth = 0; // operations under way since the host was last called
    bool* FDestroyed =
        nullptr; // where the innermost call to the host wants to know that the component is gone
};

/// While one exists, new components are in the form designer. Used by the designer's plug-in and by tests.
class TDesignScope
{
public:
    TDesignScope();
    ~TDesignScope();
    TDesignScope(const TDesignScope&) = delete;
    TDesignScope& operator=(const TDesignScope&) = delete;
};

template <class Body>
void TComponent::CallOut(Body&& body)
{
    bool destroyed = false;
    bool* const outer = std::exchange(FDestroyed, &destroyed);
    const int depth = std::exchange(FDepth, 0);
    const auto tell = [outer] {
        if (outer != nullptr) {
            *outer = true;
        }
    };
    try {
        std::forward<Body>(body)();
    } catch (...) {
        if (destroyed) {
            tell();
            reportException();
            throw TDestroyed();
        }
        FDestroyed = outer;
        FDepth = depth;
        throw;
    }
    if (destroyed) {
        tell();
        throw TDestroyed();
    }
    FDestroyed = outer;
    FDepth = depth;
}

template <class Body, class Failed>
void TComponent::Attempt(Body&& body, Failed&& failed)
{
    try {
        CallOut(std::forward<Body>(body));
    } catch (const TDestroyed&) {
        throw;
    } catch (...) {
        std::forward<Failed>(failed)(exceptionMessage());
    }
}

template <class... Params, class... Args>
void TComponent::Fire(const std::function<void(TComponent*, Params...)>& event, Args&&... args)
{
    if (!event) {
        return;
    }
    const auto handler = event; // the handler may replace or clear the event while it runs
    CallOut([&] { handler(this, std::forward<Args>(args)...); });
}

template <class Body, class Result>
Result TComponent::Operation(Body&& body, Result ifDestroyed)
{
    const int depth = FDepth++;
    try {
        Result result = std::forward<Body>(body)();
        FDepth = depth;
        return result;
    } catch (const TDestroyed&) {
        if (depth > 0) {
            throw;
        }
        return ifDestroyed;
    } catch (...) {
        FDepth = depth;
        throw;
    }
}

template <class Body>
void TComponent::Operation(Body&& body)
{
    Operation(
        [&body] {
            std::forward<Body>(body)();
            return true;
        },
        false);
}

} // namespace tnv5::platform
