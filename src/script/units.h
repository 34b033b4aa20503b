#pragma once

#include "tnv5/script/script_unit.h"

/// What each unit of the module registers, as tables.
namespace tnv5::script {

TScriptUnit connectorUnit();
TScriptUnit switchUnit();
TScriptUnit turnstileUnit();
TScriptUnit panelUnit();
TScriptUnit d24Unit();
TScriptUnit coffeeUnit();
TScriptUnit scalesUnit();
TScriptUnit bankUnit();

/// All of them, in the order in which the module registers them.
std::vector<TScriptUnit> scriptUnits();

} // namespace tnv5::script
