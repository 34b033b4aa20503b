#pragma once

#include "apps/tnv5-desk/desk_model.h"
#include "apps/tnv5-desk/equipment_rows.h"

#include <QTimer>
#include <QTreeWidget>
#include <QWidget>

namespace tnv5::desk {

/// What else the club has: payments, scales, paid time that runs down, boards and lines, and above all what
/// is wrong.
class TEquipmentView final : public QWidget
{
    Q_OBJECT

public:
    explicit TEquipmentView(TDeskModel& desk, QWidget* parent = nullptr);

    QTreeWidget* tree() const { return FTree; }

private:
    void refresh();
    void fill(const QList<TEquipmentSection>& sections);

    TDeskModel& FDesk;
    QTreeWidget* FTree;
    QTimer FTick;
    QList<TEquipmentSection> FShown;
};

} // namespace tnv5::desk
