#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <vector>

/// The bank terminal beside a model of it: what both sides can be told, and the host that both have.
namespace tnv5::bank::model {

enum class TDeed {
    Nothing,
    Raise,
    ClosePort,
    OpenPort,
    Unlink,
    Link,
    NextType,
    NextLanguage,
    SwapCodes,
    DropLog,
    DropOperation,
    Restore, ///< all handlers
    FailWrites,
    Destroy
};

/// What the host does at one event.
struct TReaction
{
    int apply = 0; ///< 0: leaves it, 1: sets it, 2: clears it
    int amount = 0;
    int discount = 0;
    TDeed deed = TDeed::Nothing;
};

/// One side: the component or the model.
class TSide
{
public:
    virtual ~TSide() = default;
    virtual void feed(const QByteArray& bytes) = 0;
    virtual void advance(std::int64_t ms) = 0;
    virtual void setType(int type) = 0;
    virtual void setTimeOut(int units) = 0;
    virtual void setLanguage(int language) = 0;
    virtual void setCodes(const QString& ok, const QString& error) = 0;
    virtual void setConnection(bool open) = 0;
    virtual void openPort(bool open) = 0;
    virtual void failWrites(bool fail) = 0;
    virtual void link(bool link) = 0;
    virtual void assign(bool log, bool error, bool operation, bool amount) = 0;
    virtual QString cut(const QString& packet, const QString& tag) = 0;
    virtual void destroy() = 0;
    virtual bool alive() const = 0;
};

/// The host: notes every event and reacts by its script.
class THost
{
public:
    THost(std::vector<TReaction> script, TSide*& side) : FScript(std::move(script)), FSide(side) {}

    void note(const QString& line) { trace << line; }
    void event(const QString& line) { act(noteAndReact(line)); }
    void operation(const QString& line, bool& apply)
    {
        const TReaction reaction = noteAndReact(line + QString::number(int(apply)).prepend(u' '));
        setApply(reaction, apply);
        act(reaction);
    }
    void amount(const QString& line, int& amount, int& discount, bool& apply)
    {
        const TReaction reaction = noteAndReact(line + QString::number(int(apply)).prepend(u' '));
        amount = reaction.amount;
        discount = reaction.discount;
        setApply(reaction, apply);
        act(reaction);
    }

    QStringList trace;

private:
    TReaction noteAndReact(const QString& line)
    {
        note(line);
        return FScript[FNext++ % FScript.size()];
    }
    static void setApply(const TReaction& reaction, bool& apply)
    {
        if (reaction.apply != 0) {
            apply = reaction.apply == 1;
        }
    }
    void act(const TReaction& reaction)
    {
        switch (reaction.deed) {
        case TDeed::Nothing:
            break;
        case TDeed::Raise:
            throw std::runtime_error("host");
        case TDeed::ClosePort:
            FSide->openPort(false);
            break;
        case TDeed::OpenPort:
            FSide->openPort(true);
            break;
        case TDeed::Unlink:
            FSide->link(false);
            break;
        case TDeed::Link:
            FSide->link(true);
            break;
        case TDeed::NextType:
            FSide->setType(int(FNext % 5));
            break;
        case TDeed::NextLanguage:
            FSide->setLanguage(int(FNext % 4));
            break;
        case TDeed::SwapCodes:
            FSide->setCodes("51;9;", "00;9;");
            break;
        case TDeed::DropLog:
            FSide->assign(false, true, true, true);
            break;
        case TDeed::DropOperation:
            FSide->assign(true, true, false, FNext % 2 == 0);
            break;
        case TDeed::Restore:
            FSide->assign(true, true, true, true);
            break;
        case TDeed::FailWrites:
            FSide->failWrites(FNext % 2 == 0);
            break;
        case TDeed::Destroy:
            FSide->destroy();
            break;
        }
    }

    std::vector<TReaction> FScript;
    TSide*& FSide;
    std::size_t FNext = 0;
};

} // namespace tnv5::bank::model
