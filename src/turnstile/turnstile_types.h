#pragma once

#include "tnv5/controller/remote_role.h"
#include "tnv5/platform/clock.h"
#include "tnv5/platform/component.h"

#include <QImage>
#include <QString>
#include <QVariant>
#include <memory>

namespace tnv5::turnstile {

using controller::PodClient;
using controller::podNone;
using controller::podServer;
using controller::TConState;
using platform::TComponent;
using platform::TLogEvent;

Q_NAMESPACE

/// Kinds of message; declared for hosts and scripts. The capital P of the third value is intended.
enum TDevEventType : int { podlog, podError, PodState };
Q_ENUM_NS(TDevEventType)

/// What a handler of `OnCheckSQL` is asked about a pass.
enum TCheckMode {
    cmOpen = 0,     ///< a new pass: may it open? 1 opens, 0 refuses, anything else: ask again
    cmTimeout = 1,  ///< the pass timed out: 1 retires it
    cmFinish = 2,   ///< the pass was made: 1 retires it
    cmNoAnswer = 3, ///< the controller did not answer: 1 retires it
};

/// Status report: what happened ("COME": a line came in, "CHECK": a lookup, "STACK": a pass of the table),
/// the controller's address, the card and the state of the pass, twice.
using TCheckStatusDevice =
    std::function<void(TComponent* Sender, const QVariant& AName, const QVariant& Device,
                       const QVariant& Cardnumber, const QVariant& Status1, const QVariant& Status2)>;

/// The host's decision about a pass. `AIndex` is the mode (`TCheckMode`), `AResult` is preset to -1.
using TCheckSQLDevice =
    std::function<void(TComponent* Sender, const QVariant& Device, const QVariant& Cardnumber,
                       const QVariant& Status, QImage& Img, const QVariant& AIndex, QVariant& AResult)>;

/// Asks the host to draw the holder's picture into `Img`, which is empty.
using TGetImg = std::function<void(TComponent* Sender, const QString& Device, QImage& Img)>;

/// One pass under way.
struct TRFidInfo
{
    QString CardNumber; ///< card read, or "-1-1-1-1-1" (by hand) or "-2-2-2-2-2" (exit button)
    QString Device;     ///< three-character address of the controller
    QString Status;     ///< "NEW", "OPEN", "CLOSE", "PROGRESS", "FINISH", "TIMEOUT", "NOANSWER",
                        ///< "CRC-ERROR"
    QString StatusHard; ///< last report of the controller: empty, "RELAY", "CRC-ERROR", "GATEOPEN"
    platform::TDateTime Starttime = 0; ///< time of day at which the pass began, without the date
    QImage Img;                        ///< picture of the holder
    int sys = 0;                       ///< always 0
};

/// Shared, so that a record stays valid for code that holds it while a host handler runs.
using PRFidInfo = std::shared_ptr<TRFidInfo>;

} // namespace tnv5::turnstile
