#pragma once

#include "tnv5/common/record_table.h"
#include "tnv5/controller/remote_role.h"
#include "tnv5/platform/clock.h"
#include "tnv5/platform/component.h"

#include <QString>
#include <QStringView>
#include <QVariant>
#include <memory>

/// The room is called switch/, the namespace cannot be.
namespace tnv5::switching {

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

/// What a handler of `OnCheckSQL` is asked about a job. Only the answer 1 means yes.
enum TCheckMode {
    cmSwitchOn = 0,  ///< may the relay be switched on? Else the job is set to "OFF".
    cmSwitchOff = 1, ///< may it be switched off? Else the job is set to "ON".
    cmRunning = 2,   ///< it is on and its time is not over: 1 switches it off, anything else leaves it on
    cmNoAnswer = 3,  ///< the board does not answer: 1 gives the job up
};

/// Status report: what happened ("STACK": a job in the sweep, or a board that pings or does not; "XXXSTACK":
/// the sweep comes to a job; "CHECK OLD": the wanted state was set), the board, the relay, two states, and a
/// text that is always empty.
using TCheckStatusSwitch = std::function<void(
    TComponent* Sender, const QVariant& AName, const QVariant& ADevice, const QVariant& ARelay,
    const QVariant& AStatus1, const QVariant& AStatus2, const QVariant& AStr)>;

/// The host's permission. `AIndex` is the mode (`TCheckMode`), `AResult` is preset to 1.
using TCheckSQL = std::function<void(TComponent* Sender, const QVariant& ADevice, const QVariant& ARelay,
                                     const QVariant& AStatus, const QVariant& AStatusDevice,
                                     const QVariant& AIndex, QVariant& AResult)>;

/// Asks the host for the wanted state of a job that has none; `NewStatus` is preset to "OFF".
using TCheckEvent =
    std::function<void(TComponent* Sender, const QVariant& ADevice, const QVariant& ARelay,
                       const QVariant& AStatus, const QVariant& AStatusDevice, QVariant& NewStatus)>;

/// The job of one relay of a board.
struct TRFidInfo
{
    QString IP;                         ///< link of the board
    QString Device;                     ///< four-character address of the board
    QString Relay;                      ///< one character: "1" to "5" of a pair, "1" to "3" of a board
    QString Status;                     ///< wanted state: "NONE" at first, "ON" or "OFF"
    QString StatusDevice;               ///< state the board is in: "NONE", "ON", "OFF" or "NOTINLINE"
    platform::TDateTime Starttime = 0;  ///< when the job was made
    platform::TDateTime Finishtime = 0; ///< until when the wanted state holds
};

/// Shared, so that a host may keep one.
using PRFidInfo = std::shared_ptr<TRFidInfo>;

/// The jobs, in order of creation. None is ever removed.
class TJobTable : public common::TRecordTable<TRFidInfo, 16'384>
{
public:
    /// Index of the first job of a board and relay, whatever its link; intended. -1 when there is none.
    int find(QStringView device, QStringView relay) const;
    /// Appends a job that starts and ends now. @return the job, none when the table is full
    PRFidInfo add(const QString& ip, const QString& device, const QString& relay);
};

} // namespace tnv5::switching
