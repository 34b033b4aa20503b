#pragma once

#include <QString>
#include <array>

namespace tnv5::common {

/// The numbered messages of a component: a row a language, 0 Russian, 1 Ukrainian, 2 English.
template <std::size_t Count>
using TMessageTable = std::array<std::array<QString, Count>, 3>;

/// A message by its index, counted from 0; empty for an index or a language that is not there.
template <std::size_t Count>
QString messageOf(const TMessageTable<Count>& table, int index, int language)
{
    const auto row = static_cast<std::size_t>(language);
    const auto column = static_cast<std::size_t>(index);
    return language >= 0 && index >= 0 && row < table.size() && column < Count ? table[row][column]
                                                                               : QString();
}

} // namespace tnv5::common
