#pragma once

#include "apps/tnv5-desk/desk_model.h"
#include "apps/tnv5-desk/equipment_view.h"
#include "apps/tnv5-desk/gate_view.h"
#include "apps/tnv5-desk/log_view.h"
#include "apps/tnv5-desk/open_dialog.h"
#include "apps/tnv5-desk/passing_view.h"

#include <QLabel>
#include <QMainWindow>
#include <QPointer>

namespace tnv5::desk {

/// The window of the desk.
///
/// Keys: Ctrl+Down and Ctrl+Up select a turnstile, F7 and F8 open its way in and its way out, Ctrl+F searches
/// the log, Escape ends the search, F6 goes to the next part of the window, Ctrl+Q ends.
class TMainWindow final : public QMainWindow
{
    Q_OBJECT

public:
    struct TOptions
    {
        QString gatesFile; ///< ini file of the gates; empty: those of the club
        QString who;       ///< who sits at the desk
    };

    TMainWindow(TDeskModel& desk, const TOptions& options);

    TGateView* gates() const { return FGates; }
    TPassingView* passing() const { return FPassing; }
    TEquipmentView* equipment() const { return FEquipment; }
    TLogView* logView() const { return FLog; }
    QLabel* banner() const { return FBanner; }
    QLabel* answer() const { return FAnswer; }
    /// The question that is open; none: nobody is asked.
    TOpenDialog* question() const { return FQuestion; }

    /// Asks whether to open a gate, and opens it when the answer is yes.
    void askToOpen(const QString& gate);

private:
    void build();
    void addActions();
    QAction* addKey(QMenu* menu, const QString& text, const QKeySequence& key,
                    const std::function<void()>& act);
    void nextPart();
    void showConnection();
    void showNumbers();
    void showAnswer(const QString& text, TMood mood);

    TDeskModel& FDesk;
    QString FWho;
    QLabel* FBanner;
    TGateView* FGates;
    TPassingView* FPassing;
    TEquipmentView* FEquipment;
    TLogView* FLog;
    QLabel* FAnswer;
    QLabel* FNumbers;
    QPointer<TOpenDialog> FQuestion;
};

} // namespace tnv5::desk
