#pragma once

#include "model/kit/step.h"

namespace tnv5::switching::model {

using namespace modelkit;

TNV5_STEPS(Destroy, Assign,    // handler `b` of event `a`, 0 none
           Number,             // property `a` gets `b`
           ServerName, Format, // the host's own date-times, or the usual ones
           Connect,            // link `a`; -1 none
           EditJob,            // job `a`, field `b`, text or moment `c`
           EditBoard,          // board `a`, field `b`, text or moment `c`
           LinkLine,           // link `a` hands on a line
           LinkUp,             // link `a`, up `b`
           Steal,              // another consumer takes link `a`
           NewLink,            // link `a` is destroyed, another one takes its place
           Line, ConnectorData, Parse, Find, CheckStatus, Sweep, Ask, Relay, StatusAll, Send, Compare,
           Between, Show, ToMonitor, Ping, PingFind, PingTime, NoEffect, AskConnected,
           Fill) // the tables, nearly

enum EEvent { evLog, evError, evStatus, evQuestion, evNewItem, kEvents };
constexpr const char* kNumbers[] = {"pingdelay", "TimeDelayOpen", "TimeOut", "Port", "RemoutDevice"};
enum EJobField { jfStatus, jfStatusDevice, jfDevice, jfRelay, jfIp, jfStart, jfFinish, kJobFields };

/// What boards and hosts say, right and nearly right.
struct TWords
{
    TDice& dice;
    qint64 now;        ///< ms
    QStringList job{}; ///< board and relay of a job to speak of; none: any

    /// A step near what matters; `inside`: one that a handler may do.
    TStep any(bool inside, bool mayDestroy);
    /// A step that hurts most while a command is being sent.
    TStep disturbing(bool mayDestroy);
    /// What a host answers when it is asked for permission, and for a wanted state.
    QVariant answer(int mode);
    QVariant wish();
    QString line();

private:
    QString ip();
    QString device();
    QString relay();
    QString state();
    QString time();
    QString written(qint64 ms);
    QString ownReport();
    QString connectorLine();
    QString spoilt(QString line);
    QByteArray wire();
    qint64 moment();
    TStep pass(bool inside);
    TStep lineSomehow();
    TStep property();
    TStep linkStep(bool inside);
    TStep editJob();
    TStep call();
    TStep oddment();
};

} // namespace tnv5::switching::model
