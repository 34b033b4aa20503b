#pragma once

#include "tnv5/answers/relay_answers.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/host/club/club_port.h"
#include "tnv5/host/d24_host.h"
#include "tnv5/host/switch_host.h"

#include <QJsonArray>
#include <optional>

namespace tnv5::host {

/// Gates of a running club on one serial port.
class TClubGates
{
public:
    TClubGates(TClubSite& site, const TLinePlan& plan);
    virtual ~TClubGates() = default;

    const TLinePlan& plan() const { return FPlan; }
    TClubPort& port() { return FPort; }
    /// The gates that it answers for from now on; those of another line or bus are left out.
    virtual void setGates(const QList<TGatePlan>& gates);
    /// What may differ in the new plan without a new port: who may watch.
    virtual void change(const TLinePlan& plan) = 0;
    bool hasGate(const QString& address) const { return FGates.contains(address); }

    /// Opens a gate by hand. @return "" or why not
    QString open(const QString& address, const QString& who, const QString& reason);
    /// Its gates, as entries of "gates" of the club's state.
    QJsonArray gatesState() const;
    /// What is wrong with it, as standing troubles.
    virtual QStringList troubles();
    /// From time to time.
    virtual void look() = 0;

protected:
    /// Whether a person is in the gate, and the command that makes it open.
    virtual bool busy(const QString& address) const = 0;
    virtual void command(const QString& address) = 0;
    /// Passes under way at all gates, and a sweep over them, which ends one of them at most.
    virtual int passes() const = 0;
    virtual void sweep() = 0;
    /// Nothing: it cannot be known, or not yet.
    virtual std::optional<bool> answering(const QString& address) const = 0;
    void keep(TGateKeeping& keeping);

    TClubSite& FSite;
    TLinePlan FPlan;
    TClubPort FPort;
    QMap<QString, TGate> FGates; // by address
};

/// A line of classic controllers.
class TClubLine final : public TClubGates
{
public:
    static constexpr int kPassLooks = 12; ///< of 5 s; the component's own longest time-out is 15 s

    TClubLine(TClubSite& site, const TLinePlan& plan);
    void setGates(const QList<TGatePlan>& gates) override;
    void change(const TLinePlan& plan) override;
    QStringList troubles() override;
    void look() override;

protected:
    bool busy(const QString& address) const override { return FDevice.p_hw_FindDevice(address) >= 0; }
    void command(const QString& address) override;
    int passes() const override { return FDevice.StackItemsCount(); }
    void sweep() override { FDevice.p_hw_CallStackArray(); }
    std::optional<bool> answering(const QString&) const override { return std::nullopt; }

private:
    void endForgotten();

    turnstile::TTurnStylerDevice FDevice;
    TClassicHost FHost;
    std::map<turnstile::PRFidInfo, int> FLooks; // at which a pass was under way; shared, so that a record is
                                                // not taken for one that was in its place
};

/// A bus of networked gates and relay boards.
///
/// A connector hands its lines to one component; here boards of sides "A" and "B" that are no gates of the
/// plan are the relay boards' component's, all others the gates'.
class TClubBus final : public TClubGates
{
public:
    static constexpr int kSilentLooks = 5; ///< of 5 s: boards ping more often

    TClubBus(TClubSite& site, const TLinePlan& plan);
    ~TClubBus() override;
    void change(const TLinePlan& plan) override;
    /// The lamps on its relay boards from now on; those of another bus are left out. @throws EDatabase
    void setLamps(const QList<TLampPlan>& lamps);
    QStringList troubles() override;
    void look() override;

    bool hasLamp(const QString& name) const { return FLampNames.contains(name); }
    /// Orders time on one of its lamps. @return "" or why not @throws EDatabase
    QString sellTime(const QString& lamp, const QString& card, int minutes);
    /// Why one of its lamps cannot be taken away now; "" when it can. @throws EDatabase
    QString lampInUse(const QString& name);
    QJsonArray boardsState() const;
    QJsonArray lampsState();

protected:
    bool busy(const QString& address) const override;
    void command(const QString& address) override;
    int passes() const override { return FDevice.StackItemsCount(); }
    void sweep() override { FDevice.p_hw_CallStackArray(); }
    std::optional<bool> answering(const QString& address) const override;

private:
    /// A board of the plan. Its silence is counted in looks, not in time: a clock that is set, or stands
    /// still with the machine, makes no board silent.
    struct TBoard
    {
        qint64 heardMs = 0; ///< for people; 0: never
        int silentLooks = 0;
        bool heard = false; ///< since the port was opened
    };

    void hear(platform::TComponent* sender, const QString& line);
    void listenAnew();
    void tellOfSilence();
    void attach();

    connector::TDeviceConnector FConnector;
    d24::TTurnStylerDeviceD24 FDevice;
    TD24Host FHost;
    switching::TSwitchDevice FRelays;
    std::optional<answers::TRelayAnswers> FNoLamps; // answers while FLampHost does not: nothing is commanded
    std::unique_ptr<TSwitchHost> FLampHost;         // none while the books of its lamps cannot be read
    QList<TLampPlan> FLamps;
    QStringList FLampNames;
    QString FLampTold;             // by the host of the lamps, while it is asked to sell
    QStringList FSilent;           // boards that do not answer any more: told
    QMap<QString, TBoard> FBoards; // by address
};

} // namespace tnv5::host
