#pragma once

#include "support/recorder.h"
#include "tnv5/connector/device_connector.h"

#include <deque>
#include <map>

namespace tnv5::tests {

/// The line of a transcript for a command that a component gives to its connector.
QString commanded(const QString& command);

/// A link that records the commands and answers as a test says.
class TTestLink : public connector::TDeviceConnector
{
public:
    explicit TTestLink(TRecorder& trace) : FTrace(trace) {}

    bool Up = true;                      ///< whether the link is connected
    std::deque<bool> UpNext;             ///< what it answers first, before `Up` counts
    int Reads = 0;                       ///< how often that was asked
    std::map<QString, QString> Checks;   ///< what a command returns, by its two letters
    std::map<QString, QString> Failures; ///< what a command raises, by its two letters

    bool GetConnected() override
    {
        ++Reads;
        if (UpNext.empty()) {
            return Up;
        }
        const bool answer = UpNext.front();
        UpNext.pop_front();
        return answer;
    }

    QString SendCommand(const QString& AMess) override;

private:
    TRecorder& FTrace;
};

} // namespace tnv5::tests
