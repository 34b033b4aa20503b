#include "apps/tnv5-desk/equipment_view.h"

#include "apps/tnv5-desk/plain_text.h"

#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>

namespace tnv5::desk {

namespace {

constexpr int kTickMs = 250; // time that runs down
constexpr int kKey = Qt::UserRole;

/// Lets the children of an item bear these keys in this order. Those that are there already stay the same,
/// and with them what a person has chosen, opened or closed.
void align(QTreeWidgetItem& parent, const QStringList& keys)
{
    for (int index = parent.childCount() - 1; index >= 0; --index) {
        if (!keys.contains(parent.child(index)->data(0, kKey).toString())) {
            delete parent.takeChild(index);
        }
    }
    for (int index = 0; index < keys.size(); ++index) {
        const QTreeWidgetItem* const there = parent.child(index);
        if (there == nullptr || there->data(0, kKey).toString() != keys[index]) {
            auto* const item = new QTreeWidgetItem;
            item->setData(0, kKey, keys[index]);
            parent.insertChild(index, item);
        }
    }
    while (parent.childCount() > keys.size()) { // other places, or one key twice
        delete parent.takeChild(parent.childCount() - 1);
    }
}

void fillRow(QTreeWidgetItem& item, const TEquipmentRow& row)
{
    const bool whole = row.name.isEmpty();
    item.setFirstColumnSpanned(whole);
    item.setText(0, whole ? row.text : row.name);
    item.setText(1, whole ? QString() : row.text);
    item.setToolTip(whole ? 0 : 1, tipText(row.text));
    item.setForeground(whole ? 0 : 1, moodColour(row.mood));
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
    const bool scrolled = FTree->verticalScrollBar()->value() > 0;
    const QPersistentModelIndex top = FTree->indexAt({0, 0});
    fill(sections);
    FTree->doItemsLayout(); // a text may need more lines
    if (scrolled && top.isValid()) {
        FTree->scrollTo(top, QAbstractItemView::PositionAtTop);
    }
    FShown = sections;
}

void TEquipmentView::fill(const QList<TEquipmentSection>& sections)
{
    QStringList titles;
    for (const TEquipmentSection& section : sections) {
        titles << section.title;
    }
    QTreeWidgetItem& root = *FTree->invisibleRootItem();
    align(root, titles);
    for (int index = 0; index < sections.size(); ++index) {
        QTreeWidgetItem& item = *root.child(index);
        if (item.text(0).isEmpty()) {
            QFont bold = FTree->font();
            bold.setBold(true);
            item.setFont(0, bold);
            item.setText(0, titles[index]);
            item.setFirstColumnSpanned(true);
            item.setExpanded(true);
        }
        const QList<TEquipmentRow>& rows = sections[index].rows;
        QStringList names;
        for (const TEquipmentRow& row : rows) {
            names << (row.name.isEmpty() ? row.text : row.name);
        }
        align(item, names);
        for (int row = 0; row < rows.size(); ++row) {
            fillRow(*item.child(row), rows[row]);
        }
    }
}

} // namespace tnv5::desk
