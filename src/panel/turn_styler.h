#pragma once

#include "tnv5/panel/image_list.h"
#include "tnv5/panel/turn_styler_list.h"
#include "tnv5/platform/component.h"

#include <QLabel>
#include <QPointer>
#include <QScrollArea>
#include <QVariant>

namespace tnv5::panel {

/// A button of a gate was pressed: the gate, its index in the list, its network address and the controller
/// address of the direction.
using TTurnStylerBtnClick = std::function<void(TTurnStylerItem* Sender, const QVariant& AIndex,
                                               const QVariant& AIP, const QVariant& AGate)>;

/// The gates of a club in a scroll box: for each a caption, a picture of its state and a button for each
/// direction. The list is kept in a section of an ini file.
///
///     TTurnStyler gates;
///     gates.SetIniFile("club.ini");
///     gates.SetIniSection("Gates");
///     gates.SetScrollBox(&box);
///     gates.SetImages(&states);
///     gates.SetButtonSize(48);
///     gates.SetOnTurnStylerBtnClick([](auto* gate, auto& index, auto& ip, auto& address) { ... });
///     gates.load();
///     gates.SetUpItems();
///     gates.Setitemstate("01A", 2, "OPEN"); // as the controller reports
///
/// Neither the box nor the image lists are owned; one that is destroyed counts as none. Exceptions of a
/// click's handler go to the host's exception handler, or to the caller of a method that the host called.
class TTurnStyler : public platform::TComponent, private IGateDesk
{
    Q_OBJECT
    Q_PROPERTY(QString IniSection READ IniSection WRITE SetIniSection)
    Q_PROPERTY(QString IniFile READ IniFile WRITE SetIniFile)
    Q_PROPERTY(tnv5::panel::TTurnStylerList* TurnStylerList READ TurnStylerList)
    Q_PROPERTY(tnv5::panel::TTurnStylerBtnClick OnTurnStylerBtnClick READ OnTurnStylerBtnClick WRITE
                   SetOnTurnStylerBtnClick)
    Q_PROPERTY(tnv5::panel::TImageList* Images READ Images WRITE SetImages)
    Q_PROPERTY(QScrollArea* ScrollBox READ ScrollBox WRITE SetScrollBox)
    Q_PROPERTY(tnv5::panel::TImageList* ImagesBtn READ ImagesBtn WRITE SetImagesBtn)
    Q_PROPERTY(int DefaultImage READ DefaultImage WRITE SetDefaultImage)
    Q_PROPERTY(int ASelectedIndex READ ASelectedIndex WRITE SetSelectedIndex)
    Q_PROPERTY(int ButtonSize READ ButtonSize WRITE SetButtonSize)

public:
    explicit TTurnStyler(QObject* AOwner = nullptr);
    ~TTurnStyler() override;

    /// Section of the ini file; one of blanks only stands for none.
    QString IniSection() const { return FIniSection; }
    void SetIniSection(const QString& Value) { FIniSection = Value; }
    /// Path of the ini file.
    QString IniFile() const { return FIniFile; }
    void SetIniFile(const QString& Value) { FIniFile = Value; }

    TTurnStylerList* TurnStylerList() const { return FTurnStylerList.get(); }

    const TTurnStylerBtnClick& OnTurnStylerBtnClick() const { return FTurnStylerBtnClick; }
    void SetOnTurnStylerBtnClick(TTurnStylerBtnClick Value) { FTurnStylerBtnClick = std::move(Value); }

    /// Pictures of the states, by their number. Without them no state is shown, its text neither.
    TImageList* Images() const { return FImages; }
    void SetImages(TImageList* Value) { FImages = Value; }
    /// Where the gates are built. A box without a widget gets one.
    QScrollArea* ScrollBox() const { return FScrollBox; }
    void SetScrollBox(QScrollArea* Value) { FScrollBox = Value; }
    /// Glyphs of the buttons: picture 0 for direction A, 1 for direction B.
    TImageList* ImagesBtn() const { return FImagesBtn; }
    void SetImagesBtn(TImageList* Value) { FImagesBtn = Value; }
    /// Picture that is shown before any state; -1: none.
    int DefaultImage() const { return FDefaultImage; }
    void SetDefaultImage(int Value) { FDefaultImage = Value; }
    /// Size of the buttons in pixels, for gates that are built from now on; all other sizes follow from it.
    int ButtonSize() const { return FButtonSize; }
    void SetButtonSize(int Value) { FButtonSize = Value; }

    /// The gate with a line around it; -1 for none. An index without a gate highlights nothing. The line is
    /// drawn anew even if the index is the same; gates that are built later have none.
    int ASelectedIndex() const { return FSelectedIndex; }
    void SetSelectedIndex(int Value);

    /// Reads the list from the file, if there is one. Controls that are built stay, dead to clicks, as with
    /// `TTurnStylerList::Clear`: call `ClearItems` first.
    ///
    /// A failure changes nothing and goes to the host's exception handler, as an `EIniFile`; so with `save`.
    void load();
    /// Writes the list to the file, see `writtenGates`. The file is whole at any time.
    void save() const;

    /// Builds the controls of the gates that have none.
    void SetUpItems();
    /// Frees the controls of all gates, or of one; a bad index does nothing.
    void ClearItems();
    void ClearItem(int AIndex);

    /// Index of the first gate one of whose directions has this address, case counting; -1: none has.
    int FindItemByGate(const QString& AGate) const;
    /// Entry number of that direction, of B when both have the address; -1 when no gate has it.
    int FindItemByGateEntry(const QString& AGate) const;

    /// Shows a state of a gate: a picture of `Images`, and a text behind the caption. A number without a
    /// picture shows none.
    void Setitemstate(const QString& AGate, int AState, const QString& Amess);

    /// Calls the click event.
    void CTurnStylerBtnClick(TTurnStylerItem* Sender, int AIndex, const QString& AIP, const QString& AGate);

private:
    friend class TTurnStylerList;
    void directionClicked(TTurnStylerItem& item, const QString& AGate) override;
    void pictureClicked(TTurnStylerItem& item) override;
    void abandoned(std::unique_ptr<IGateView> view) override;
    void reordered() override;

    bool hasSection() const;
    void arrange() const;

    QString FIniSection;
    QString FIniFile;
    TTurnStylerBtnClick FTurnStylerBtnClick;
    QPointer<TImageList> FImages;
    QPointer<QScrollArea> FScrollBox;
    QPointer<TImageList> FImagesBtn;
    int FDefaultImage = 0;
    int FSelectedIndex = -1;
    int FButtonSize = 0;
    std::vector<std::unique_ptr<IGateView>> FAbandoned; // their gates are gone
    std::unique_ptr<TTurnStylerList> FTurnStylerList;
};

} // namespace tnv5::panel
