#include "tnv5/registration/load.h"

#include "tnv5/script/units.h"

namespace tnv5::registration {

namespace {

int loads = 0; // that were not undone
std::vector<std::unique_ptr<script::TScriptRegistration>> registrations;

void removeAll() noexcept
{
    while (!registrations.empty()) {
        registrations.pop_back();
    }
}

} // namespace

void load(script::TScriptEngine& engine)
{
    if (loads == 0) {
        try {
            for (const script::TScriptUnit& unit : script::scriptUnits()) {
                registrations.push_back(std::make_unique<script::TScriptRegistration>(engine, unit));
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
