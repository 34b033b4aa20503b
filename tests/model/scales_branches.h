#pragma once

#include <QByteArray>

namespace tnv5::scales::model {

/// An enumeration that keeps the names of its values, in one list.
#define TNV5_NAMED_ENUM(name, list, ...)                                                                     \
    enum class name { __VA_ARGS__, Count };                                                                  \
    inline constexpr const char* list = #__VA_ARGS__;

/// Every way that the model can go. The scenarios must reach them all.
TNV5_NAMED_ENUM(TBranch, kBranches, WeighUnconnected, WeighNoFamily, WeighInTime, WeighLate1, WeighLate2to6,
                WeighNoAnswer, WeighNoAnswerUnheard, WeighContinuous, WeighSafe, WaitAnswered, WaitTimedOut,
                WaitTimedOutContinuous, WaitExtended, PollTick, PollUnconnected, ResetOpened, ResetRefused,
                ResetNoPort, ResetTimerOn, ResetTimerLeftOff, ResetDesign, ConnectNoPort, ConnectOpened,
                ConnectOpenAlready, ConnectFailed, ConnectClosed, ConnectCloseFailed, SendUnconnected,
                SendFailed, Sent, SetUp0, SetUp1, SetUp2, SetUp3, SetUp4, SetUp5to8, SetUpNoPort,
                IntervalSame, IntervalOff, IntervalOn, IntervalDesign, TypeStrings, TypeWithout, WeightSame,
                WeightBelow1, WeightUnheard, WeightBusy, WeightRaised, WeightNotified, LangOther,
                MessageOther, Start1, Start2Hey, Start2Ask, Start3, Start4, Start5, Start6, Start78,
                StartNone, Stop1, Stop2Hey, Stop2Ask, Stop3Wait, Stop3, Stop4Wait, Stop4, Stop5, Stop6Wait,
                Stop6, Stop78, StopNone, PacketNone, MassaLength, MassaNotReady, MassaReady, MassaWriteFailed,
                MassaWeight, MassaSmall, MassaChange, CasHandshake, CasOverload, CasStatus, CasNegative,
                CasBlank, CasSmall, CasChange, Field3, Field4, Field5, Field6, FieldBlank, FieldStored,
                FieldNotNumber, FieldOutOfRange, FieldSigned, AxisLength, AxisBlank, AxisNumber,
                AxisNotNumber, UpaQBlank, UpaQNoDigits, UpaQNumber, UpaQOutOfRange, SplitStartMissing,
                SplitStartString, SplitStartPosition, SplitDropBefore, SplitWait, SplitStopString,
                SplitStopPosition, SplitMixedPositionString, SplitMixedStringPosition, SplitOverlong,
                SplitEmptyPacket, SplitAgainInRead, SplitAttachedInSearch, SplitReadInSearch,
                SplitReadInPacket, SplitRaised, SplitSearchRaised, Gone)

/// How often each branch was reached, by all models.
qint64& reached(TBranch branch);
QByteArray branchName(TBranch branch);
inline void reach(TBranch branch)
{
    ++reached(branch);
}

} // namespace tnv5::scales::model
