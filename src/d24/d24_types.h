#pragma once

#include "tnv5/controller/remote_role.h"
#include "tnv5/platform/clock.h"
#include "tnv5/platform/component.h"

#include <QImage>
#include <QList>
#include <QString>
#include <QVariant>
#include <memory>

namespace tnv5::d24 {

using controller::PodClient;
using controller::podNone;
using controller::podServer;
using controller::TConState;
using platform::TComponent;
using platform::TLogEvent;

Q_NAMESPACE

/// Kinds of message; declared for hosts and scripts. The small p of the third value, unlike that of the other
/// controllers, is intended.
enum TDevEventType : int { podlog, podError, podState };
Q_ENUM_NS(TDevEventType)

/// What a handler of `OnCheckSQL` is asked about a pass.
enum TCheckMode {
    cmOpen = 0,     ///< a new pass: 1 opens, 0 refuses, -1 no answer, anything else: ask again
    cmTimeout = 1,  ///< the pass timed out: 1 retires it
    cmFinish = 2,   ///< the pass was made: 1 retires it, anything else: not answered
    cmNoAnswer = 3, ///< no answer, or a checksum error: anything but 0, or 1, retires it
    cmProgress = 5, ///< a passage has begun; the answer is ignored
};

/// Status report: what happened ("COME": a line came in, "CHECK": a lookup, "STACK": the tables), the address
/// of the link, the controller, its type letter, the card and two states.
using TCheckStatusDevice =
    std::function<void(TComponent* Sender, const QVariant& AName, const QVariant& IP, const QVariant& Device,
                       const QVariant& DeviceType, const QVariant& Cardnumber, const QVariant& Status1,
                       const QVariant& Status2)>;

/// The host's decision about a pass. `AIndex` is the mode (`TCheckMode`), `AResult` is preset to -1. What the
/// handler puts into `Mess` in mode 0 goes to the controller's display: "|line 1|line 2|line 3|line
/// 4|flags|".
using TCheckSQLDevice =
    std::function<void(TComponent* Sender, const QVariant& IP, const QVariant& Device,
                       const QVariant& DeviceType, const QVariant& Cardnumber, const QVariant& Status,
                       QImage& Img, const QVariant& AIndex, QVariant& Mess, QVariant& AResult)>;

/// Asks the host to draw the holder's picture into `Img`, which is empty.
using TGetImg = std::function<void(TComponent* Sender, const QString& Device, QImage& Img)>;

/// One pending pass.
struct TRFidInfo
{
    QString IP;                        ///< address of the link
    QString DeviceType;                ///< "G", "I" or "T"; "D" only when the host sets it
    QString CardNumber;                ///< card read, or "-1-1-1-1-1" (by hand) or "-2-2-2-2-2" (exit button)
    QString Device;                    ///< four-character address of the controller
    QString Status;                    ///< "NEW", "OPEN", "CLOSE", "NOANSWER", "FINISH", "PROGRESSSTART",
                                       ///< "PROGRESS", "TIMEOUT", "CRC-ERROR"
    QString StatusHard;                ///< never written
    platform::TDateTime Starttime = 0; ///< time of day at which the pass began
    QImage Img;                        ///< picture of the holder
    int sys = 0;                       ///< always 0
    QString InfoMess;                  ///< what the host returned for the display
    QString Command;                   ///< last main command sent, to be repeated until it is confirmed
    QString CommandAdd;                ///< not used
    QString CRC;                       ///< what the connector returned for `Command`
    bool Finish = false;               ///< the controller confirmed the command
    platform::TDateTime CRCtime = 0;   ///< time of day of the last command
};

using PRFidInfo = std::shared_ptr<TRFidInfo>;

} // namespace tnv5::d24
