#pragma once

#include "tnv5/common/string_lrc.h"
#include "tnv5/common/text.h"
#include "tnv5/platform/clock.h"
#include "tnv5/platform/com_data_packet.h"
#include "tnv5/platform/com_port.h"
#include "tnv5/platform/timer.h"
#include "tnv5/scales/end_search.h"

#include <QPointer>
#include <memory>

namespace tnv5::scales {

using platform::TComponent;
using platform::TLogEvent;

/// A new weight, in the scale's own units (grams for most).
using TWeightEvent = std::function<void(TComponent* Sender, int Weight)>;

/// A weighing scale on a serial port, of one of eight protocol families.
///
///     TScalesDevice scales;
///     scales.SetComport(&port);
///     scales.SetScalesType(2);
///     scales.SetUpComport();
///     scales.SetConnection(true);
///     const int grams = scales.GetWeight(false); // waits for the answer, messages are served
///
/// Only families 1 and 2 raise `OnWeight`; the others update `LastWeight`, which `GetWeight` returns.
/// Handlers may weigh again, reset, close the port or destroy the component.
class TScalesDevice : public TComponent
{
    Q_OBJECT
    Q_PROPERTY(int LastWeight READ LastWeight WRITE SetLastWeight)
    Q_PROPERTY(int IDLang READ IDLang WRITE SetIDLang)
    Q_PROPERTY(int ScalesType READ ScalesType WRITE SetScalesType)
    Q_PROPERTY(tnv5::platform::TComPort* ComPort READ ComPort WRITE SetComport)
    Q_PROPERTY(int SendInterval READ SendInterval WRITE SetSendInterval)
    Q_PROPERTY(tnv5::platform::TLogEvent OnLog READ OnLog WRITE SetOnLog)
    Q_PROPERTY(tnv5::platform::TLogEvent OnError READ OnError WRITE SetOnError)
    Q_PROPERTY(tnv5::scales::TWeightEvent OnWeight READ OnWeight WRITE SetOnWeight)

public:
    explicit TScalesDevice(QObject* AOwner = nullptr);
    ~TScalesDevice() override;

    /// Last weight; 0 while a request is under way. Setting a new one of 1 or more raises `OnWeight`, unless
    /// it is being raised already.
    int LastWeight() const { return FLastWeight; }
    void SetLastWeight(int Value);

    /// Language of messages: 0 Russian, 1 Ukrainian, 2 English; any other: empty texts.
    int IDLang() const { return FIDLang; }
    void SetIDLang(int Value) { FIDLang = Value; }

    /// Number of the family, 1 to 8 (see `GetScalesList`); 0: none.
    int ScalesType() const { return FScalesType; }
    void SetScalesType(int Value);

    /// The port; not owned.
    platform::TComPort* ComPort() const { return FComport; }
    void SetComport(platform::TComPort* Value);

    /// Polling period in milliseconds; -1, as at first: no polling.
    int SendInterval() const { return FSendInterval; }
    void SetSendInterval(int Value);

    const TLogEvent& OnLog() const { return FLogEvent; }
    void SetOnLog(TLogEvent Value) { FLogEvent = std::move(Value); }
    const TLogEvent& OnError() const { return FErrorEvent; }
    void SetOnError(TLogEvent Value) { FErrorEvent = std::move(Value); }
    const TWeightEvent& OnWeight() const { return FWeightEvent; }
    void SetOnWeight(TWeightEvent Value) { FWeightEvent = std::move(Value); }

    bool IsConnected() const { return FComport && FComport->Connected(); }
    /// Opens or closes the port. False without a port (reported) or when that fails (reported).
    bool SetConnection(bool AOpen);
    /// Replaces the list by the names of the families; the index is the number of the family.
    void GetScalesList(QStringList& AValue) const;
    /// Applies the family's settings to the port.
    void SetUpComport();

    /// Asks for the weight. `Safe`: returns at once what is known (0 unless a packet came meanwhile);
    /// otherwise waits, serving messages, until more than 3 whole seconds have passed without a packet.
    /// @return -1 when not connected or without a family, and when a scale that talks by itself was silent
    int GetWeight(bool Safe);

    /// Writes text as bytes, one a character, and logs it; nothing when not connected. @throws EComPort
    void WriteToPort(const QString& AText);
    /// Begins the dialogue anew: binds the port again, opens it and logs the name of the port that is
    /// listened to; in the form designer that is none.
    void Reset();

    /// Message of an index, counted from 0, in the language of `IDLang`.
    QString GetMessage(int AIndex) const;

    static QString DigitsOnly(const QString& AText) { return digitsOf(AText); }
    static QString ReplaceStr(const QString& AText, const QString& AOld, const QString& ANew)
    {
        return common::ReplaceStr(AText, AOld, ANew);
    }
    static int StringLRC(const QString& AText) { return common::StringLRC(AText); }
    static bool p_hw_checktimebetween(platform::TDateTime ANow, platform::TDateTime ALast, int ALimit);

private:
    void bind();
    void CustomStart(const QByteArray& buffer, qsizetype& position);
    void CustomStop(const QByteArray& buffer, qsizetype& position);
    void CustomPacket(const QByteArray& packet);
    void OnSendSymbolTimer();
    void request(const TFamily& family);
    void repeatRequest(const TFamily& family);
    int wait(bool continuous);
    bool silentForLong() const;
    void apply(const TDecision& decision, const QByteArray& packet);
    void storeField(const TDecision& decision, const QByteArray& packet);
    void log(const QString& text);

    int FCount = 0;
    TStep FLastCommand = TStep::Hey;
    platform::TDateTime FLastAsk;
    int FLastWeight = 0;
    QPointer<platform::TComPort> FComport;
    std::unique_ptr<platform::TTimer> FCheckTime;
    int FSendInterval = -1;
    TLogEvent FErrorEvent;
    TLogEvent FLogEvent;
    int FScalesType = 0;
    TWeightEvent FWeightEvent;
    int FIDLang = 0;
    std::unique_ptr<platform::TComDataPacket> ComDataPacket;
    bool FBusy = false;
    TEndSearch FEndSearch;
};

} // namespace tnv5::scales
