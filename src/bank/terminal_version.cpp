#include "tnv5/bank/terminal_version.h"

namespace tnv5::bank {

const std::vector<TTerminalVersion>& terminalVersions()
{
    static const std::vector<TTerminalVersion> table = {
        {QStringLiteral("Не выбрано"), {}, {}},
        {QStringLiteral("«Ingenico» ICT220 Ver. 3"), {}, {}},
        {QStringLiteral("«Ingenico» ICT220 Ver. 3+"), QStringLiteral("40="), QStringLiteral("41=")},
        {QStringLiteral("«Ingenico» ICT220 Ver. 3.2"), QStringLiteral("41="), QStringLiteral("42=")},
    };
    return table;
}

const TTerminalVersion* versionOf(int posType)
{
    const std::vector<TTerminalVersion>& table = terminalVersions();
    return posType > 0 && posType < static_cast<int>(table.size()) ? &table[static_cast<std::size_t>(posType)]
                                                                   : nullptr;
}

} // namespace tnv5::bank
