#include "tnv5/panel/turn_styler_item.h"

#include "tnv5/panel/turn_styler_list.h"

namespace tnv5::panel {

IGateView::~IGateView() = default;

TTurnStylerItem::TTurnStylerItem(TTurnStylerList* AList)
{
    if (AList != nullptr) {
        AList->take(this);
    }
}

TTurnStylerItem::~TTurnStylerItem()
{
    if (FList != nullptr) {
        FList->release(this);
    }
}

QFrame* TTurnStylerItem::MainPanel() const
{
    return FView ? FView->MainPanel() : nullptr;
}

QLabel* TTurnStylerItem::CaptionPanel() const
{
    return FView ? FView->CaptionPanel() : nullptr;
}

QLabel* TTurnStylerItem::StateImage() const
{
    return FView ? FView->StateImage() : nullptr;
}

int TTurnStylerItem::Index() const
{
    return FList != nullptr ? FList->indexOf(this) : -1;
}

IGateDesk* TTurnStylerItem::desk() const
{
    return FList != nullptr ? FList->desk() : nullptr;
}

// The host hears of a click and may free the gate: nothing of it is touched behind the call.

void TTurnStylerItem::GateABtnclick(QObject* /*Sender*/)
{
    if (IGateDesk* const shown = desk()) {
        shown->directionClicked(*this, GateA());
    }
}

void TTurnStylerItem::GateBBtnclick(QObject* /*Sender*/)
{
    if (IGateDesk* const shown = desk()) {
        shown->directionClicked(*this, GateB());
    }
}

void TTurnStylerItem::imgBtnclick(QObject* /*Sender*/)
{
    if (IGateDesk* const shown = desk()) {
        shown->pictureClicked(*this);
    }
}

} // namespace tnv5::panel
