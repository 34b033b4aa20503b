#pragma once

#include <QString>

/// The gate panel's own texts, letter for letter.
namespace tnv5::panel {

// keys of the ini section; all but the first are followed by the gate's number, from 1
inline const QString kItemsCount = QStringLiteral("ItemsCount");
inline const QString kGateA = QStringLiteral("GateA");
inline const QString kGateB = QStringLiteral("GateB");
inline const QString kCaption = QStringLiteral("Caption");
inline const QString kEntryA = QStringLiteral("EntryA");
inline const QString kEntryB = QStringLiteral("EntryB");

/// What the caption panel shows with a state: "Main entrance [OPEN]".
inline QString stateCaption(const QString& caption, const QString& message)
{
    return caption + QStringLiteral(" [") + message + QStringLiteral("]");
}

} // namespace tnv5::panel
