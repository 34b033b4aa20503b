#include "tnv5/platform/automation/automation.h"

#include <algorithm>

namespace tnv5::platform::automation {

namespace {

struct TEntry
{
    const TRegisteredClass* owner;
    std::u16string progId;
    TRegisteredClass::TFactory factory;
};

std::vector<TEntry>& registered()
{
    static std::vector<TEntry> entries;
    return entries;
}

class TProcessProvider final : public TAutomationProvider
{
public:
    TObjectPtr create(std::u16string_view progId, std::u16string& /*why*/) override
    {
        const auto& entries = registered();
        const auto found = std::find_if(entries.rbegin(), entries.rend(),
                                        [&](const TEntry& entry) { return entry.progId == progId; });
        if (found == entries.rend()) {
            return nullptr;
        }
        const auto factory = found->factory; // it may register others
        TObjectPtr object = factory ? factory() : nullptr;
        if (!object) {
            throw EOleError(u"\"" + std::u16string(progId) + u"\": the class of this process makes none");
        }
        return object;
    }
};

} // namespace

TObjectPtr CreateOleObject(std::u16string_view progId)
{
    TProcessProvider process;
    std::u16string why;
    for (TAutomationProvider* const provider :
         std::initializer_list<TAutomationProvider*>{&process, &systemProvider()}) {
        if (TObjectPtr object = provider->create(progId, why)) {
            return object;
        }
    }
    throw EOleError(u"\"" + std::u16string(progId) + u"\": " + why);
}

TRegisteredClass::TRegisteredClass(std::u16string progId, TFactory factory)
{
    registered().push_back({this, std::move(progId), std::move(factory)});
}

TRegisteredClass::~TRegisteredClass()
{
    std::erase_if(registered(), [this](const TEntry& entry) { return entry.owner == this; });
}

} // namespace tnv5::platform::automation
