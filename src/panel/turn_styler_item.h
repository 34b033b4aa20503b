#pragma once

#include "tnv5/panel/gate_desk.h"
#include "tnv5/panel/gate_record.h"

#include <QObject>

namespace tnv5::panel {

class TTurnStylerList;

/// One gate: a turnstile with its two directions of passage.
///
/// It belongs to a list, which frees it, or, made without one, to its maker. Whoever deletes it takes it out
/// of its list and its controls out of the scroll box.
class TTurnStylerItem : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(QString GateA READ GateA WRITE SetGateA)
    Q_PROPERTY(QString GateB READ GateB WRITE SetGateB)
    Q_PROPERTY(int EntryA READ EntryA WRITE SetEntryA)
    Q_PROPERTY(int EntryB READ EntryB WRITE SetEntryB)
    Q_PROPERTY(QString IP READ IP WRITE SetIP)

public:
    /// A new gate at the end of a list, or one without a list.
    explicit TTurnStylerItem(TTurnStylerList* AList = nullptr);
    ~TTurnStylerItem() override;

    /// Name of the gate. A new one is seen when the next state is shown.
    QString Caption() const { return FRecord.Caption; }
    void SetCaption(const QString& Value) { FRecord.Caption = Value; }
    /// Controller address of a direction; without one the direction's button is disabled when it is built.
    QString GateA() const { return FRecord.GateA; }
    void SetGateA(const QString& Value) { FRecord.GateA = Value; }
    QString GateB() const { return FRecord.GateB; }
    void SetGateB(const QString& Value) { FRecord.GateB = Value; }
    /// Entry number of a direction.
    int EntryA() const { return FRecord.EntryA; }
    void SetEntryA(int Value) { FRecord.EntryA = Value; }
    int EntryB() const { return FRecord.EntryB; }
    void SetEntryB(int Value) { FRecord.EntryB = Value; }
    /// Network address that clicks carry. It is not kept in the file.
    QString IP() const { return fIP; }
    void SetIP(const QString& Value) { fIP = Value; }

    /// Controls of the gate; none until `TTurnStyler::SetUpItems` has built them.
    QFrame* MainPanel() const;
    QLabel* CaptionPanel() const;
    QLabel* StateImage() const;

    /// Place in the list, from 0; -1 without a list.
    int Index() const;
    TTurnStylerList* List() const { return FList; }

    /// What the buttons and the picture do when they are clicked: select the gate; the buttons also tell
    /// `OnTurnStylerBtnClick`. The host may call them, too, with any sender.
    /// @throws what the event's handler throws
    void GateABtnclick(QObject* Sender);
    void GateBBtnclick(QObject* Sender);
    void imgBtnclick(QObject* Sender);

    /// What is kept in the file.
    const TGateRecord& record() const { return FRecord; }
    void setRecord(const TGateRecord& record) { FRecord = record; }

    IGateView* view() const { return FView.get(); }
    void setView(std::unique_ptr<IGateView> view) { FView = std::move(view); }

private:
    friend class TTurnStylerList;
    IGateDesk* desk() const;

    TGateRecord FRecord;
    QString fIP;
    TTurnStylerList* FList = nullptr;
    std::unique_ptr<IGateView> FView;
};

} // namespace tnv5::panel
