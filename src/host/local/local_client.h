#pragma once

#include <QJsonObject>
#include <QString>
#include <functional>

namespace tnv5::host {

/// Asks a running host one thing and waits for the answer, for commands that end then. Needs no event loop.
/// Example: askHost(path, {{"do", "status"}}, 5'000)["state"].
/// @param timeoutMs for the connection and the answer together
/// @return the answer, also one that is not "ok"
/// @throws platform::Exception when there is no host, or no answer in time
QJsonObject askHost(const QString& path, const QJsonObject& request, int timeoutMs);

/// A connection to a running host that is kept: it watches the club, asks it things, and comes back by itself
/// when the host does.
///
///     TLocalClient host("/run/tnv5/Riverside.socket");
///     host.OnEvent = [](const QJsonObject& event) { ... };
///     host.ask({{"do", "open"}, {"gate", "01A"}, {"reason", "pram"}}, [](const QJsonObject& answer) { ...
///     }); host.start();
///
/// A host that says nothing for `PatienceMs`, although it was asked, counts as lost. The hooks may ask, stop
/// and destroy the client. Events come only while it is connected.
class TLocalClient
{
public:
    static constexpr int kFirstPauseMs = 100; ///< between tries to connect; doubled up to the longest
    static constexpr int kLongestPauseMs = 2'000;
    static constexpr int kMaxOpen = 256; ///< questions without an answer yet

    /// An answer; "ok" is false and "error" says why when none came. "unknown" is true then when the question
    /// had been sent: whether the host has done it is not known.
    using TAnswer = std::function<void(const QJsonObject& answer)>;
    /// Says where the host listens. What it raises is why it cannot be said now. It must not destroy the
    /// client.
    using TFindPath = std::function<QString()>;

    explicit TLocalClient(const QString& path);
    /// For a host that may begin later, and elsewhere: `find` is asked before each try. Where a host has once
    /// been met it is looked for from then on, so that nobody is led to another club.
    explicit TLocalClient(TFindPath find);
    /// Nobody is told of it, and what was asked gets no answer.
    ~TLocalClient();
    TLocalClient(const TLocalClient&) = delete;
    TLocalClient& operator=(const TLocalClient&) = delete;

    /// Where the host was looked for last, as an absolute path; empty before the first try of a client that
    /// has to find it.
    const QString& path() const;
    /// Connects, and connects again whenever it has to.
    void start();
    /// Ends the connection; questions under way are answered that it is lost. `OnLost` is not called.
    void stop();
    /// The host is there and tells its events.
    bool connected() const;

    /// Asks the host; the answer comes later, exactly once. Without a connection the question is not kept:
    /// the answer says so.
    void ask(QJsonObject request, TAnswer answer);

    /// Passes come with pictures; to be set before `start`.
    bool Pictures = false;
    /// Milliseconds; half of it without a word, and the host is asked whether it is there. To be set before
    /// `start`.
    int PatienceMs = 10'000;

    /// Connected; the first state comes right behind.
    std::function<void()> OnConnected;
    /// Not connected any more, or cannot connect: told once until it is, and again when the reason changes.
    std::function<void(const QString& why)> OnLost;
    /// An event, as docs/local-socket.md has them.
    std::function<void(const QJsonObject& event)> OnEvent;

private:
    class TLink;
    TLink* F; // outlives the client while it calls a hook
};

} // namespace tnv5::host
