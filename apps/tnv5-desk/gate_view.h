#pragma once

#include "apps/tnv5-desk/desk_model.h"
#include "tnv5/panel/turn_styler.h"

#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>
#include <QWidget>

namespace tnv5::desk {

/// The turnstiles of the club, and two buttons that open the selected one: what can be done with the mouse in
/// the panel is done with the keyboard by them.
class TGateView final : public QWidget
{
    Q_OBJECT

public:
    /// @param gatesFile ini file with the gates, in the section "Gates"; empty: those of the club
    TGateView(TDeskModel& desk, const QString& gatesFile, QWidget* parent = nullptr);

    panel::TTurnStyler& panel() { return FPanel; }
    QPushButton* openA() const { return FOpenA; }
    QPushButton* openB() const { return FOpenB; }
    QScrollArea* box() const { return FBox; }
    /// Why there are no gates of the file; hidden when there are.
    QLabel* note() const { return FNote; }

    /// Selects the next turnstile (1) or the one before (-1).
    void selectNext(int step);
    /// Asks to open a direction of the selected turnstile, if it has one and the desk is connected. Whether
    /// the club has that gate is for who is asked.
    void askA() { ask(true); }
    void askB() { ask(false); }

Q_SIGNALS:
    /// Somebody wants a gate opened by hand.
    void openAsked(const QString& gate);

private:
    void build();
    void fill();
    void loadFile();
    void select(const TGatePair& pair);
    void showAll();
    void showHost();
    void showState(int index, const TPairState& state);
    void showSelected();
    void ask(bool directionA);
    panel::TTurnStylerItem* selected() const;
    TGatePair pairAt(int index) const;
    int rowHeight() const;
    QString fitting(const QString& caption, const QString& text) const;

    TDeskModel& FDesk;
    const QString FGatesFile;
    QScrollArea* FBox;
    QLabel* FNote;
    QPushButton* FOpenA;
    QPushButton* FOpenB;
    panel::TImageList FStates;
    panel::TImageList FGlyphs;
    panel::TTurnStyler FPanel; // after what it shows in
    QList<TPairState> FShown;
    QTimer FRefresh; // refusals go away by themselves
};

} // namespace tnv5::desk
