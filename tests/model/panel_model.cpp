#include "model/panel_model.h"

namespace tnv5::panel::model {

int TModelPictures::at(int number) const
{
    return number >= 0 && number < int(sizes.size()) ? sizes[std::size_t(number)] : 0;
}

void TModelBox::remove(const std::shared_ptr<TShown>& shown)
{
    std::erase(fromTop, shown);
    std::erase(asMade, shown);
}

bool TModelBox::has(const std::shared_ptr<TShown>& shown) const
{
    return !gone && firstIndex(asMade, [&](const auto& each) { return each == shown; }) >= 0;
}

// ---- gates

int TModelGate::Index() const
{
    return panel == nullptr
               ? -1
               : firstIndex(panel->TurnStylerList()->all, [this](const auto* each) { return each == this; });
}

void TModelGate::GateABtnclick(const void* /*sender*/)
{
    panel->clicked(*this, kept.GateA);
}

void TModelGate::GateBBtnclick(const void* /*sender*/)
{
    panel->clicked(*this, kept.GateB);
}

void TModelGate::imgBtnclick(const void* /*sender*/)
{
    panel->SetSelectedIndex(Index());
}

TModelGate* TModelGates::GetTurnStylerItem(int index) const
{
    return index < 0 || index >= Count() ? nullptr : all[std::size_t(index)];
}

TModelGate* TModelGates::Add()
{
    all.push_back(FPanel.keep());
    return all.back();
}

void TModelGates::Delete(int index)
{
    if (TModelGate* const gate = GetTurnStylerItem(index)) {
        std::erase(all, gate);
        FPanel.hide(*gate);
    } else {
        hit<"removal of no gate">();
    }
}

void TModelGates::Clear()
{
    for (const TModelGate* const gate : all) {
        FPanel.bury(*gate);
    }
    all.clear();
}

void TModelGates::SetTurnStylerItem(int index, TModelGate* gate)
{
    TModelGate* const former = GetTurnStylerItem(index);
    if (!former || !gate || gate == former) {
        hit<"a place stays as it is">();
        return;
    }
    if (either<"a gate moves", "a new gate in a place">(gate->Index() >= 0)) {
        std::erase(all, gate);
    }
    all[std::size_t(former->Index())] = gate;
    FPanel.hide(*former);
    FPanel.order();
}

// ---- the panel

TModelGate* TModelPanel::keep()
{
    FKept.push_back(std::make_shared<TModelGate>());
    FKept.back()->panel = this;
    return FKept.back().get();
}

bool TModelPanel::built(const TModelGate& gate) const
{
    return gate.shown &&
           std::any_of(FBoxes.begin(), FBoxes.end(), [&](const auto* box) { return box->has(gate.shown); });
}

void TModelPanel::hide(TModelGate& gate)
{
    if (gate.shown) {
        for (TModelBox* const box : FBoxes) {
            box->remove(gate.shown);
        }
        gate.shown->gate = nullptr;
        gate.shown = nullptr;
    }
}

void TModelPanel::bury(const TModelGate& gate)
{
    if (built(gate)) {
        hit<"controls are left behind">();
        gate.shown->gate = nullptr;
        FForsaken.push_back(gate.shown);
    }
}

void TModelPanel::die()
{
    TModel::die();
    ClearItems();
    for (TModelBox* const box : FBoxes) {
        for (const auto& shown : FForsaken) {
            box->remove(shown);
        }
    }
}

/// Dead ones above, then the gates as they stand in the list.
void TModelPanel::order()
{
    TModelBox* const box = living(FBox);
    if (!box) {
        return;
    }
    std::vector<std::shared_ptr<TShown>> sorted;
    for (const auto& shown : box->fromTop) {
        if (!shown->gate) {
            sorted.push_back(shown);
        }
    }
    for (const TModelGate* const gate : FGates.all) {
        if (gate->shown && box->has(gate->shown)) {
            sorted.push_back(gate->shown);
        }
    }
    box->fromTop = sorted;
}

void TModelPanel::SetUpItems()
{
    TModelBox* const box = living(FBox);
    if (!either<"there is a box", "there is no box">(box != nullptr)) {
        return;
    }
    FBoxes.push_back(box);
    const TModelPictures* const images = living(FImages);
    const TModelPictures* const glyphs = living(FGlyphs);
    for (TModelGate* const gate : FGates.all) {
        if (either<"a gate is built already", "a gate is built">(built(*gate))) {
            continue;
        }
        auto shown = std::make_shared<TShown>();
        shown->size = FSize;
        shown->text = gate->kept.Caption;
        shown->canA = !trimmed(gate->kept.GateA).isEmpty();
        shown->canB = !trimmed(gate->kept.GateB).isEmpty();
        if (images && either<"a default picture", "no default picture">(FDefaultImage != -1)) {
            shown->picture = images->at(FDefaultImage);
        }
        if (glyphs) {
            shown->glyphA = glyphs->at(0);
            shown->glyphB = glyphs->at(1);
        }
        shown->gate = gate;
        gate->shown = shown;
        box->fromTop.push_back(shown);
        box->asMade.push_back(shown);
    }
    order();
}

void TModelPanel::ClearItems()
{
    for (TModelGate* const gate : FGates.all) {
        hide(*gate);
    }
}

void TModelPanel::ClearItem(int index)
{
    if (TModelGate* const gate = FGates.GetTurnStylerItem(index)) {
        hide(*gate);
    }
}

int TModelPanel::FindItemByGate(const QString& address) const
{
    return firstIndex(FGates.all, [&](const TModelGate* gate) {
        return gate->kept.GateA == address || gate->kept.GateB == address;
    });
}

int TModelPanel::FindItemByGateEntry(const QString& address) const
{
    const int index = FindItemByGate(address);
    if (index < 0) {
        return -1;
    }
    const TKept& gate = FGates.all[std::size_t(index)]->kept;
    int entry = -1;
    if (gate.GateA == address) {
        entry = gate.EntryA;
    }
    if (either<"entry B", "entry A">(gate.GateB == address)) {
        entry = gate.EntryB;
    }
    return entry;
}

void TModelPanel::Setitemstate(const QString& address, int state, const QString& message)
{
    const TModelGate* const gate = FGates.GetTurnStylerItem(FindItemByGate(address));
    const TModelPictures* const images = living(FImages);
    if (!gate || !images ||
        !either<"a state is shown", "a state of a gate that is not built">(built(*gate))) {
        return;
    }
    gate->shown->text = gate->kept.Caption + " [" + message + "]";
    gate->shown->picture = images->at(state);
}

void TModelPanel::SetSelectedIndex(int value)
{
    FSelected = value;
    for (int i = 0; i < FGates.Count(); ++i) {
        if (const TModelGate& gate = *FGates.all[std::size_t(i)]; built(gate)) {
            gate.shown->line = either<"selected", "not selected">(i == value);
        }
    }
}

void TModelPanel::CTurnStylerBtnClick(TModelGate* gate, int index, const QString& ip, const QString& address)
{
    operation([&] { fire(FClick, gate, QVariant(index), QVariant(ip), QVariant(address)); });
}

void TModelPanel::clicked(TModelGate& gate, const QString& address)
{
    const int index = gate.Index();
    SetSelectedIndex(index);
    CTurnStylerBtnClick(&gate, index, gate.IP(), address);
}

void TModelPanel::clickOnScreen(const std::shared_ptr<TShown>& shown, int which)
{
    TModelGate* const gate = shown->gate;
    if (!either<"a click on a gate", "a click on a dead panel">(gate != nullptr)) {
        return;
    }
    FWorld.guarded([&] {
        if (which == 2) {
            gate->imgBtnclick(nullptr);
        } else if (either<"an enabled button", "a disabled button">(which == 0 ? shown->canA : shown->canB)) {
            which == 0 ? gate->GateABtnclick(nullptr) : gate->GateBBtnclick(nullptr);
        }
    });
}

// ---- the file

void TModelPanel::load()
{
    if (trimmed(FSection).isEmpty() || FFile != Folder + "/club.ini" || !Disk->file) {
        hit<"nothing to load">();
        return;
    }
    FGates.Clear();
    for (const TKept& kept : gatesIn(*Disk->file, FSection, FWorld.cyrillic)) {
        FGates.Add()->kept = kept;
    }
}

void TModelPanel::save()
{
    if (trimmed(FSection).isEmpty()) {
        hit<"no section to save to">();
        return;
    }
    FWorld.guarded([&] {
        const auto fail = [this](const char* why) {
            throw TFailure{"Cannot write \"" + FFile + "\": " + why, ERaise::Exception};
        };
        if (FFile == Folder) {
            hit<"a folder instead of a file">();
            fail("it is no file");
        } else if (FFile.isEmpty()) {
            hit<"no file name">();
            fail("No such file or directory");
        } else if (FFile != Folder + "/club.ini") {
            hit<"no such folder">();
            fail("No such file or directory");
        } else if (Disk->file && Disk->readOnly) {
            hit<"a read-only file">();
            fail("the file is read-only");
        }
        std::vector<TKept> gates;
        for (const TModelGate* const gate : FGates.all) {
            gates.push_back(gate->kept);
        }
        Disk->file = fileWith(Disk->file.value_or(QByteArray()), FSection, gates, FWorld.cyrillic);
    });
}

} // namespace tnv5::panel::model
