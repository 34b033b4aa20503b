#include "model/kit/play.h"
#include "model/kit/real_world.h"
#include "model/panel_screen.h"
#include "model/panel_words.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

// Random scenarios of a gate panel: the list, the box and the file.

namespace tnv5::panel::model {

namespace {

TNV5_STEPS(Create, Destroy,
           Handler,  // `a`, 0 none
           Section,  // `text`
           FileName, // `a`: the file, in a folder that there is not, the folder, none
           Settings, // button size `a`, default picture `b`
           Box,      // `a`: 0 none, 1 the box; 2, 3: it is destroyed, and made anew
           Pictures, // list `b` for states, or glyphs if `c`; `a` as with the box
           Disk,     // `a`: 0 no file, 1 `bytes`, 2 the same read-only
           Load, Save, SetUp, ClearAll,
           ClearOne,  // gate `a`
           State,     // of `text` 0, picture `a`, with `text` 1
           Select,    // `a`
           Find,      // `text`
           Event,     // of gate `a` with index `b`, `text`
           ItemClick, // gate `a`, method `b`
           Click,     // `a`th last panel made, `b`: which button or picture, way `c`
           Add,       // `text`: caption, addresses, IP; entries `a` and `b`
           Edit,      // gate `a`, field `b`, `text`, number `c`
           Remove,    // gate `a`
           EmptyList,
           Place) // at `a`: gate `b`, a new one for -2

/// The component's disk, one for all scenarios.
const QString& folder()
{
    static const QTemporaryDir dir;
    static const QString path = dir.path();
    return path;
}

struct TRealPictures : TImageList
{
    explicit TRealPictures(const std::vector<int>& sizes)
    {
        for (const int size : sizes) {
            QImage image(size, 2, QImage::Format_ARGB32);
            image.fill(Qt::red);
            Add(image);
        }
    }
};

template <class World>
class TPanelStage final : public TStage
{
    static constexpr bool isModel = World::isModel;
    using TPanel = std::conditional_t<isModel, TModelPanel, TTurnStyler>;
    using TGate = std::conditional_t<isModel, TModelGate, TTurnStylerItem>;
    using TBox = std::conditional_t<isModel, TModelBox, QScrollArea>;
    using TPictures = std::conditional_t<isModel, TModelPictures, TRealPictures>;

public:
    explicit TPanelStage(quint64 seed)
        : TStage(seed, kStepNames), ground(*this, startMs(0, 1), FTemper.chance(80))
    {
        FWild = {FTemper.pick({0, 50, 300}), FTemper.pick({0, 100, 400})};
        FDestroying = FTemper.chance(30);
        if constexpr (!isModel) {
            QFile::remove(folder() + "/club.ini");
        }
        for (int i = 0; i < 2; ++i) {
            makePictures(i);
        }
        makeBox();
    }
    ~TPanelStage() override
    {
        FPanel.reset();
        FBox.reset();
    }
    Q_DISABLE_COPY_MOVE(TPanelStage)

    std::vector<TStep> begin(TDice& d) override
    {
        std::vector<TStep> steps{{Create},
                                 {Handler, {}, d.chance(90)},
                                 {Section, {TWords(d).section()}},
                                 {FileName, {}, d.chance(85) ? 0 : d.below(4)},
                                 settings(d),
                                 {Box, {}, d.chance(90)},
                                 {Pictures, {}, d.chance(85), 0, 0},
                                 {Pictures, {}, d.chance(85), 1, 1}};
        for (int left = d.below(5); left > 0; --left) {
            steps.push_back(added(d));
        }
        if (d.chance(80)) {
            steps.push_back({SetUp});
        }
        return steps;
    }

