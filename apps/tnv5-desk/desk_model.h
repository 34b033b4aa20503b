#pragma once

#include "apps/tnv5-desk/gate_pairs.h"
#include "apps/tnv5-desk/log_model.h"
#include "tnv5/host/local/local_client.h"

#include <QElapsedTimer>
#include <QMap>
#include <QObject>
#include <deque>

namespace tnv5::desk {

/// What became of an opening by hand, as far as it is known.
enum class TOpened { Given, Refused, Unknown };

/// What the desk knows: a client of the host's local socket, the last state of the club, the latest passes
/// and the log. It shows nothing and keeps nothing that the club needs.
class TDeskModel final : public QObject
{
    Q_OBJECT

public:
    static constexpr int kPasses = 100;  ///< that are remembered
    static constexpr int kPictures = 30; ///< of them, the latest ones

    /// @param findSocket where the host listens; asked before each try to connect until one was met
    explicit TDeskModel(host::TLocalClient::TFindPath findSocket, QObject* parent = nullptr);

    void start() { FHost.start(); }
    /// Where the host was looked for last.
    const QString& socket() const { return FHost.path(); }

    /// Whether what is shown is so now: the host is there and its state has come.
    bool live() const { return FLive; }
    /// Why not; empty before it is known.
    const QString& whyNot() const { return FWhyNot; }
    /// The last state; empty without a connection.
    const TClubState& state() const { return FState; }
    /// Milliseconds since the state came.
    qint64 stateAgeMs() const { return FStateAge.isValid() ? FStateAge.elapsed() : 0; }

    /// Turnstiles of the club; they stay without a connection, so that the panel does not jump.
    const QList<TGatePair>& pairs() const { return FPairs; }
    /// What a pair shows now.
    TPairState stateOf(const TGatePair& pair) const;
    /// A gate by its address; none: the club has none.
    std::optional<TGateState> gate(const QString& address) const;

    /// The latest passes, newest first.
    const std::deque<TPassNews>& passes() const { return FPasses; }
    TLogModel& log() { return FLog; }

    /// Opens a gate by hand; `opened` tells what came of it.
    void open(const QString& gate, const QString& who, const QString& reason);

Q_SIGNALS:
    /// The connection has come or gone.
    void liveChanged();
    /// A new state has come, or there is none any more.
    void stateChanged();
    /// The turnstiles are others than before.
    void pairsChanged();
    void passesChanged();
    /// The host has answered an opening by hand, or nobody will any more. @param text says so
    void opened(tnv5::desk::TOpened what, const QString& text);

private:
    void onEvent(const QJsonObject& event);
    void onState(const QJsonObject& object);
    void onPass(TPassNews pass);
    void onLost(const QString& why);
    void onOpened(const QString& gate, const QJsonObject& answer);
    void note(TLogLevel level, const QString& text);

    host::TLocalClient FHost;
    bool FLive = false;
    QString FWhyNot;
    TClubState FState;
    QElapsedTimer FStateAge;
    QElapsedTimer FClock;
    QList<TGatePair> FPairs;
    QMap<QString, TRefusalShown> FRefusals; // by gate
    std::deque<TPassNews> FPasses;
    TLogModel FLog;
};

} // namespace tnv5::desk
