#include "tnv5/script/units.h"

namespace tnv5::script {

std::vector<TScriptUnit> scriptUnits()
{
    return {connectorUnit(), switchUnit(), turnstileUnit(), panelUnit(),
            d24Unit(),       coffeeUnit(), scalesUnit(),    bankUnit()};
}

} // namespace tnv5::script
