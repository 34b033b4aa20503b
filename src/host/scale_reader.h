#pragma once

#include "tnv5/platform/timer.h"
#include "tnv5/scales/scales_device.h"

#include <functional>

namespace tnv5::host {

/// Reads a scale again and again, whatever its family: asks, listens, asks anew.
///
///     TScaleReader reader(scales);
///     reader.OnSteady = [](int weight) { ... };
///     reader.start();
///
/// The scale must outlive the reader and have no polling period of its own. The hooks may stop the reader,
/// but must not destroy it.
class TScaleReader
{
public:
    static constexpr int kLookMs = 20; ///< how often the last weight is looked at
    static constexpr int kAskMs = 300; ///< from one question to the next; slower than any scale answers
    static constexpr int kSteadyReadings = 3; ///< alike, one after the other: it has come to rest
    static constexpr int kPatienceMs = 4'000; ///< silent that long: it does not answer

    /// Milliseconds, counted in looks: a multiple of `kLookMs`.
    int PatienceMs = kPatienceMs;

    explicit TScaleReader(scales::TScalesDevice& scales);
    TScaleReader(const TScaleReader&) = delete;
    TScaleReader& operator=(const TScaleReader&) = delete;

    /// Asks at once and goes on until `stop`. @throws platform::EComPort when the question cannot be written
    void start();
    void stop();

    /// A weight of 1 or more as soon as it is known, each change of it, and 0 when a question was answered by
    /// no weight: the platform is empty, what is on it moves, or it is out of range.
    std::function<void(int weight)> OnReading;
    /// The same weight came of `kSteadyReadings` questions in a row; told again with every question while it
    /// stays. Scales of some families also tell what still moves: nothing should be charged by one reading.
    std::function<void(int weight)> OnSteady;
    /// The scale has not answered for `PatienceMs`; told once until it answers.
    std::function<void()> OnSilent;

private:
    void look();
    void ask();
    void endQuestion(bool answered);
    void tellReading(int weight);

    scales::TScalesDevice& FScales;
    platform::TTimer FTimer;
    qint64 FBytesBefore = 0; // the question
    int FSinceAskMs = 0;
    int FSilentMs = 0;
    int FReading = 0;   // of this question, 0: none so far
    int FCandidate = 0; // reading of the last questions
    int FAlike = 0;     // how many of them
};

} // namespace tnv5::host
