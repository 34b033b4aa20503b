#include "tnv5/panel/turn_styler.h"
#include "tnv5/script/binding.h"
#include "tnv5/script/units.h"

namespace tnv5::script {

using panel::TTurnStyler;
using panel::TTurnStylerItem;
using panel::TTurnStylerList;

namespace {

TTurnStylerList* Create(TTurnStyler* owner)
{
    auto* const list = new TTurnStylerList(owner);
    list->setParent(owner); // which frees it; without one, whoever called
    return list;
}

TTurnStylerItem* Add(TTurnStylerList* list)
{
    if (list == nullptr) {
        throw platform::EConvertError("There is no list to add to");
    }
    return list->Add();
}

TScriptProperty items()
{
    return scriptIndexedProperty<TTurnStylerList, &TTurnStylerList::GetTurnStylerItem,
                                 &TTurnStylerList::SetTurnStylerItem>("Items");
}

} // namespace

TScriptUnit panelUnit()
{
    const TScriptClass self = scriptClass<TTurnStyler>();
    const TScriptClass list{&TTurnStylerList::staticMetaObject, {}};
    const TScriptClass item{&TTurnStylerItem::staticMetaObject, {}};
    return {
        "panel",
        {TScriptClasses{self, list, item},
         TScriptMethods{
             self,
             {
                 scriptMethod<TTurnStyler, &TTurnStyler::load>("load"),
                 scriptMethod<TTurnStyler, &TTurnStyler::save>("save"),
                 scriptMethod<TTurnStyler, &TTurnStyler::FindItemByGate>("FindItemByGate"),
                 scriptMethod<TTurnStyler, &TTurnStyler::FindItemByGateEntry>("FindItemByGateEntry"),
                 scriptMethod<TTurnStyler, &TTurnStyler::Setitemstate>("Setitemstate"),
                 scriptMethod<TTurnStyler, &TTurnStyler::CTurnStylerBtnClick>("CTurnStylerBtnClick"),
                 scriptMethod<TTurnStyler, &TTurnStyler::SetUpItems>("SetUpItems"),
                 scriptMethod<TTurnStyler, &TTurnStyler::ClearItems>("ClearItems"),
             }},
         TScriptMethods{item,
                        {
                            scriptMethod<TTurnStylerItem, &TTurnStylerItem::GateABtnclick>("GateABtnclick"),
                            scriptMethod<TTurnStylerItem, &TTurnStylerItem::GateBBtnclick>("GateBBtnclick"),
                            scriptMethod<TTurnStylerItem, &TTurnStylerItem::imgBtnclick>("imgBtnclick"),
                        }},
         std::vector<TScriptProc>{scriptProc("Create", &Create), scriptProc("Add", &Add)},
         TScriptProperties{list, {items()}}}};
}

} // namespace tnv5::script
