#include "tnv5/panel/turn_styler.h"

#include "tnv5/common/text.h"
#include "tnv5/panel/gate_ini.h"
#include "tnv5/panel/gate_panel.h"
#include "tnv5/panel/gate_search.h"
#include "tnv5/panel/panel_texts.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QEvent>
#include <QHash>

namespace tnv5::panel {

using platform::guarded;

namespace {

/// Every view of this component's gates is one that it built.
TGatePanel* panelOf(const TTurnStylerItem& item)
{
    return static_cast<TGatePanel*>(item.view());
}

/// The widget that the box scrolls, with a layout that puts gates below each other from the top.
QWidget* contentOf(QScrollArea& box)
{
    if (box.widget() == nullptr) {
        box.setWidget(new QWidget);
        box.setWidgetResizable(true);
    }
    QWidget* const content = box.widget();
    if (content->layout() == nullptr) {
        auto* const layout = new QVBoxLayout(content);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->setAlignment(Qt::AlignTop);
        layout->setSizeConstraint(
            QLayout::SetMinimumSize); // the box scrolls also where it does not resize the widget
    }
    return content;
}

} // namespace

TTurnStylerList::TTurnStylerList(TTurnStyler* AOwner) : FTurnStyler(AOwner), FOwner(AOwner), FDesk(AOwner) {}

TTurnStyler::TTurnStyler(QObject* AOwner) : TComponent(AOwner), FTurnStylerList(new TTurnStylerList(this)) {}

TTurnStyler::~TTurnStyler() = default;

bool TTurnStyler::hasSection() const
{
    return !common::Trim(FIniSection).isEmpty();
}

void TTurnStyler::load()
{
    guarded([this] {
        const auto gates = hasSection() ? loadGates(FIniFile, FIniSection) : std::nullopt;
        if (!gates) {
            return;
        }
        FTurnStylerList->Clear();
        for (const TGateRecord& gate : *gates) {
            FTurnStylerList->Add()->setRecord(gate);
        }
    });
}

void TTurnStyler::save() const
{
    guarded([this] {
        if (!hasSection()) {
            return;
        }
        std::vector<TGateRecord> gates;
        for (const TTurnStylerItem* const item : FTurnStylerList->items()) {
            gates.push_back(item->record());
        }
        saveGates(FIniFile, FIniSection, gates);
    });
}

void TTurnStyler::SetUpItems()
{
    if (!FScrollBox) {
        return;
    }
    QWidget* const content = contentOf(*FScrollBox);
    const TGateLook look{FButtonSize, FImages, FImagesBtn, FDefaultImage};
    std::vector<const TGatePanel*> built;
    content->layout()->setEnabled(false); // each gate that is shown would lay out all of them
    for (TTurnStylerItem* const item : FTurnStylerList->items()) {
        if (item->MainPanel() == nullptr) {
            auto panel = std::make_unique<TGatePanel>(*item, content, look);
            content->layout()->addWidget(panel->MainPanel());
            panel->MainPanel()->show();
            built.push_back(panel.get());
            item->setView(std::move(panel));
        }
    }
    arrange();
    content->layout()->setEnabled(true);
    content->layout()->activate();
    QEvent grown(QEvent::LayoutRequest);
    QCoreApplication::sendEvent(FScrollBox, &grown);
    for (const TGatePanel* const panel : built) {
        panel->layOut();
    }
}

/// Lets the gates stand in the list's order in the box; the controls of gates that are gone stand above.
void TTurnStyler::arrange() const
{
    QWidget* const content = FScrollBox ? FScrollBox->widget() : nullptr;
    QLayout* const layout = content != nullptr ? content->layout() : nullptr;
    if (layout == nullptr) {
        return;
    }
    QHash<const QWidget*, int> places;
    for (int place = 0; place < layout->count(); ++place) {
        places.insert(layout->itemAt(place)->widget(), place);
    }
    int last = -1;
    bool ordered = true;
    std::vector<QFrame*> panels;
    for (const TTurnStylerItem* const item : FTurnStylerList->items()) {
        QFrame* const panel = item->MainPanel();
        if (panel != nullptr && panel->parentWidget() == content) {
            panels.push_back(panel);
            const int place = places.value(panel, -1);
            ordered = ordered && place > last;
            last = place;
        }
    }
    if (ordered) {
        return;
    }
    for (QFrame* const panel : panels) {
        layout->removeWidget(panel);
        layout->addWidget(panel);
    }
}

void TTurnStyler::ClearItems()
{
    for (TTurnStylerItem* const item : FTurnStylerList->items()) {
        item->setView(nullptr);
    }
}

void TTurnStyler::ClearItem(int AIndex)
{
    if (TTurnStylerItem* const item = FTurnStylerList->GetTurnStylerItem(AIndex)) {
        item->setView(nullptr);
    }
}

int TTurnStyler::FindItemByGate(const QString& AGate) const
{
    return indexOfGate(FTurnStylerList->items(), AGate);
}

int TTurnStyler::FindItemByGateEntry(const QString& AGate) const
{
    const TTurnStylerItem* const item = FTurnStylerList->GetTurnStylerItem(FindItemByGate(AGate));
    return item != nullptr ? entryOf(*item, AGate) : -1;
}

void TTurnStyler::Setitemstate(const QString& AGate, int AState, const QString& Amess)
{
    const TTurnStylerItem* const item = FTurnStylerList->GetTurnStylerItem(FindItemByGate(AGate));
    if (item != nullptr && FImages && item->MainPanel() != nullptr) {
        panelOf(*item)->showState(stateCaption(item->Caption(), Amess), FImages->GetBitmap(AState));
    }
}

void TTurnStyler::SetSelectedIndex(int Value)
{
    FSelectedIndex = Value;
    for (const TTurnStylerItem* const item : FTurnStylerList->items()) {
        if (item->MainPanel() != nullptr) {
            panelOf(*item)->setBorder(false);
        }
    }
    const TTurnStylerItem* const selected = FTurnStylerList->GetTurnStylerItem(Value);
    if (selected != nullptr && selected->MainPanel() != nullptr) {
        panelOf(*selected)->setBorder(true);
    }
}

void TTurnStyler::CTurnStylerBtnClick(TTurnStylerItem* Sender, int AIndex, const QString& AIP,
                                      const QString& AGate)
{
    Operation([&] {
        if (FTurnStylerBtnClick) {
            const auto handler = FTurnStylerBtnClick; // it may replace or clear the event while it runs
            CallOut([&] { handler(Sender, AIndex, AIP, AGate); });
        }
    });
}

void TTurnStyler::directionClicked(TTurnStylerItem& item, const QString& AGate)
{
    const int index = item.Index();
    SetSelectedIndex(index);
    CTurnStylerBtnClick(&item, index, item.IP(), AGate);
}

void TTurnStyler::pictureClicked(TTurnStylerItem& item)
{
    SetSelectedIndex(item.Index());
}

void TTurnStyler::abandoned(std::unique_ptr<IGateView> view)
{
    std::erase_if(FAbandoned, [](const auto& old) { return old->MainPanel() == nullptr; });
    static_cast<TGatePanel&>(*view).retire();
    FAbandoned.push_back(std::move(view));
}

void TTurnStyler::reordered()
{
    arrange();
}

} // namespace tnv5::panel
