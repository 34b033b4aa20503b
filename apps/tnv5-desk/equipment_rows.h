#pragma once

#include "apps/tnv5-desk/desk_state.h"
#include "apps/tnv5-desk/theme.h"

namespace tnv5::desk {

/// One thing and how it is.
struct TEquipmentRow
{
    QString name; ///< empty: the text says all
    QString text;
    TMood mood = TMood::Plain;

    bool operator==(const TEquipmentRow&) const = default;
};

struct TEquipmentSection
{
    QString title;
    QList<TEquipmentRow> rows;

    bool operator==(const TEquipmentSection&) const = default;
};

/// All of a club but its gates, in the order in which a person has to know: what is wrong (only when
/// something is), payments under way, scales, paid time, boards, lines. Sections without anything are left
/// out.
/// @param elapsedMs since the state came: time runs down between states
QList<TEquipmentSection> equipmentOf(const TClubState& state, qint64 elapsedMs);

} // namespace tnv5::desk
