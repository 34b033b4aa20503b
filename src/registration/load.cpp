#include "tnv5/registration/load.h"

#include "tnv5/script/units.h"

namespace tnv5::registration {

namespace {

int loads = 0; // that were not undone

/// Never destroyed: a host that forgets to unload has no engine any more when the program ends.
std::vector<std::unique_ptr<script::TScriptRegistration>>& registrations()
{
    static auto& list = *new std::vector<std::unique_ptr<script::TScriptRegistration>>;
    return list;
}

void removeAll() noexcept
{
    while (!registrations().empty()) {
        registrations().pop_back();
    }
}

} // namespace

void load(script::TScriptEngine& engine)
{
    if (loads == 0) {
        try {
            for (const script::TScriptUnit& unit : script::scriptUnits()) {
                registrations().push_back(std::make_unique<script::TScriptRegistration>(engine, unit));
            }
        } catch (...) {
            removeAll();
            throw;
        }
    }
    ++loads;
}

void unload() noexcept
{
    if (loads > 0 && --loads == 0) {
        removeAll();
    }
}

} // namespace tnv5::registration
