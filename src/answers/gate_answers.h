#pragma once

#include "tnv5/d24/d24_device.h"
#include "tnv5/d24/display_text.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QPointer>
#include <functional>
#include <memory>

/// Typed answers to the components' questions, beside their published events.
namespace tnv5::answers {

/// A card that was read at a gate.
struct TCardQuestion
{
    QString gate; ///< address of the controller: three characters on a classic line, four on a board bus
    QString card; ///< as it was read
    QString link; ///< of a networked gate; empty on a classic line
};

/// What becomes of a card.
class TAnswer
{
public:
    /// Let in. @param display what a networked gate shows; a classic one has no display
    static TAnswer open(const d24::TDisplayText& display = {}) { return TAnswer(true, display); }
    /// Not let in.
    static TAnswer refuse(const d24::TDisplayText& display = {}) { return TAnswer(false, display); }

    bool opens() const { return FOpens; }
    const d24::TDisplayText& display() const { return FDisplay; }

private:
    TAnswer(bool opens, const d24::TDisplayText& display) : FOpens(opens), FDisplay(display) {}

    bool FOpens;
    d24::TDisplayText FDisplay;
};

/// How a pass ended that was opened.
enum class TPassEnd {
    Passed,     ///< somebody went through
    NotUsed,    ///< nobody did, in time
    NotAnswered ///< the controller did not answer the command, so perhaps it never opened
};

/// Answers the questions of a gate component for the host, who decides about cards and nothing else.
///
///     TTurnStylerDevice gate;
///     TGateAnswers answers(gate);
///     answers.onCard([&](const TCardQuestion& question) {
///         return club.mayEnter(question.card) ? TAnswer::open() : TAnswer::refuse();
///     });
///
/// | Question | Answered |
/// |---|---|
/// | a card, and there is a handler for its gate or for all | by the handler |
/// | a card, and there is none | refused |
/// | a card whose handler raises | refused; the exception goes to the host's exception handler |
/// | the exit button, or an opening by hand | opened, without a question |
/// | everything else | so that the gate is ready for the next card |
///
/// It takes the component's `OnCheckSQL` and nothing else. Handlers may pump messages, replace handlers, and
/// destroy the component or this object.
class TGateAnswers
{
public:
    using TCardHandler = std::function<TAnswer(const TCardQuestion& question)>;
    using TEndHandler = std::function<void(const TCardQuestion& pass, TPassEnd end)>;

    explicit TGateAnswers(turnstile::TTurnStylerDevice& device);
    explicit TGateAnswers(d24::TTurnStylerDeviceD24& device);
    /// The component, if it is still there, asks nobody any more.
    ~TGateAnswers();
    TGateAnswers(const TGateAnswers&) = delete;
    TGateAnswers& operator=(const TGateAnswers&) = delete;

    /// Decides about the cards of all gates that have no handler of their own.
    void onCard(TCardHandler handler);
    /// Decides about the cards of one gate. @param gate its address, compared exactly
    void onCard(const QString& gate, TCardHandler handler);

    /// Told about every pass that was opened, also those without a card: their `card` is
    /// `common::kCardButton` or `common::kCardManual`.
    void onEnd(TEndHandler handler);

private:
    struct THandlers;

    QPointer<turnstile::TTurnStylerDevice> FClassic;
    QPointer<d24::TTurnStylerDeviceD24> FNetworked;
    std::shared_ptr<THandlers> FHandlers; // outlives this object while one of them runs
};

} // namespace tnv5::answers
