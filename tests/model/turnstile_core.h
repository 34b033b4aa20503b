#pragma once

#include "model/turnstile_model.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <optional>

namespace tnv5::turnstile::model {

// A branch registers itself when the program starts, because its counter is named in the code that counts it.

template <std::size_t Size>
struct TName
{
    char text[Size]{};
    consteval TName(const char (&name)[Size])
    {
        std::copy_n(name, Size, text);
    } // NOLINT: a literal becomes one
};

struct TCounter : TBranch
{
    explicit TCounter(const char* name);
};

template <TName name>
inline TCounter counter{name.text};

template <TName name>
void hit()
{
    ++counter<name>.count;
}

template <TName yes, TName no>
bool either(bool condition)
{
    ++(condition ? counter<yes> : counter<no>).count;
    return condition;
}

/// The gate is gone: everything under way ends.
struct TGone
{
};

/// What the model itself raises.
struct TRaised : std::exception
{
    explicit TRaised(const QString& message) : text(message), utf8(message.toUtf8()) {}
    const char* what() const noexcept override { return utf8.constData(); }
    QString text;
    QByteArray utf8;
};

/// Character 3 of an address.
inline QString channelOf(const QString& address)
{
    return address.mid(2, 1);
}

/// Text of the exception being handled.
QString raisedText();

struct TModelGate::TSplitter
{
    char start;
    std::shared_ptr<TPort> port;
    QByteArray buffer; // empty, or from a start character on
    std::function<void(const QByteArray&)> packet;

    void append(const QByteArray& bytes);
};

struct TModelGate::TPort
{
    struct TRead
    {
        QByteArray bytes;
        std::vector<std::shared_ptr<TSplitter>> splitters; // attached when it came
        std::size_t next = 0;
    };

    int index;
    bool open = false;
    QString writeFailure;
    bool gone = false;
    std::vector<std::shared_ptr<TSplitter>> splitters;
    std::deque<TRead> reads;
};

/// What the model knows of one component, from creation to destruction.
class TModelGate::TCore
{
public:
    using PRecord = std::shared_ptr<TRecord>;

    TCore(TModelGate& gate, bool designing);

    /// Runs code of the host's. What it raises after it destroyed the gate goes to the event loop.
    /// @throws TGone when the gate was destroyed meanwhile
    template <class Body>
    void host(Body body)
    {
        try {
            body();
        } catch (...) {
            if (!gone) {
                throw;
            }
            toLoop();
        }
        if (gone) {
            throw TGone();
        }
    }

    /// Runs what enters from the event loop.
    template <class Body>
    void fromLoop(Body body);

    void attach(const std::shared_ptr<TPort>& to);
    void line(const QString& text);
    QString checkStatus(const QString& device, const QString& card, const QString& status);
    int find(const QString& device) const;
    int findByRelay(const QString& device, const QString& relay);
    void pass();
    int sql(const PRecord& record, int mode);
    void sendCom(const PRecord& record, int yesnot);
    void relay(const QString& device, const QString& relay, int yesnot);
    void poll();
    void showStatus(TSender sender, const QStringList& values);
    PRecord at(int index) const;
    PRecord add(const QString& device, const QString& card);

    void setTimerEnabled(bool value);
    void setTimerInterval(int ms);
    void tick();

    static QString checksum(const QString& command);
    static bool elapsed(double first, double second, double limit);

    TModelGate& owner;
    bool designing;
    bool gone = false;
    std::array<int, kEvents> handlers{};
    std::array<int, kNumbers> numbers{1, 0, 3, 0, 2, 5, 0};
    QString doorIndex = QStringLiteral("D");
    QString server;
    TMode mode = TMode::Alone;
    QStringList devices;
    std::vector<PRecord> stack;
    bool busy = false;
    std::shared_ptr<TPort> port;
    std::vector<std::shared_ptr<TSplitter>> splitters;

    bool timerEnabled = false;
    int interval = 100;
    std::optional<qint64> due;

private:
    bool forwarded(const QString& text);
    void event(const QString& text);
    void message(const QString& text);
    void press(const QString& address);
    void learn(const QString& address);
    bool passOne(std::size_t index);
    void decide(const PRecord& record);
    void watchOpen(const PRecord& record);
    bool offer(const PRecord& record, int how, std::size_t index);
    void remove(std::size_t index);
    bool late(const TRecord& record, qint64 limit) const;
    void send(const QString& command, const QString& code);

    void log(const QString& text);
    void error(const QString& text);
    void echoedError(const QString& text);
    void echo(const QString& text);
    void report(const QString& name, const QString& device, const QString& card, const QString& first,
                const QString& second);
    void reportStack(const TRecord& record);
    int handler(TEvent which) const { return handlers[static_cast<std::size_t>(which)]; }
    int numberOf(TNumber which) const { return numbers[static_cast<std::size_t>(which)]; }
    IHost& listener() const { return owner.FHost; }

    void toLoop() const;
    void rearm();
};

} // namespace tnv5::turnstile::model
