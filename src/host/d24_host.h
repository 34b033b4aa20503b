#pragma once

#include "tnv5/d24/d24_device.h"
#include "tnv5/host/classic_host.h"

namespace tnv5::host {

/// What the display of a controller shows about a pass, "|line 1|line 2|line 3|line 4|flags|": the member's
/// name (or the card, when it is nobody's) and the balance or the reason of the refusal. Empty for the exit
/// button and an opening by hand. Bars and control characters of a name become blanks.
/// Example: "|Anna Berg|Balance 12.50||||".
QString displayText(const TPass& pass);

/// Runs the gates of a D24 component: hands its questions to a desk and answers them, with the text for the
/// display of the controller.
///
///     TClubDesk desk(club);
///     TTurnStylerDeviceD24 gates;
///     gates.SetConnector(&connector);
///     TD24Host host(gates, desk);
///
/// A gate of type "G" tells nothing about a passage, and the component ends its passes as not answered: who
/// may enter there has passed, unless the component waits for confirmations (`CheckET`) and got none.
///
/// It takes the component's `OnCheckSQL`, `OnGetImg` and `OnError`. A gate of the database is one controller,
/// its address the four characters of the controller. The desk must outlive the host; the component may go
/// first.
class TD24Host
{
public:
    TD24Host(d24::TTurnStylerDeviceD24& device, TClubDesk& desk);
    /// Closes the host when that has not been done.
    ~TD24Host();
    TD24Host(const TD24Host&) = delete;
    TD24Host& operator=(const TD24Host&) = delete;

    /// Lets go of the component. What is under way ends when the desk closes.
    void close();

    TGateKeeping Keeping;

private:
    void onCheck(const QString& address, const QString& card, int mode, QVariant& mess, QVariant& result);
    bool passesUntold(const QString& address, const QString& type) const;
    void onImage(const QString& address, QImage& image);

    QPointer<d24::TTurnStylerDeviceD24> FDevice;
    TClubDesk& FDesk;
};

} // namespace tnv5::host
