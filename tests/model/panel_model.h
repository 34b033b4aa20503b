#pragma once

#include "model/kit/model_world.h"
#include "model/kit/texts.h"

#include <optional>

/// The gate panel told once more, without widgets and without files: what is on screen is a list of records,
/// what is on the disk is a text in memory.
namespace tnv5::panel::model {

using namespace modelkit;

/// What is kept of a gate.
struct TKept
{
    QString GateA, GateB, Caption;
    int EntryA = 0;
    int EntryB = 0;
};

// The file's rules.
std::vector<TKept> gatesIn(const QByteArray& file, const QString& section, bool cyrillic);
QByteArray fileWith(const QByteArray& file, const QString& section, const std::vector<TKept>& gates,
                    bool cyrillic);

/// What there is on the disk.
struct TDisk
{
    std::optional<QByteArray> file;
    bool readOnly = false;
};

/// Sizes of pictures, by which they are told apart.
struct TModelPictures
{
    std::vector<int> sizes;
    bool gone = false;
    bool dead() const { return gone; }
    int at(int number) const;
};

class TModelGate;

/// The controls of one gate, as they were built and changed since.
struct TShown
{
    int number = 0; ///< by which the stage knows it; 0: not yet
    int size = 0;   ///< of the buttons
    QString text;
    bool canA = false;
    bool canB = false;
    int picture = 0;
    int glyphA = 0;
    int glyphB = 0;
    bool line = false;
    TModelGate* gate = nullptr; ///< none: dead to clicks
};

struct TModelBox
{
    std::vector<std::shared_ptr<TShown>> fromTop;
    std::vector<std::shared_ptr<TShown>> asMade;
    bool gone = false;
    bool dead() const { return gone; }
    void remove(const std::shared_ptr<TShown>& shown);
    bool has(const std::shared_ptr<TShown>& shown) const;
};

class TModelPanel;

class TModelGate
{
public:
    const QString& Caption() const { return kept.Caption; }
    void SetCaption(const QString& value) { kept.Caption = value; }
    const QString& GateA() const { return kept.GateA; }
    void SetGateA(const QString& value) { kept.GateA = value; }
    const QString& GateB() const { return kept.GateB; }
    void SetGateB(const QString& value) { kept.GateB = value; }
    int EntryA() const { return kept.EntryA; }
    void SetEntryA(int value) { kept.EntryA = value; }
    int EntryB() const { return kept.EntryB; }
    void SetEntryB(int value) { kept.EntryB = value; }
    const QString& IP() const { return FIP; }
    void SetIP(const QString& value) { FIP = value; }
    int Index() const;
    void GateABtnclick(const void* sender);
    void GateBBtnclick(const void* sender);
    void imgBtnclick(const void* sender);

    TKept kept;
    TModelPanel* panel = nullptr;
    std::shared_ptr<TShown> shown;

private:
    QString FIP;
};

class TModelGates
{
public:
    explicit TModelGates(TModelPanel& panel) : FPanel(panel) {}
    TModelGate* Add();
    void Delete(int index);
    void Clear();
    int Count() const { return int(all.size()); }
    TModelGate* GetTurnStylerItem(int index) const;
    void SetTurnStylerItem(int index, TModelGate* gate);

    std::vector<TModelGate*> all;

private:
    TModelPanel& FPanel;
};

class TModelPanel : public TModel
{
public:
    using TClick = std::function<void(TModelGate*, const QVariant&, const QVariant&, const QVariant&)>;

    TModelPanel(TModelWorld& world, bool designing) : TModel(world, designing) {}
    void die() override;

    TModelGates* TurnStylerList() { return &FGates; }
    void SetOnTurnStylerBtnClick(TClick event) { FClick = std::move(event); }
    void SetIniSection(const QString& value) { FSection = value; }
    void SetIniFile(const QString& value) { FFile = value; }
    void SetImages(TModelPictures* value) { FImages = value; }
    void SetImagesBtn(TModelPictures* value) { FGlyphs = value; }
    void SetScrollBox(TModelBox* value) { FBox = value; }
    void SetDefaultImage(int value) { FDefaultImage = value; }
    void SetButtonSize(int value) { FSize = value; }
    void SetSelectedIndex(int value);
    int ASelectedIndex() const { return FSelected; }

    void load();
    void save();
    void SetUpItems();
    void ClearItems();
    void ClearItem(int index);
    int FindItemByGate(const QString& address) const;
    int FindItemByGateEntry(const QString& address) const;
    void Setitemstate(const QString& address, int state, const QString& message);
    void CTurnStylerBtnClick(TModelGate* gate, int index, const QString& ip, const QString& address);

    /// The disk, and the path of the file on it.
    TDisk* Disk = nullptr;
    QString Folder;

    // for its gates
    TModelGate* keep();
    void hide(TModelGate& gate);
    void bury(const TModelGate& gate);
    void order();
    bool built(const TModelGate& gate) const;
    void clicked(TModelGate& gate, const QString& address);
    /// A click on the screen: 0, 1 a button, 2 the picture.
    void clickOnScreen(const std::shared_ptr<TShown>& shown, int which);

private:
    TModelGates FGates{*this};
    TClick FClick;
    QString FSection, FFile;
    TModelPictures* FImages = nullptr;
    TModelPictures* FGlyphs = nullptr;
    TModelBox* FBox = nullptr;
    int FDefaultImage = 0;
    int FSize = 0;
    int FSelected = -1;
    std::vector<std::shared_ptr<TModelGate>> FKept; // also those that are freed
    std::vector<std::shared_ptr<TShown>> FForsaken; // shown, but of no gate
    std::vector<TModelBox*> FBoxes;                 // all that something was built in
};

} // namespace tnv5::panel::model
