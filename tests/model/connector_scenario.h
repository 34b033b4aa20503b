#pragma once

#include <QByteArray>
#include <QString>
#include <string>
#include <vector>

namespace tnv5::connector::model {

constexpr int kConnectors = 2;
constexpr int kPorts = 3;

enum class EStep {
    Feed,         ///< `bytes` arrive at port `who`
    Advance,      ///< `number` milliseconds pass
    SetComport,   ///< connector `who` gets port `which`, none for -1
    SetType,      ///< connector `who` gets link type `which`
    SetHandler,   ///< event `which` of connector `who`: none, or handler `number` of two
    SetConnected, ///< connector `who`, to `flag`; by property with `which`
    GetConnected, ///< connector `who`; by property with `flag`
    CloseAll,     ///< connector `who`
    OpenPort,     ///< port `who`, by its owner
    ClosePort,    ///< port `who`, by its owner
    Fail,         ///< port `who` fails to open, close or write (`which`) from now on; no more without `flag`
    PortError,    ///< port `who` reports error `number` with `text`; inside a call with `flag`
    SendCommand,  ///< connector `who`, `text`
    SendDirect,   ///< connector `who`, to `other`, `text`
    GetCommand,   ///< connector `who`, `text`
    Diagnostic,   ///< connector `who`, key `other` in `text`
    FromList,     ///< connector `who`, board `text` on link `other`
    Process,      ///< connector `who`, line `text` on link `other`
    SetWidth,     ///< connector `who`, display of board `which` gets `number`
    CreateConnector,  ///< with overrides `which`; in the form designer with `flag`
    DestroyConnector, ///< connector `who`
    CreatePort,       ///< port `who`
    DestroyPort,      ///< port `who`
};

/// What a handler raises when it has done its steps.
enum class ERaise { Nothing, Exception, Abort, Standard, Unknown };

/// Overrides of a connector's virtual functions, to be combined.
enum EOverride { ovAsk = 1, ovAlways = 2, ovNever = 4, ovWatch = 8, ovSwallow = 16 };

struct TReaction;

struct TStep
{
    EStep kind = EStep::CloseAll;
    int who = 0;
    int which = 0;
    qint64 number = 0;
    QString text;
    QString other;
    QByteArray bytes;
    bool flag = false;
    bool propagate = false;           ///< inside a handler: what the step raises leaves the handler
    std::vector<TReaction> reactions; ///< of the handlers called during the step, one each, in order
};

struct TReaction
{
    std::vector<TStep> steps;
    ERaise raise = ERaise::Nothing;
};

struct TScenario
{
    qint64 startMs = 0;
    bool cyrillic = true;
    std::vector<TStep> steps;
};

/// The scenario of a seed: always the same one.
TScenario makeScenario(quint64 seed);

/// A step, or a text, for people.
std::string shown(const TStep& step);
std::string shown(const QString& text);
std::string shown(const QByteArray& bytes);

} // namespace tnv5::connector::model
