#pragma once

#include "model/kit/step.h"

namespace tnv5::d24::model {

using namespace modelkit;

TNV5_STEPS(Destroy, Assign, // handler `b` of event `a`, 0 none
           Number,          // property `a` gets `b`
           ServerName,
           Connect,            // link `a`; -1 none
           Interval, EditPass, // pass `a`, field `b`, text or moment `c`
           LinkLine,           // link `a` hands on a line
           LinkUp,             // link `a`, up `b`
           LinkType,           // of the link with a port: `a`
           Steal,              // another consumer takes link `a`
           NewLink,            // link `a` is destroyed, another one takes its place
           Line, ConnectorData, Parse, CheckStatus, FindDevice, FindIp, FindByCard, Ping, PingFind,
           UpdatePing, SilenceCheck, Sweep, Ask, Send, TimedOut, StatusAll, Relay, Manual, Show, AskConnected)

enum EEvent { evLog, evError, evStatus, evQuestion, evPicture, kEvents };
constexpr const char* kNumbers[] = {"CheckCross", "CheckET", "pingdelay", "TimeOut", "RemoutDevice", "Port"};

/// A step near what matters; `inside`: one that a handler may do.
TStep anyStep(TDice& dice, bool inside, bool mayDestroy);
/// What a controller says by its connector.
QString aLine(TDice& dice);
/// A step that hurts most while a command is being sent.
TStep disturbing(TDice& dice, bool mayDestroy);
/// What a host answers about a pass, beside numbers.
QVariant oddAnswer(TDice& dice);
QVariant displayText(TDice& dice);

} // namespace tnv5::d24::model
