#pragma once

#include "bank_side.h"

#include <string>

namespace tnv5::bank::model {

/// The rules of the bank terminal, written down once more; shares no code with the component.
class TModel final : public TSide
{
public:
    TModel(THost& host, std::int64_t startMs) : FHost(host), FNow(startMs) {}

    void feed(const QByteArray& bytes) override;
    void advance(std::int64_t ms) override;
    void setType(int type) override { FType = type; }
    void setTimeOut(int units) override { FTimeOut = units; }
    void setLanguage(int language) override { FLanguage = language; }
    void setCodes(const QString& ok, const QString& error) override
    {
        FOk = ok;
        FError = error;
    }
    void setConnection(bool open) override;
    void openPort(bool open) override { FOpen = open; }
    void failWrites(bool fail) override { FFailing = fail; }
    void link(bool link) override;
    void assign(bool log, bool error, bool operation, bool amount) override
    {
        FHasLog = log;
        FHasError = error;
        FHasOperation = operation;
        FHasAmount = amount;
    }
    QString cut(const QString& packet, const QString& tag) override;
    void destroy() override { FAlive = false; }
    bool alive() const override { return FAlive; }

private:
    struct TGone
    {
    };
    struct TFields
    {
        QStringList values = {"", "", "", "", "", "", "", "0"};
    };

    bool spoken() const { return FType >= 1 && FType <= 3; }
    template <class Body>
    void guard(Body&& body);
    void call(const std::function<void()>& body);
    void packet(const std::string& bytes);
    void amountRequest();
    void answer(const TFields& fields);
    void card(const TFields& fields);
    void tick();
    void log(const QString& text);
    void operation(const QString& status, const TFields& fields, bool& apply);
    void write(const std::string& bytes);
    QString message(int number) const;
    TFields fieldsOf(const std::string& bytes);

    THost& FHost;
    std::int64_t FNow;
    bool FAlive = true;
    int FType = 0;
    int FTimeOut = 0;
    int FLanguage = 0;
    QString FOk;
    QString FError;
    bool FLinked = true;
    bool FOpen = false;
    bool FFailing = false;
    bool FHasLog = true;
    bool FHasError = true;
    bool FHasOperation = true;
    bool FHasAmount = true;
    std::string FBuffer;
    bool FInside = false;
    bool FAwaiting = false;
    std::int64_t FLastAsk = 0; // of the day
    bool FTicking = false;
    std::int64_t FDue = 0;
};

} // namespace tnv5::bank::model
