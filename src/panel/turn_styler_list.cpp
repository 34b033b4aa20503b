#include "tnv5/panel/turn_styler_list.h"

#include <algorithm>
#include <utility>

namespace tnv5::panel {

TTurnStylerList::~TTurnStylerList()
{
    for (const auto& item : letGo()) {
        delete item;
    }
}

void TTurnStylerList::Clear()
{
    for (const auto& item : letGo()) {
        if (item && item->FView && desk() != nullptr) {
            desk()->abandoned(std::move(item->FView));
        }
        delete item;
    }
}

/// Empties the list. Whoever hears that a gate is freed may free others.
std::vector<QPointer<TTurnStylerItem>> TTurnStylerList::letGo()
{
    const auto items = std::exchange(FItems, {});
    for (TTurnStylerItem* const item : items) {
        item->FList = nullptr;
    }
    return {items.begin(), items.end()};
}

TTurnStylerItem* TTurnStylerList::GetTurnStylerItem(int AIndex) const
{
    return AIndex >= 0 && AIndex < Count() ? FItems[std::size_t(AIndex)] : nullptr;
}

void TTurnStylerList::SetTurnStylerItem(int AIndex, TTurnStylerItem* AItem)
{
    TTurnStylerItem* const former = GetTurnStylerItem(AIndex);
    if (former == nullptr || AItem == nullptr || AItem == former) {
        return;
    }
    if (AItem->FList != nullptr) {
        if (AItem->FList != this) {
            AItem->FView.reset(); // built in the other panel's box
        }
        AItem->FList->release(AItem);
    }
    *std::find(FItems.begin(), FItems.end(), former) = AItem;
    AItem->setParent(this);
    AItem->FList = this;
    former->FList = nullptr;
    delete former;
    if (desk() != nullptr) {
        desk()->reordered();
    }
}

int TTurnStylerList::indexOf(const TTurnStylerItem* item) const
{
    const auto found = std::find(FItems.begin(), FItems.end(), item);
    return found == FItems.end() ? -1 : static_cast<int>(found - FItems.begin());
}

void TTurnStylerList::take(TTurnStylerItem* item)
{
    item->setParent(this); // a script engine must not collect it
    item->FList = this;
    FItems.push_back(item);
}

void TTurnStylerList::release(TTurnStylerItem* item)
{
    FItems.erase(std::find(FItems.begin(), FItems.end(), item));
    item->FList = nullptr;
}

} // namespace tnv5::panel