    std::vector<TStep> more(TDice& d) override
    {
        const int roll = d.below(100);
        if (roll < 3) {
            return {{Create}, {Handler, {}, 1}, {Box, {}, 1}, settings(d), {SetUp}};
        }
        if (roll < 6) {
            return {disk(d), {Load}, {SetUp}};
        }
        if (roll < 9) {
            return {disk(d), {Section, {TWords(d).section()}}, {Save}, {Load}};
        }
        if (roll < 25) {
            return {{SetUp}, clicked(d)};
        }
        if (roll < 30 && FDestroying) {
            TStep click = d.chance(50) ? clicked(d) : TStep{ItemClick, {}, gate(d), d.below(2)};
            click.first = {d.pick({TStep{Destroy}, TStep{Box, {}, 3}, TStep{ClearAll}, TStep{EmptyList}})};
            if (d.chance(40)) {
                click.first.push_back({Raise});
            }
            return {click};
        }
        return {any(d, false)};
    }

    TStep any(TDice& d, bool inside) override
    {
        TWords say(d);
        switch (d.below(30)) {
        case 0:
            return {Section, {say.section()}};
        case 1:
            return {FileName, {}, d.chance(70) ? 0 : d.below(4)};
        case 2:
            return settings(d);
        case 3:
            return {Box, {}, d.chance(70) ? 1 : d.below(FDestroying ? 4 : 2)};
        case 4:
            return {Pictures, {}, d.chance(70) ? 1 : d.below(4), d.below(2), d.below(2)};
        case 5:
            return disk(d);
        case 6:
            return {Load};
        case 7:
            return {Save};
        case 8:
        case 9:
        case 10:
            return {SetUp};
        case 11:
            return {d.pick<int>({ClearAll, EmptyList, inside && FDestroying ? Destroy : ClearAll})};
        case 12:
            return {ClearOne, {}, gate(d)};
        case 13:
        case 14:
        case 15:
            return {State, {say.address(), say.caption()}, d.between(-2, 4)};
        case 16:
        case 17:
            return {Select, {}, d.pick({-1, -2, 0, 1, 2, 3, 4, 5, 6, 7})};
        case 18:
            return {Find, {say.address()}};
        case 19:
            return {Event, {say.address(), say.caption()}, gate(d), d.between(-2, 9)};
        case 20:
            return {ItemClick, {}, gate(d), d.below(3)};
        case 21:
        case 22:
            return added(d);
        case 23:
        case 24:
            return {
                Edit, {d.chance(50) ? say.address() : say.caption()}, gate(d), d.below(6), d.between(-9, 9)};
        case 25:
            return {Remove, {}, gate(d)};
        case 26:
            return {Place, {}, gate(d), d.between(-2, 6)};
        case 27:
            return {Handler, {}, d.below(3)};
        default:
            return clicked(d);
        }
    }

protected:
    void perform(const TStep& step) override
    {
        if (step.kind == Create && !FPanel) {
            FPanel = ground.world.template make<TPanel>(false);
            if constexpr (isModel) {
                FPanel->Disk = &FDisk;
                FPanel->Folder = folder();
            }
        } else if (step.kind == Destroy && FPanel) {
            World::destroy(FPanel);
        } else if (step.kind == Disk) {
            putFile(step);
        } else if (step.kind == Box && step.a >= 2) {
            destroyBox(step.a == 3);
        } else if (step.kind == Pictures && step.a >= 2) {
            destroyPictures(int(step.b), step.a == 3);
        } else if (step.kind == Click) {
            click(step);
        } else if (FPanel) {
            performOn(*FPanel, step);
        }
    }

    void look() override
    {
        if (FPanel) {
            auto* const list = FPanel->TurnStylerList();
            note(QStringLiteral("selected %1 of %2").arg(FPanel->ASelectedIndex()).arg(list->Count()));
            for (int i = 0; i < list->Count(); ++i) {
                const TGate& gate = *list->GetTurnStylerItem(i);
                note(shown(gate.Caption()) + shown(gate.GateA()) + shown(gate.GateB()) + shown(gate.IP()) +
                     shown({gate.EntryA(), gate.EntryB(), gate.Index()}));
            }
        }
        if (FBox) {
            const QStringList lines = screen(*FBox, FNumbered);
            for (const QString& line : lines) {
                note(line);
            }
        }
        note("file " + file());
    }

private:
    // ---- vocabulary

