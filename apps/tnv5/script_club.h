#pragma once

#include "tnv5/host/club_desk.h"
#include "tnv5/host/port_keeper.h"
#include "tnv5/js/js_engine.h"
#include "tnv5/platform/serial_port.h"

#include <map>
#include <optional>

namespace tnv5::cli {

/// A club that is run by a script: the engine, the ports that the script opened, and the books, if there are
/// any.
class TScriptClub
{
public:
    /// @param database the club's; empty: none
    /// @param arguments what follows the script on the command line
    TScriptClub(const QString& database, const QStringList& arguments);
    ~TScriptClub();
    TScriptClub(const TScriptClub&) = delete;
    TScriptClub& operator=(const TScriptClub&) = delete;

    /// Runs the script's statements; its handlers work from then on. @return false when it failed, which has
    /// been told.
    bool start(const QString& file);
    /// Ends the books and the components. @return whether everything is in the books, or else that is told
    bool stop();
    /// Whether the script has said so, perhaps before the event loop runs.
    bool quitting() const { return FQuitting; }

private:
    struct TPort
    {
        platform::TSerialPort port;
        host::TPortKeeper keeper{port};
    };

    struct TAnswer
    {
        int mode;
        int answer;
        qint64 askedMs;
    };

    void registerProcs();
    QObject* openPort(const QString& name, int baudRate);
    int decide(const QString& gate, const QString& card, int mode);
    int askBooks(const QString& gate, const QString& card, int mode);
    void lineLost(const QString& name, const QString& why);
    host::TDatabase& books();

    std::optional<host::TDatabase> FDatabase;
    std::optional<host::TClubDesk> FDesk;
    std::map<std::pair<QString, QString>, TAnswer> FAnswers; // the last ones, by gate and card
    bool FQuitting = false;
    std::vector<std::unique_ptr<TPort>> FPorts;
    std::unique_ptr<js::TJsEngine> FEngine;
};

} // namespace tnv5::cli
