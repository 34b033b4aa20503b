#include "apps/tnv5-desk/passing_view.h"

#include "apps/tnv5-desk/plain_text.h"
#include "apps/tnv5-desk/theme.h"
#include "apps/tnv5-desk/words.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QVBoxLayout>

namespace tnv5::desk {

namespace {

enum TColumn { Time, Gate, Who, What, Columns };
constexpr int kPictureLines = 6; // of text is the picture high

TMood moodOf(const TPassNews& pass)
{
    if (!pass.opened) {
        return TMood::Bad;
    }
    return pass.ending.isEmpty() || pass.ending == QLatin1String("passed") ? TMood::Good : TMood::Warning;
}

QLabel* plainLabel(QWidget* parent)
{
    auto* const label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText); // what comes from a host or a card commands nothing
    label->setWordWrap(true);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    return label;
}

} // namespace

TPassingView::TPassingView(TDeskModel& desk, QWidget* parent)
    : QWidget(parent),
      FDesk(desk),
      FPicture(new QLabel(this)),
      FName(plainLabel(this)),
      FOutcome(plainLabel(this)),
      FDetails(plainLabel(this)),
      FList(new QTreeWidget(this))
{
    build();
    connect(&FDesk, &TDeskModel::passesChanged, this, [this] { refresh(); });
    connect(FList, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* row) {
        const int index = row == nullptr ? -1 : FList->indexOfTopLevelItem(row);
        const auto& passes = FDesk.passes();
        showLarge(index >= 0 && index < int(passes.size()) ? &passes[std::size_t(index)] : nullptr);
    });
    refresh();
}

void TPassingView::build()
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const title = new QLabel(tr("&Passing"), this);
    title->setBuddy(FList);
    layout->addWidget(title);

    auto* const large = new QGridLayout;
    const int height = fontMetrics().lineSpacing() * kPictureLines;
    FPicture->setFixedSize(height * 4 / 5, height);
    FPicture->setAlignment(Qt::AlignCenter);
    FPicture->setFrameStyle(QFrame::StyledPanel);
    large->addWidget(FPicture, 0, 0, 4, 1);
    QFont big = font();
    big.setPointSizeF(big.pointSizeF() * 1.6);
    big.setBold(true);
    FName->setFont(big);
    QFont bold = font();
    bold.setPointSizeF(bold.pointSizeF() * 1.2);
    bold.setBold(true);
    FOutcome->setFont(bold);
    large->addWidget(FName, 0, 1);
    large->addWidget(FOutcome, 1, 1);
    large->addWidget(FDetails, 2, 1);
    large->setColumnStretch(1, 1);
    large->setRowStretch(3, 1);
    layout->addLayout(large);

    FList->setColumnCount(Columns);
    FList->setHeaderLabels({tr("Time"), tr("Gate"), tr("Who"), tr("What")});
    FList->setRootIsDecorated(false);
    FList->setUniformRowHeights(true);
    FList->setAllColumnsShowFocus(true);
    FList->setAccessibleName(tr("Latest passes"));
    FList->header()->setSectionResizeMode(Time, QHeaderView::ResizeToContents);
    FList->header()->setSectionResizeMode(Gate, QHeaderView::ResizeToContents);
    FList->header()->setSectionResizeMode(Who, QHeaderView::Stretch);
    FList->header()->setSectionResizeMode(What, QHeaderView::Stretch);
    FList->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // what is cut is whole in the tool tip
    layout->addWidget(FList, 1);
}

void TPassingView::fillRow(QTreeWidgetItem& row, const TPassNews& pass) const
{
    row.setText(Time, clockTime(pass.began));
    row.setText(Gate, pass.gate);
    row.setText(Who, TWords::holder(pass));
    row.setText(What, TWords::outcome(pass));
    row.setToolTip(Who, tipText(TWords::holder(pass)));
    row.setToolTip(What, tipText(TWords::outcome(pass)));
    row.setForeground(What, moodColour(moodOf(pass)));
}

// Rows are changed, not made anew: a person may be walking through them.
void TPassingView::refresh()
{
    const auto& passes = FDesk.passes();
    const QString latest = passes.empty() ? QString() : passes.front().began + passes.front().gate;
    const bool news = std::exchange(FLatest, latest) != latest;
    if (news && FList->topLevelItemCount() < int(passes.size())) {
        FList->insertTopLevelItem(0, new QTreeWidgetItem);
    } else if (news && FList->topLevelItemCount() > 0) {
        FList->insertTopLevelItem(0, FList->takeTopLevelItem(FList->topLevelItemCount() - 1));
    }
    for (int index = 0; index < FList->topLevelItemCount() && index < int(passes.size()); ++index) {
        fillRow(*FList->topLevelItem(index), passes[std::size_t(index)]);
    }
    const int current = FList->indexOfTopLevelItem(FList->currentItem());
    if (news || current < 0) {
        FList->setCurrentItem(nullptr);
        showLarge(passes.empty() ? nullptr : &passes.front());
    } else if (current < int(passes.size())) {
        showLarge(&passes[std::size_t(current)]);
    }
}

void TPassingView::showLarge(const TPassNews* pass)
{
    if (pass == nullptr) {
        FPicture->clear();
        FName->setText(tr("Nobody yet"));
        FOutcome->clear();
        FDetails->clear();
        return;
    }
    QPixmap picture;
    picture.loadFromData(pass->picture, "PNG");
    if (picture.isNull()) {
        FPicture->clear();
    } else {
        const double ratio = devicePixelRatioF();
        picture = picture.scaled(FPicture->contentsRect().size() * ratio, Qt::KeepAspectRatio,
                                 Qt::SmoothTransformation);
        picture.setDevicePixelRatio(ratio);
        FPicture->setPixmap(picture);
    }
    FPicture->setAccessibleName(tr("Picture of %1").arg(TWords::holder(*pass)));
    FName->setText(TWords::holder(*pass));
    FOutcome->setText(TWords::outcome(*pass));
    colour(FOutcome, moodOf(*pass));
    QStringList details = {TWords::gate(pass->gate, pass->zone, pass->way)};
    if (pass->member != 0) {
        details << tr("Card %1").arg(pass->card) << tr("Balance %1").arg(amountText(pass->balance));
    }
    FDetails->setText(details.join(QStringLiteral("\n")));
}

} // namespace tnv5::desk
