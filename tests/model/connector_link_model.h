#pragma once

#include <QByteArray>
#include <QString>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The ground that the model of the line connector stands on: time, code page, serial port and packet
/// splitter, as plain as they can be written.
namespace tnv5::connector::model {

/// What the model did, by name of the branch: a scenario generator that misses one proves nothing about it.
class TCoverage
{
public:
    TCoverage(); ///< every branch, with 0
    void reach(const char* branch) { ++FCounts.at(branch); }
    const std::map<std::string, long, std::less<>>& counts() const { return FCounts; }

private:
    std::map<std::string, long, std::less<>> FCounts;
};

/// What all models of one scenario share.
struct TModelWorld
{
    explicit TModelWorld(TCoverage& counts) : coverage(counts) {}

    TCoverage& coverage;
    qint64 nowMs = 0;
    bool cyrillic = true; ///< code page windows-1251, else ISO 8859-1
    std::function<void(const QString& message)> unhandled;

    QString text(const QByteArray& bytes) const;
    QByteArray bytes(const QString& text) const;
    /// Hands the exception being handled to `unhandled`; a silent abort goes nowhere.
    void report() const;
};

/// Text of the exception being handled.
QString messageOfException();

class TModelPort;

/// Cuts packets out of the reads of a port: from the start character to a carriage return, both excluded.
class TModelSplitter
{
public:
    TModelSplitter(TModelWorld& world, char start, std::function<void(const QByteArray&)> onPacket)
        : FWorld(world), FStart(start), FOnPacket(std::move(onPacket))
    {
    }

    void attach(TModelPort* port);
    bool attachedTo(const TModelPort* port) const { return !FDead && FPort == port; }
    void append(const QByteArray& bytes);
    void die();

private:
    bool takePacket(QByteArray& packet);
    void detach();

    TModelWorld& FWorld;
    char FStart;
    std::function<void(const QByteArray&)> FOnPacket;
    TModelPort* FPort = nullptr;
    std::string FBuffer;
    bool FInside = false;
    bool FDead = false;
};

/// The in-memory port's twin.
class TModelPort
{
public:
    explicit TModelPort(TModelWorld& world) : FWorld(world) {}

    bool Connected() const { return FOpen; }
    void Open();
    void Close();
    void Write(const QByteArray& bytes);
    void feed(const QByteArray& bytes);
    void raiseError(const QString& message, qint64 osError);
    void raiseErrorInside(const QString& message, qint64 osError);

    std::optional<QString> OpenFailure;
    std::optional<QString> CloseFailure;
    std::optional<QString> WriteFailure;
    std::function<void()> OnOpening;
    std::function<void()> OnClosing;
    std::function<void()> OnWriting;
    std::function<void(const QByteArray&)> OnWritten;
    std::function<void(const QString& message, qint64 osError)> OnException;
    const void* TakenBy = nullptr; ///< who has assigned `OnException` last

    /// Destroyed; the memory stays for calls under way.
    void die() { FDead = true; }
    bool dead() const { return FDead; }

private:
    friend class TModelSplitter;
    template <class Hook, class... Args>
    bool outlives(const Hook& hook, Args&&... args);
    struct TRead
    {
        QByteArray bytes;
        std::vector<TModelSplitter*> splitters; // those attached when it came
        std::size_t next = 0;
    };

    TModelWorld& FWorld;
    bool FOpen = false;
    bool FDead = false;
    std::vector<TModelSplitter*> FSplitters;
    std::deque<TRead> FReads;
};

} // namespace tnv5::connector::model
