#pragma once

#include "model/kit/model_world.h"
#include "model/kit/texts.h"

#include <QStringList>
#include <array>

namespace tnv5::bank::model {

using namespace modelkit;

/// What the bank terminal's component does, told once more. Its names are those of the component.
class TModelBank final : public TModel
{
public:
    using TText = std::function<void(TModel*, const QString&)>;
    using TOperation = std::function<void(TModel*, const QString&, const QString&, const QString&,
                                          const QString&, const QString&, const QString&, bool&,
                                          const QString&, const QString&, const QString&)>;
    using TAmount = std::function<void(TModel*, int&, int&, bool&)>;

    TModelBank(TModelWorld& world, bool designing);
    void die() override;

    void SetOnLog(TText event) { FOnLog = std::move(event); }
    void SetOnError(TText event) { FOnError = std::move(event); }
    void SetOnRequestOperation(TOperation event) { FOnOperation = std::move(event); }
    void SetOnRequestAmount(TAmount event) { FOnAmount = std::move(event); }
    int IDLang() const { return FLang; }
    void SetIDLang(int lang) { FLang = lang; }
    int PosType() const { return FType; }
    void SetPosType(int type) { FType = type; }
    int TimeOut() const { return FTimeOut; }
    void SetTimeOut(int units) { FTimeOut = units; }
    QString CodeOk() const { return FCodeOk; }
    void SetCodeOk(const QString& codes) { FCodeOk = codes; }
    QString CodeError() const { return FCodeError; }
    void SetCodeError(const QString& codes) { FCodeError = codes; }
    TModelPort* ComPort() const { return living(FPort); }
    void SetComport(TModelPort* port);

    bool IsConnected() const { return ComPort() != nullptr && ComPort()->Connected(); }
    bool SetConnection(bool open)
    {
        return operation([&] { return connectPort(open); }, false);
    }
    void SetUpComport();
    QString GetMessage(int index) const;
    static void GetPosList(QStringList& names);
    QString CutValue(const QString& packet, const QString& tag) const;
    static QString MakeStr(QChar character, int count);

    /// Card, card type, holder, operation, answer, bank type, discount type, discount.
    using TFields = std::array<QString, 8>;

private:
    bool spoken() const { return FType >= 1 && FType <= 3; }
    bool connectPort(bool open);
    void packet(const QString& text);
    TFields fieldsOf(const QString& text) const;
    void amountRequest();
    void answer(const TFields& fields);
    void card(const TFields& fields);
    void tick();
    void log(const QString& text) { fire(FOnLog, this, text); }
    void error(const QString& text) { fire(FOnError, this, text); }
    void tell(const QString& status, const TFields& fields, bool& apply);
    void write(const QByteArray& bytes);

    TText FOnLog, FOnError;
    TOperation FOnOperation;
    TAmount FOnAmount;
    int FLang = 0;
    int FType = 0;
    int FTimeOut = 0;
    QString FCodeOk, FCodeError;
    bool FAwaiting = false;
    qint64 FLastAsk; // time of day in ms
    TModelPort* FPort = nullptr;
    TModelTimer FTimer;
    TModelSplitter FSplitter;
};

} // namespace tnv5::bank::model
