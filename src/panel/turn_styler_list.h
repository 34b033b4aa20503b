#pragma once

#include "tnv5/panel/turn_styler_item.h"

#include <QPointer>
#include <cstddef>
#include <vector>

namespace tnv5::panel {

class TTurnStyler;

/// The gates, in the order in which they are shown. The list owns them.
class TTurnStylerList : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int Count READ Count)

public:
    /// A list of nobody's, or one that somebody else than a panel shows.
    explicit TTurnStylerList(IGateDesk* ADesk = nullptr) : FDesk(ADesk) {}
    /// A list of a panel, beside the one that the panel has: clicks of its gates reach the panel while it
    /// lives.
    explicit TTurnStylerList(TTurnStyler* AOwner);
    explicit TTurnStylerList(std::nullptr_t) : TTurnStylerList(static_cast<IGateDesk*>(nullptr)) {}
    ~TTurnStylerList() override;

    /// The panel that the list belongs to; none for one of nobody's, or when the panel is gone.
    TTurnStyler* GetOwner() const { return FOwner ? FTurnStyler : nullptr; }

    /// A new gate at the end.
    TTurnStylerItem* Add() { return new TTurnStylerItem(this); }
    /// Frees a gate and its controls; a bad index does nothing.
    void Delete(int AIndex) { delete GetTurnStylerItem(AIndex); }
    /// Frees the gates. Controls that are built stay in the scroll box, dead to clicks, until it or the panel
    /// goes; `TTurnStyler::ClearItems` frees them first.
    void Clear();

    int Count() const { return static_cast<int>(FItems.size()); }
    /// A gate by its index; none for a bad one.
    TTurnStylerItem* GetTurnStylerItem(int AIndex) const;
    /// Puts a gate in a place and frees the one that is there. A gate that is in a list leaves its place
    /// there. The gate that is there already, none, or a bad index: no change.
    void SetTurnStylerItem(int AIndex, TTurnStylerItem* AItem);

    const std::vector<TTurnStylerItem*>& items() const { return FItems; }
    int indexOf(const TTurnStylerItem* item) const;
    IGateDesk* desk() const { return FTurnStyler == nullptr || FOwner ? FDesk : nullptr; }

private:
    friend class TTurnStylerItem;
    std::vector<QPointer<TTurnStylerItem>> letGo();
    void take(TTurnStylerItem* item);
    void release(TTurnStylerItem* item);

    TTurnStyler* FTurnStyler = nullptr;
    QPointer<QObject> FOwner; // the same, while it lives
    IGateDesk* FDesk;
    std::vector<TTurnStylerItem*> FItems;
};

} // namespace tnv5::panel