    static int gate(TDice& d) { return d.chance(90) ? d.below(4) : d.between(-1, 9); }
    static TStep settings(TDice& d)
    {
        return {Settings,
                {},
                d.pick({0, 1, 2, 6, 10, 14, 32, 48, 50, 75, 99, -3}),
                d.pick({0, 0, 1, 2, 3, -1, -2})};
    }
    static TStep added(TDice& d)
    {
        TWords say(d);
        return {Add, {say.caption(), say.address(), say.address(), "10.0.0.1"}, d.below(9), d.below(9)};
    }
    static TStep disk(TDice& d)
    {
        TStep step{Disk, {}, d.chance(85) ? 1 : d.pick({0, 2})};
        step.bytes = TWords(d).file();
        return step;
    }
    static TStep clicked(TDice& d)
    {
        return {Click, {}, d.chance(80) ? d.below(4) : d.below(12), d.below(3), d.below(3)};
    }

    // ---- what the panel stands on

    void makePictures(int index)
    {
        const std::vector<int> sizes = index == 0 ? std::vector{10, 12, 30} : std::vector{16};
        auto& place = FPictures.at(std::size_t(index));
        if constexpr (isModel) {
            place = std::make_shared<TPictures>(TPictures{sizes});
            FKept.push_back(place);
        } else {
            place = std::make_shared<TPictures>(sizes);
        }
    }

    void destroyPictures(int index, bool renew)
    {
        if constexpr (isModel) {
            if (FPictures.at(std::size_t(index))) {
                FPictures.at(std::size_t(index))->gone = true;
            }
        }
        FPictures.at(std::size_t(index)).reset();
        if (renew) {
            makePictures(index);
        }
    }

    void makeBox()
    {
        FBox = std::make_shared<TBox>();
        if constexpr (isModel) {
            FKept.push_back(FBox);
        } else {
            FBox->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
            FBox->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
            FBox->resize(kBoxSize);
            FBox->show();
        }
    }

    void destroyBox(bool renew)
    {
        if constexpr (isModel) {
            if (FBox) {
                FBox->gone = true;
            }
        }
        FBox.reset();
        if (renew) {
            makeBox();
        }
    }

    void putFile(const TStep& step)
    {
        if constexpr (isModel) {
            FDisk = {step.a != 0 ? std::optional(step.bytes) : std::nullopt, step.a == 2};
        } else {
            QFile club(folder() + "/club.ini");
            club.remove();
            if (step.a != 0 && club.open(QIODevice::WriteOnly)) {
                club.write(step.bytes);
                club.close();
                club.setPermissions(step.a == 2 ? QFile::ReadOwner : QFile::ReadOwner | QFile::WriteOwner);
            }
        }
    }

    QString file() const
    {
        if constexpr (isModel) {
            return FDisk.file ? shown(*FDisk.file) : QStringLiteral("none");
        } else {
            QFile club(folder() + "/club.ini");
            return club.open(QIODevice::ReadOnly) ? shown(club.readAll()) : QStringLiteral("none");
        }
    }

    void click(const TStep& step)
    {
        if (!FBox) {
            return;
        }
        if constexpr (isModel) {
            clickOn(*FBox, FPanel.get(), int(step.a), int(step.b), int(step.c));
        } else {
            clickOn(*FBox, int(step.a), int(step.b), int(step.c));
        }
    }

    // ---- one telling for both sides

