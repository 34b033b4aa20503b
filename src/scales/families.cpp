#include "tnv5/scales/families.h"

namespace tnv5::scales {

namespace {

TFamily none()
{
    TFamily family;
    family.name = QStringLiteral("Не выбрано");
    return family;
}

} // namespace

const std::vector<TFamily>& families()
{
    static const std::vector<TFamily> table = {none(),       familyMassaK(), familyCas(),
                                               familyBa(),   familyBp(),     familyBh600(),
                                               familyDigi(), familyAxis(),   familyUpaQ()};
    return table;
}

const TFamily* familyOf(int scalesType)
{
    const std::vector<TFamily>& table = families();
    return scalesType > 0 && scalesType < static_cast<int>(table.size())
               ? &table[static_cast<std::size_t>(scalesType)]
               : nullptr;
}

} // namespace tnv5::scales
