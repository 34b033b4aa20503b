#pragma once

#include "tnv5/host/club_desk.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QPointer>

namespace tnv5::host {

/// Which gates a host answers for, and what it says of the others.
struct TGateKeeping
{
    /// Whether a gate is the host's; none: every gate is. At any other a card is refused and not journalled,
    /// because noise invents addresses. The exit button opens everywhere.
    std::function<bool(const QString& address)> Knows;
    /// One line for the person in charge; none: the desk's.
    std::function<void(const QString& text)> OnTrouble;

    bool knows(const QString& address) const { return !Knows || Knows(address); }
};

/// Runs the gates of a line of classic controllers: hands the component's questions to a desk and answers
/// them.
///
///     TClubDesk desk(club);
///     TTurnStylerDevice line;
///     line.SetComport(&port);
///     TClassicHost host(line, desk);
///     host.addGates({"01A", "02A"});
///
/// It takes the component's `OnCheckSQL`, `OnGetImg` and `OnError`. The desk must outlive the host; the
/// component may go first.
class TClassicHost
{
public:
    /// Interval that the component's passes get, in milliseconds. At its own 100 a card that is read while
    /// another gate is busy would wait up to that long for its turn.
    static constexpr int kPassIntervalMs = 2;

    TClassicHost(turnstile::TTurnStylerDevice& device, TClubDesk& desk);
    /// Closes the host when that has not been done.
    ~TClassicHost();
    TClassicHost(const TClassicHost&) = delete;
    TClassicHost& operator=(const TClassicHost&) = delete;

    /// Tells the component of gates; those that it knows stay.
    void addGates(const QStringList& addresses);

    /// Lets go of the component. What is under way ends when the desk closes.
    void close();

    TGateKeeping Keeping;

private:
    void onCheck(const QString& address, const QString& card, int mode, QVariant& result);
    void onImage(const QString& address, QImage& image);

    QPointer<turnstile::TTurnStylerDevice> FDevice;
    TClubDesk& FDesk;
};

/// A new pass, decided about by the desk, or refused because the gate is not the host's.
TPass decideFor(const TGateKeeping& keeping, TClubDesk& desk, const QString& address, const QString& card);
/// The end of a pass, for the desk when it has anything to do with it.
void endFor(const TGateKeeping& keeping, TClubDesk& desk, const QString& address, const QString& card,
            TEnding ending);
/// Tells the person in charge.
void troubleFor(const TGateKeeping& keeping, TClubDesk& desk, const QString& text);

} // namespace tnv5::host
