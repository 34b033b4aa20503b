#pragma once

#include "apps/tnv5-desk/log_model.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QTreeView>
#include <QWidget>

namespace tnv5::desk {

/// The live log: searched by words, levels can be hidden. It follows the newest line until somebody scrolls
/// up.
class TLogView final : public QWidget
{
    Q_OBJECT

public:
    explicit TLogView(TLogModel& log, QWidget* parent = nullptr);

    QLineEdit* search() const { return FSearch; }
    QCheckBox* info() const { return FInfo; }
    QCheckBox* warnings() const { return FWarnings; }
    QCheckBox* errors() const { return FErrors; }
    QTreeView* lines() const { return FLines; }
    QLabel* count() const { return FCount; }

private:
    void build();
    void applyFilter();
    void showCount();
    bool atEnd() const;

    TLogModel& FLog;
    TFilteredLog* FFiltered;
    QLineEdit* FSearch;
    QCheckBox* FInfo;
    QCheckBox* FWarnings;
    QCheckBox* FErrors;
    QLabel* FCount;
    QTreeView* FLines;
    bool FFollow = true; // the last line is shown, and the next will be
};

} // namespace tnv5::desk
