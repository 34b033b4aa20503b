#include "apps/tnv5-desk/gate_view.h"

#include "apps/tnv5-desk/gate_pictures.h"
#include "apps/tnv5-desk/plain_text.h"
#include "apps/tnv5-desk/theme.h"
#include "apps/tnv5-desk/words.h"

#include <QFile>
#include <QFrame>
#include <QVBoxLayout>
#include <algorithm>

namespace tnv5::desk {

namespace {

constexpr int kCaptionShare = 4; // of the panel's button size is its caption
constexpr int kCaptionRoom = 3;  // pixels around the caption's text
constexpr int kCaptionLetters = 22;
constexpr int kRefreshMs = 1'000; // of what time alone changes
const QString kSection = QStringLiteral("Gates");

} // namespace

TGateView::TGateView(TDeskModel& desk, const QString& gatesFile, QWidget* parent)
    : QWidget(parent),
      FDesk(desk),
      FGatesFile(gatesFile),
      FBox(new QScrollArea(this)),
      FNote(new QLabel(this)),
      FOpenA(new QPushButton(this)),
      FOpenB(new QPushButton(this))
{
    build();
    connect(&FDesk, &TDeskModel::pairsChanged, this, [this] {
        if (FGatesFile.isEmpty()) {
            fill();
        }
    });
    connect(&FDesk, &TDeskModel::stateChanged, this, [this] { showAll(); });
    connect(&FDesk, &TDeskModel::liveChanged, this, [this] {
        showHost();
        showAll();
    });
    connect(&FRefresh, &QTimer::timeout, this, [this] { showAll(); });
    connect(FOpenA, &QPushButton::clicked, this, [this] { askA(); });
    connect(FOpenB, &QPushButton::clicked, this, [this] { askB(); });
    FRefresh.start(kRefreshMs);
    fill();
}

int TGateView::rowHeight() const
{
    return (fontMetrics().height() + kCaptionRoom) * kCaptionShare;
}

void TGateView::build()
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const title = new QLabel(tr("&Gates"), this);
    title->setBuddy(FBox);
    layout->addWidget(title);
    layout->addWidget(FNote);
    layout->addWidget(FBox, 1);
    layout->addWidget(FOpenA);
    layout->addWidget(FOpenB);
    FNote->setTextFormat(Qt::PlainText);
    FNote->setWordWrap(true);
    FNote->hide();
    for (QWidget* const each : QList<QWidget*>{FNote, FOpenA, FOpenB}) { // no name makes the window wider
        each->setSizePolicy(QSizePolicy::Ignored, each->sizePolicy().verticalPolicy());
    }
    FBox->setWidgetResizable(true);
    FBox->setAccessibleName(tr("Gates"));
    FBox->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    FBox->setMinimumWidth(rowHeight() * 2 + fontMetrics().averageCharWidth() * kCaptionLetters);

    const int size = rowHeight();
    const double ratio = devicePixelRatioF();
    fillStates(FStates, size - size / kCaptionShare - kCaptionRoom, ratio);
    fillGlyphs(FGlyphs, size / 2, ratio);
    FPanel.SetButtonSize(size);
    FPanel.SetImages(&FStates);
    FPanel.SetImagesBtn(&FGlyphs);
    FPanel.SetDefaultImage(static_cast<int>(TGateLook::Unconnected));
    FPanel.SetScrollBox(FBox);
    FPanel.SetOnTurnStylerBtnClick(
        [this](panel::TTurnStylerItem*, const QVariant&, const QVariant&, const QVariant& gate) {
            showSelected();
            Q_EMIT openAsked(gate.toString());
        });
}

// The gates of the file, or those of the club.
void TGateView::fill()
{
    const TGatePair before = pairAt(FPanel.ASelectedIndex());
    FPanel.ClearItems();
    if (!FGatesFile.isEmpty()) {
        loadFile();
    } else {
        FPanel.TurnStylerList()->Clear();
        for (const TGatePair& pair : FDesk.pairs()) {
            panel::TTurnStylerItem* const item = FPanel.TurnStylerList()->Add();
            item->SetCaption(pair.caption);
            item->SetGateA(pair.gateA);
            item->SetGateB(pair.gateB);
        }
    }
    FPanel.SetUpItems();
    select(before);
    FShown.clear();
    showHost();
    showAll();
}