    void performOn(TPanel& panel, const TStep& step)
    {
        const QStringList& t = step.text;
        auto* const list = panel.TurnStylerList();
        switch (step.kind) {
        case Handler:
            return setHandler(int(step.a));
        case Section:
            return panel.SetIniSection(t[0]);
        case FileName:
            return panel.SetIniFile(QStringList{folder() + "/club.ini", folder() + "/none/club.ini", folder(),
                                                QString()}[step.a]);
        case Settings:
            panel.SetButtonSize(int(step.a));
            return panel.SetDefaultImage(int(step.b));
        case Box:
            return panel.SetScrollBox(step.a != 0 ? FBox.get() : nullptr);
        case Pictures: {
            TPictures* const pictures = step.a != 0 ? FPictures.at(std::size_t(step.b)).get() : nullptr;
            return step.c != 0 ? panel.SetImagesBtn(pictures) : panel.SetImages(pictures);
        }
        case Load:
            return panel.load();
        case Save:
            return panel.save();
        case SetUp:
            return panel.SetUpItems();
        case ClearAll:
            return panel.ClearItems();
        case ClearOne:
            return panel.ClearItem(int(step.a));
        case State:
            return panel.Setitemstate(t[0], int(step.a), t[1]);
        case Select:
            return panel.SetSelectedIndex(int(step.a));
        case Find:
            return note(shown({panel.FindItemByGate(t[0]), panel.FindItemByGateEntry(t[0])}));
        case Event:
            return panel.CTurnStylerBtnClick(list->GetTurnStylerItem(int(step.a)), int(step.b), said(0, t[0]),
                                             said(1, t[1]));
        case Remove:
            return list->Delete(int(step.a));
        case EmptyList:
            return list->Clear();
        default:
            return performOnGate(*list, step);
        }
    }

    template <class List>
    void performOnGate(List& list, const TStep& step)
    {
        const QStringList& t = step.text;
        TGate* gate = list.GetTurnStylerItem(int(step.a));
        if (step.kind == Add) {
            gate = list.Add();
            gate->SetCaption(t[0]);
            gate->SetGateA(t[1]);
            gate->SetGateB(t[2]);
            gate->SetIP(t[3]);
            gate->SetEntryA(int(step.a));
            gate->SetEntryB(int(step.b));
        } else if (step.kind == Place) {
            place(list, int(step.a), int(step.b));
        } else if (gate != nullptr && step.kind == ItemClick) {
            step.b == 0   ? gate->GateABtnclick(nullptr)
            : step.b == 1 ? gate->GateBBtnclick(nullptr)
                          : gate->imgBtnclick(nullptr);
        } else if (gate != nullptr && step.kind == Edit) {
            step.b == 0   ? gate->SetCaption(t[0])
            : step.b == 1 ? gate->SetGateA(t[0])
            : step.b == 2 ? gate->SetGateB(t[0])
            : step.b == 3 ? gate->SetIP(t[0])
            : step.b == 4 ? gate->SetEntryA(int(step.c))
                          : gate->SetEntryB(int(step.c));
        }
    }

    template <class List>
    void place(List& list, int index, int which)
    {
        if (which != -2) {
            list.SetTurnStylerItem(index, list.GetTurnStylerItem(which));
        } else if (list.GetTurnStylerItem(index) != nullptr) {
            TGate* fresh = nullptr;
            if constexpr (isModel) {
                fresh = FPanel->keep();
            } else {
                fresh = new TGate;
            }
            fresh->SetCaption("New");
            list.SetTurnStylerItem(index, fresh);
        }
    }

    void setHandler(int number)
    {
        assign(
            *FPanel, &TPanel::SetOnTurnStylerBtnClick, number,
            [this, number](TGate* gate, const QVariant& index, const QVariant& ip, const QVariant& address) {
                heard(QStringLiteral("click%1 ").arg(number) +
                      (gate != nullptr ? shown(gate->Caption()) : QStringLiteral("nobody")) +
                      shown({index.toInt()}) + shown(ip.toString()) + shown(address.toString()) +
                      (index.typeId() == QMetaType::Int ? "" : " odd"));
            });
    }

    TGround<World> ground;
    TDisk FDisk;
    std::vector<std::shared_ptr<void>> FKept; // of the model, also what is destroyed
    std::array<std::shared_ptr<TPictures>, 2> FPictures;
    std::shared_ptr<TBox> FBox;
    int FNumbered = 0;
    std::shared_ptr<TPanel> FPanel;
    bool FDestroying = false;
};

TEST(PanelModel, PlaysLikeTheComponent)
{
    compare<TPanelStage>(
        300, {"splitter: *", "port: *", "remote: *", "destroyed from the event loop", "code page *"});
}

} // namespace

} // namespace tnv5::panel::model
