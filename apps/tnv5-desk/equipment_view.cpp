#include "apps/tnv5-desk/equipment_view.h"

#include <QHeaderView>
#include <QLabel>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>

namespace tnv5::desk {

namespace {

constexpr int kTickMs = 250; // time that runs down

bool alike(const QList<TEquipmentSection>& one, const QList<TEquipmentSection>& other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](const TEquipmentSection& left, const TEquipmentSection& right) {
                          return left.title == right.title && left.rows.size() == right.rows.size();
                      });
}

void fillRow(QTreeWidgetItem& item, const TEquipmentRow& row)
{
    const bool whole = row.name.isEmpty();
    const int column = whole ? 0 : 1;
    item.setFirstColumnSpanned(whole);
    item.setText(0, row.name);
    item.setText(column, row.text);
    item.setToolTip(column, row.text);
    item.setForeground(column, moodColour(row.mood));
    item.setTextAlignment(0, Qt::AlignLeading | Qt::AlignTop);
    item.setTextAlignment(1, Qt::AlignLeading | Qt::AlignTop);
}

/// Makes a row as high as its wrapped text, which a tree view by itself does not.
class TWrappedRows final : public QStyledItemDelegate
{
public:
    explicit TWrappedRows(QTreeWidget* tree) : QStyledItemDelegate(tree), FTree(tree) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        const bool whole = index.column() == 0 && FTree->itemFromIndex(index)->isFirstColumnSpanned();
        if (whole || index.column() == 1) {
            const int margin = FTree->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, FTree) + 1;
            const int width =
                whole ? FTree->viewport()->width() - FTree->indentation() : FTree->columnWidth(1);
            const QRect room(0, 0, width - 2 * margin, kHighest);
            const QRect text =
                FTree->fontMetrics().boundingRect(room, Qt::TextWordWrap, index.data().toString());
            size.setHeight(std::max(size.height(), text.height() + 2 * margin));
        }
        return size;
    }

private:
    static constexpr int kHighest = 10'000;

    QTreeWidget* FTree;
};

} // namespace

TEquipmentView::TEquipmentView(TDeskModel& desk, QWidget* parent)
    : QWidget(parent), FDesk(desk), FTree(new QTreeWidget(this))
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const title = new QLabel(tr("&Equipment"), this);
    title->setBuddy(FTree);
    layout->addWidget(title);
    layout->addWidget(FTree, 1);
    FTree->setColumnCount(2);
    FTree->setHeaderHidden(true);
    FTree->setAccessibleName(tr("Equipment"));
    FTree->setRootIsDecorated(false);
    FTree->setWordWrap(true); // nothing is cut that somebody must know
    FTree->setItemDelegate(new TWrappedRows(FTree));
    connect(FTree->header(), &QHeaderView::sectionResized, FTree, &QTreeWidget::doItemsLayout);
    FTree->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    FTree->header()->setStretchLastSection(true);
    FTree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    connect(&FDesk, &TDeskModel::stateChanged, this, [this] { refresh(); });
    connect(&FTick, &QTimer::timeout, this, [this] { refresh(); });
    FTick.start(kTickMs);
}

void TEquipmentView::refresh()
{
    const QList<TEquipmentSection> sections =
        FDesk.live() ? equipmentOf(FDesk.state(), FDesk.stateAgeMs()) : QList<TEquipmentSection>();
    if (sections == FShown) {
        return;
    }
    if (alike(sections, FShown)) { // a person may be walking through it
        for (int section = 0; section < sections.size(); ++section) {
            for (int row = 0; row < sections[section].rows.size(); ++row) {
                fillRow(*FTree->topLevelItem(section)->child(row), sections[section].rows[row]);
            }
        }
    } else {
        rebuild(sections);
    }
    FTree->doItemsLayout(); // a text may need more lines
    FShown = sections;
}

void TEquipmentView::rebuild(const QList<TEquipmentSection>& sections)
{
    FTree->clear();
    for (const TEquipmentSection& section : sections) {
        auto* const top = new QTreeWidgetItem(FTree, {section.title});
        QFont bold = FTree->font();
        bold.setBold(true);
        top->setFont(0, bold);
        top->setFirstColumnSpanned(true);
        for (const TEquipmentRow& row : section.rows) {
            fillRow(*new QTreeWidgetItem(top), row);
        }
        top->setExpanded(true);
    }
}

} // namespace tnv5::desk