void TGateView::loadFile()
{
    FPanel.SetIniFile(FGatesFile);
    FPanel.SetIniSection(kSection);
    FPanel.load();
    const bool none = FPanel.TurnStylerList()->Count() == 0;
    FNote->setVisible(none);
    if (none) {
        const bool readable = QFile(FGatesFile).open(QIODevice::ReadOnly);
        FNote->setText(readable ? tr("There are no gates in the section \"Gates\" of %1.").arg(FGatesFile)
                                : tr("%1 cannot be read.").arg(FGatesFile));
        colour(FNote, TMood::Bad);
    }
}

// Selects the turnstile with the gates of the one before; the first when there is none.
void TGateView::select(const TGatePair& pair)
{
    int index = FPanel.TurnStylerList()->Count() == 0 ? -1 : 0;
    for (const QString& gate : {pair.gateB, pair.gateA}) {
        const int found = gate.isEmpty() ? -1 : FPanel.FindItemByGate(gate);
        index = found < 0 ? index : found;
    }
    FPanel.SetSelectedIndex(index);
}

// The clicks of the panel say at which host.
void TGateView::showHost()
{
    for (int index = 0; index < FPanel.TurnStylerList()->Count(); ++index) {
        FPanel.TurnStylerList()->GetTurnStylerItem(index)->SetIP(FDesk.socket());
    }
}

TGatePair TGateView::pairAt(int index) const
{
    const panel::TTurnStylerItem* const item = FPanel.TurnStylerList()->GetTurnStylerItem(index);
    return item == nullptr ? TGatePair() : TGatePair{item->Caption(), item->GateA(), item->GateB()};
}

void TGateView::showAll()
{
    FShown.resize(FPanel.TurnStylerList()->Count());
    for (int index = 0; index < FShown.size(); ++index) {
        const TGatePair pair = pairAt(index);
        TPairState now = FDesk.stateOf(pair);
        now.text = fitting(pair.caption, now.text);
        if (std::exchange(FShown[index], now) != now || now.text.isEmpty()) {
            showState(index, now);
        }
    }
    if (FBox->widget() != nullptr) {
        FBox->widget()->setEnabled(FDesk.live()); // no button works without a host
    }
    showSelected();
}

// The panel knows a turnstile by an address, and takes the first that has it.
void TGateView::showState(int index, const TPairState& state)
{
    const TGatePair pair = pairAt(index);
    for (const QString& gate : {pair.gateA, pair.gateB}) {
        if (!gate.isEmpty() && FPanel.FindItemByGate(gate) == index) {
            FPanel.Setitemstate(gate, static_cast<int>(state.look), state.text);
            return;
        }
    }
}

// The panel cuts what is too long for a caption on both sides.
QString TGateView::fitting(const QString& caption, const QString& text) const
{
    const int room = FBox->viewport()->width() - 2 * FPanel.ButtonSize() -
                     fontMetrics().horizontalAdvance(caption + QStringLiteral(" []")) - 2 * kCaptionRoom;
    return fontMetrics().elidedText(text, Qt::ElideRight, room);
}

panel::TTurnStylerItem* TGateView::selected() const
{
    return FPanel.TurnStylerList()->GetTurnStylerItem(FPanel.ASelectedIndex());
}

void TGateView::showSelected()
{
    const panel::TTurnStylerItem* const item = selected();
    const auto label = [this](QPushButton* button, const QString& address, const QString& key) {
        const auto gate = FDesk.gate(address);
        const QString name = gate ? TWords::gate(address, gate->zone, gate->way) : address;
        const QString text =
            address.isEmpty() ? tr("No gate (%1)").arg(key) : tr("Open %1 (%2)").arg(name, key);
        button->setText(onButton(text));
        button->setToolTip(tipText(text));
        button->setEnabled(FDesk.live() && gate.has_value());
    };
    label(FOpenA, item == nullptr ? QString() : item->GateA(), QStringLiteral("F7"));
    label(FOpenB, item == nullptr ? QString() : item->GateB(), QStringLiteral("F8"));
}

void TGateView::selectNext(int step)
{
    const int count = FPanel.TurnStylerList()->Count();
    if (count > 0) {
        FPanel.SetSelectedIndex((std::max(FPanel.ASelectedIndex(), 0) + step + count) % count);
        if (const panel::TTurnStylerItem* const item = selected(); item->MainPanel() != nullptr) {
            FBox->ensureWidgetVisible(item->MainPanel());
        }
        showSelected();
    }
}

void TGateView::ask(bool directionA)
{
    if (const panel::TTurnStylerItem* const item = selected()) {
        const QString gate = directionA ? item->GateA() : item->GateB();
        if (FDesk.live() && !gate.isEmpty()) {
            Q_EMIT openAsked(gate);
        }
    }
}

} // namespace tnv5::desk
