#pragma once

#include "tnv5/host/club/club_counters.h"
#include "tnv5/host/club/club_gates.h"
#include "tnv5/host/local/club_control.h"

namespace tnv5::host {

/// A running club: everything that its file describes, kept open, around one desk.
///
///     const TClubFile file = checkClub("club.toml");
///     TDatabase books(file.plan.database, TOpening::Existing);
///     TClubLog log(file.plan.log);
///     TClubPlant club("club.toml", file.plan, books, log);
///     club.start();
///
/// Each device fails on its own: a port that is not there is waited for, and everything else works. The
/// database and the log must outlive the club.
class TClubPlant final : public IClubControl
{
public:
    static constexpr int kLookMs = 5'000;
    static constexpr int kBeginBooksMs = 1'000; ///< between tries to write what a start must write

    /// @throws EDatabase
    TClubPlant(const QString& file, const TClubPlan& plan, TDatabase& database, TClubLog& log);
    /// Closes the club when that has not been done.
    ~TClubPlant() override;
    TClubPlant(const TClubPlant&) = delete;
    TClubPlant& operator=(const TClubPlant&) = delete;

    /// Closes what a killed host has left open in the books, enters the gates and lamps of the file, and
    /// opens the ports. While the books cannot be written it is tried again; cards are decided all the same,
    /// by what the books say. @throws EDatabase only when they cannot even be spoken to
    void start();
    /// Ends everything; passes under way are interrupted. @return passes and payments that could not be
    /// written
    qint64 close();

    const TClubPlan& plan() const { return FPlan; }

    QJsonObject state() override;
    QString open(const QString& gate, const QString& who, const QString& reason) override;
    QString reload() override;
    QString sellGoods(const QString& scale, const QString& card, const QString& product) override;
    QString sellTime(const QString& lamp, const QString& card, int minutes) override;
    QString sellAmount(const QString& terminal, qint64 cents) override;
    QString cancelSale(const QString& device) override;
    QByteArray picture(const QString& card) override;
    QJsonArray journal(qint64 after, int limit) override;

    /// Where the description comes from when it is read again; none: from the file.
    std::function<TClubFile()> Read;
    /// Something for those who watch.
    std::function<void(const QJsonObject& event)> OnEvent;
    /// The state has changed.
    std::function<void()> OnChanged;

private:
    void beginBooks(int patienceMs);
    void closeAbandoned(int patienceMs);
    bool anotherHostLives();
    void enterIntoBooks(const TClubPlan& plan);
    void enterLamps();
    void tellOfLostLamps();
    QStringList lampsInUse(const TClubPlan& plan);
    QStringList countersInUse(const TClubPlan& plan) const;
    void apply(const TClubPlan& plan);
    void dropWhatIsGone(const TClubPlan& plan);
    void addWhatIsNew(const TClubPlan& plan);
    void interrupt(const QString& line);
    void begin(TClubPort& port);
    void look();
    QList<TClubGates*> allGates() const;
    std::optional<TGate> gateAt(const QString& address) const;
    QStringList troubles() const;
    QJsonValue inside();
    void tell(const QJsonObject& event);
    void changed();

    QString FFile;
    TClubPlan FPlan;
    TClubLog& FLog;
    TDatabase& FDatabase;
    TClubDesk FDesk;
    TClubSite FSite;
    std::map<QString, std::unique_ptr<TClubLine>> FLines; // by name, here and below
    std::map<QString, std::unique_ptr<TClubBus>> FBuses;
    std::map<QString, std::unique_ptr<TClubScale>> FScales;
    std::map<QString, std::unique_ptr<TClubTerminal>> FTerminals;
    platform::TTimer FLook;
    platform::TTimer FBeginBooks;
    TStatement FInside;
    TStatement FNameOf;
    QString FBooksTrouble;              // what a start must write is not written yet
    std::optional<qint64> FLastPayment; // in the books when the host began
    bool FAbandonedClosed = false;
    bool FOtherHost = false; // when this one began
    bool FLampsWait = false; // for their books
    qint64 FStartedMs = 0;
    qint64 FLost = 0; // payments
    bool FRunning = false;
};

} // namespace tnv5::host
