#pragma once

#include "tnv5/answers/relay_caution.h"
#include "tnv5/platform/timer.h"
#include "tnv5/switch/switch_device.h"

#include <QPointer>
#include <functional>
#include <map>
#include <memory>

namespace tnv5::answers {

/// A relay whose state is asked for.
struct TRelayQuestion
{
    QString board; ///< four characters
    QString relay; ///< of the pair of boards, "1" to "5"
};

/// Answers the questions of a switch component for the host, who says what each relay is to be and nothing
/// else.
///
///     TSwitchDevice relays;
///     relays.SetConnector(&connector);
///     TRelayAnswers answers(relays);
///     answers.onRelay("000A", "1", [&](const TRelayQuestion&) { return club.lampIsPaid("Sun 1"); });
///
/// The handlers are asked four times a second and whenever the component asks; what they say is what the
/// relays become, as soon as it is sure what state they are in (`TRelayCaution`). So a lamp goes off when its
/// time is over, on again when somebody switched it off or its board lost power, and is put right after a
/// restart. A handler that raises leaves its relay as it is wanted; the exception goes to the host's
/// exception handler. Relays without a handler are never commanded. (Time that is sold and charged:
/// `host::TSwitchHost`.)
///
/// It takes the component's `OnCheckSQL` and `OnNewItem`. A board that has never answered is given up, which
/// `OnError` tells, and tried again. Handlers may pump messages, replace handlers, and destroy the component
/// or this object.
class TRelayAnswers
{
public:
    /// @return true: the relay is to be on
    using TRelayHandler = std::function<bool(const TRelayQuestion& question)>;

    explicit TRelayAnswers(switching::TSwitchDevice& device);
    /// The component, if it is still there, asks nobody any more; its relays stay as they are.
    ~TRelayAnswers();
    TRelayAnswers(const TRelayAnswers&) = delete;
    TRelayAnswers& operator=(const TRelayAnswers&) = delete;

    /// Says what a relay is to be, from now on. @param link of the board; that of the serial line as a rule
    void onRelay(const QString& board, const QString& relay, TRelayHandler handler,
                 const QString& link = QStringLiteral("0.0.0.0"));

    /// Asks the handlers now, and not up to a quarter of a second later.
    void look();

private:
    struct TRelay;
    using PRelay = std::shared_ptr<TRelay>;

    static bool wantsOn(const PRelay& relay);
    int onCheck(const QString& board, const QString& relay, const QString& status, int mode);
    QString onNewItem(const QString& board, const QString& relay, const QString& statusDevice);
    bool direct(const PRelay& relay);
    void findJobs();
    PRelay relayOf(const QString& board, const QString& relay) const;

    QPointer<switching::TSwitchDevice> FDevice;
    platform::TTimer FTimer;
    std::map<QString, PRelay> FRelays; // by board and relay
    int FKnownJobs = 0;                // of the component
    bool FLooking = false;
    std::shared_ptr<bool> FAlive = std::make_shared<bool>(true); // a handler may destroy this object
};

} // namespace tnv5::answers
