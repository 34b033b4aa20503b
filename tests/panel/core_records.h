#pragma once

#include "support/text_printers.h"
#include "tnv5/panel/gate_record.h"

#include <QStringList>
#include <vector>

namespace tnv5::panel {

/// Gates as "GateA|GateB|Caption|EntryA|EntryB; ...".
inline std::string shown(const std::vector<TGateRecord>& gates)
{
    QStringList texts;
    for (const TGateRecord& gate : gates) {
        texts << QStringList{gate.GateA, gate.GateB, gate.Caption, QString::number(gate.EntryA),
                             QString::number(gate.EntryB)}
                     .join(u'|');
    }
    return texts.join("; ").toStdString();
}

} // namespace tnv5::panel
