#include "apps/tnv5-desk/log_view.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollBar>
#include <QVBoxLayout>

namespace tnv5::desk {

TLogView::TLogView(TLogModel& log, QWidget* parent)
    : QWidget(parent),
      FLog(log),
      FFiltered(new TFilteredLog(&log, this)),
      FSearch(new QLineEdit(this)),
      FInfo(new QCheckBox(tr("&Information"), this)),
      FWarnings(new QCheckBox(tr("&Warnings"), this)),
      FErrors(new QCheckBox(tr("E&rrors"), this)),
      FCount(new QLabel(this)),
      FLines(new QTreeView(this))
{
    build();
    for (QCheckBox* const level : {FInfo, FWarnings, FErrors}) {
        level->setChecked(true);
        connect(level, &QCheckBox::toggled, this, [this] { applyFilter(); });
    }
    connect(FSearch, &QLineEdit::textChanged, this, [this] { applyFilter(); });
    QScrollBar* const bar = FLines->verticalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this, [this] { FFollow = atEnd(); });
    // More lines, or less room for them: the value is still that of before.
    connect(bar, &QScrollBar::rangeChanged, this, [this, bar] {
        if (FFollow) {
            bar->setValue(bar->maximum());
        }
    });
    connect(&FLog, &QAbstractItemModel::rowsInserted, this, [this] { showCount(); });
    showCount();
}

void TLogView::build()
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const top = new QHBoxLayout;
    auto* const title = new QLabel(tr("&Log"), this);
    title->setBuddy(FSearch);
    FSearch->setPlaceholderText(tr("Search for words (Ctrl+F)"));
    FSearch->setAccessibleName(tr("Search in the log"));
    FSearch->setClearButtonEnabled(true);
    top->addWidget(title);
    top->addWidget(FSearch, 1);
    top->addWidget(FInfo);
    top->addWidget(FWarnings);
    top->addWidget(FErrors);
    top->addWidget(FCount);
    layout->addLayout(top);

    FLines->setModel(FFiltered);
    FLines->setRootIsDecorated(false);
    FLines->setUniformRowHeights(true);
    FLines->setAllColumnsShowFocus(true);
    FLines->setAccessibleName(tr("Log"));
    FLines->header()->setStretchLastSection(true);
    FLines->header()->resizeSection(TLogModel::Time,
                                    fontMetrics().horizontalAdvance(QStringLiteral("00:00:00")) * 3 / 2);
    layout->addWidget(FLines, 1);
}

bool TLogView::atEnd() const
{
    const QScrollBar* const bar = FLines->verticalScrollBar();
    return bar->value() >= bar->maximum();
}

void TLogView::applyFilter()
{
    TLogFilter filter;
    filter.search(FSearch->text());
    filter.info = FInfo->isChecked();
    filter.warnings = FWarnings->isChecked();
    filter.errors = FErrors->isChecked();
    FFiltered->setFilter(filter);
    FLines->scrollToBottom();
    showCount();
}

void TLogView::showCount()
{
    FCount->setText(tr("%1 of %2").arg(FFiltered->lines()).arg(FLog.rowCount()));
}

} // namespace tnv5::desk
