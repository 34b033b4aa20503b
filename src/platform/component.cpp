#include "tnv5/platform/component.h"

namespace tnv5::platform {

namespace {

int designScopes = 0;

bool isDesigning(const QObject* owner)
{
    const auto* component = qobject_cast<const TComponent*>(owner);
    return designScopes > 0 || (component != nullptr && component->Designing());
}

} // namespace

TComponent::TComponent(QObject* AOwner) : QObject(AOwner), FDesigning(isDesigning(AOwner)) {}

TComponent::~TComponent()
{
    if (FDestroyed != nullptr) {
        *FDestroyed = true;
    }
}

TDesignScope::TDesignScope()
{
    ++designScopes;
}

TDesignScope::~TDesignScope()
{
    --designScopes;
}

} // namespace tnv5::platform
