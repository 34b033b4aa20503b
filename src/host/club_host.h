#pragma once

#include "tnv5/host/classic_host.h"

namespace tnv5::host {

/// Runs the gates of a line of classic controllers: answers the component's questions from the database and
/// keeps the journal, both through a desk of its own.
///
///     TDatabase club("club.sqlite");
///     TTurnStylerDevice line;
///     line.SetComport(&port);
///     TClubHost host(line, club);
///     host.OnPass = [](const TPass& pass) { print(logLine(pass)); };
///
/// It takes the component's `OnCheckSQL`, `OnGetImg` and `OnError`, and tells it the gates of the database.
/// The database must outlive the host; the component may go first.
class TClubHost
{
public:
    TClubHost(turnstile::TTurnStylerDevice& device, TDatabase& database);
    /// Closes the host when that has not been done.
    ~TClubHost();
    TClubHost(const TClubHost&) = delete;
    TClubHost& operator=(const TClubHost&) = delete;

    /// Lets go of the component and closes the desk.
    void close();

    /// The desk, for the gates of other components of the same club; it lives as long as the host.
    TClubDesk& desk() { return FDesk; }

    /// What the desk tells, about all gates that use it.
    std::function<void(const TPass& pass)> OnPass;
    std::function<void(const QString& text)> OnTrouble;

private:
    TClubDesk FDesk;
    TClassicHost FLine;
};

} // namespace tnv5::host
