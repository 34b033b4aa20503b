#pragma once

#include "model/kit/model_world.h"
#include "model/kit/texts.h"

#include <QStringList>

namespace tnv5::scales::model {

using namespace modelkit;

/// What a scales component does, told once more from the wire formats. Its names are those of the component.
class TModelScales final : public TModel
{
public:
    using TText = std::function<void(TModel*, const QString&)>;
    using TWeight = std::function<void(TModel*, int)>;

    TModelScales(TModelWorld& world, bool designing);
    void die() override;

    void SetOnLog(TText event) { FOnLog = std::move(event); }
    void SetOnError(TText event) { FOnError = std::move(event); }
    void SetOnWeight(TWeight event) { FOnWeight = std::move(event); }
    int IDLang() const { return FLang; }
    void SetIDLang(int lang) { FLang = lang; }
    int LastWeight() const { return FLastWeight; }
    void SetLastWeight(int weight)
    {
        operation([&] { notify(weight); });
    }
    int ScalesType() const { return FType; }
    void SetScalesType(int type);
    int SendInterval() const { return FSendInterval; }
    void SetSendInterval(int ms);
    TModelPort* ComPort() const { return living(FPort); }
    void SetComport(TModelPort* port);

    bool IsConnected() const { return ComPort() != nullptr && ComPort()->Connected(); }
    bool SetConnection(bool open)
    {
        return operation([&] { return connectPort(open); }, false);
    }
    void SetUpComport();
    int GetWeight(bool safe)
    {
        return operation([&] { return ask(safe); }, -1);
    }
    void WriteToPort(QString text)
    {
        operation([&] { send(text); });
    }
    void Reset()
    {
        operation([&] { restart(); });
    }
    QString GetMessage(int index) const;

    void GetScalesList(QStringList& names) const;
    static QString DigitsOnly(const QString& text);
    static QString ReplaceStr(const QString& text, const QString& old, const QString& with);
    static int StringLRC(const QString& text);
    static bool p_hw_checktimebetween(double now, double last, int limit)
    {
        return daysApart(now, last, limit);
    }

private:
    void log(const QString& text) { fire(FOnLog, this, text); }
    void error(const QString& text) { fire(FOnError, this, text); }
    void poll();
    bool connectPort(bool open);
    void send(const QString& text);
    void restart();
    void notify(int weight);
    void notifyChange(int weight);
    void bind(TModelPort* port);
    void request();
    int ask(bool safe);
    int wait(bool continuous);
    bool silent() const { return apart(FWorld.clock.timeOfDay(), FLastAsk, 3); }

    void findStart(const QByteArray& buffer, qsizetype& position);
    void findStop(const QByteArray& buffer, qsizetype& position);
    void packet(const QByteArray& bytes);
    void massaK(const QByteArray& bytes);
    void cas(const QByteArray& bytes);
    void casWeight(const QByteArray& bytes);
    void store(const QString& field);
    void axis(const QString& text);
    void upaQ(const QString& text);

    TText FOnLog, FOnError;
    TWeight FOnWeight;
    int FLang = 0;
    int FCount = 0;
    bool FAsk = false; // "ASK", else "HEY"
    qint64 FLastAsk;   // time of day in ms
    int FLastWeight = 0;
    int FType = 0;
    int FSendInterval = -1;
    bool FBusy = false;
    TModelPort* FPort = nullptr;
    TModelTimer FTimer;
    TModelSplitter FSplitter;
};

/// Bits as text, and back.
QString modelByteToBin(int value);
int modelBinToInt(const QString& bits);

} // namespace tnv5::scales::model
