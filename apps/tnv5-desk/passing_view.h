#pragma once

#include "apps/tnv5-desk/desk_model.h"

#include <QLabel>
#include <QTreeWidget>
#include <QWidget>

namespace tnv5::desk {

/// Who is passing: the latest one large, with picture, name and what came of it; those before in a list.
/// Whoever is chosen in the list is shown large until the next one comes.
class TPassingView final : public QWidget
{
    Q_OBJECT

public:
    explicit TPassingView(TDeskModel& desk, QWidget* parent = nullptr);

    QLabel* picture() const { return FPicture; }
    QLabel* name() const { return FName; }
    QLabel* outcome() const { return FOutcome; }
    QLabel* details() const { return FDetails; }
    QTreeWidget* list() const { return FList; }

private:
    void build();
    void refresh();
    void showLarge(const TPassNews* pass);
    void fillRow(QTreeWidgetItem& row, const TPassNews& pass) const;

    TDeskModel& FDesk;
    QLabel* FPicture;
    QLabel* FName;
    QLabel* FOutcome;
    QLabel* FDetails;
    QTreeWidget* FList;
    QString FLatest; // when the latest pass began, and where
};

} // namespace tnv5::desk
