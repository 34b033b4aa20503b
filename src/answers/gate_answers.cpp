#include "tnv5/answers/gate_answers.h"

#include "tnv5/common/messages.h"
#include "tnv5/platform/errors.h"

#include <QHash>
#include <optional>

namespace tnv5::answers {

namespace {

using platform::TComponent;

// The modes of both components mean the same here.
static_assert(int(turnstile::cmOpen) == int(d24::cmOpen));
static_assert(int(turnstile::cmTimeout) == int(d24::cmTimeout));
static_assert(int(turnstile::cmFinish) == int(d24::cmFinish));
static_assert(int(turnstile::cmNoAnswer) == int(d24::cmNoAnswer));

std::optional<TPassEnd> endOf(int mode)
{
    switch (mode) {
    case d24::cmTimeout:
        return TPassEnd::NotUsed;
    case d24::cmFinish:
        return TPassEnd::Passed;
    case d24::cmNoAnswer:
        return TPassEnd::NotAnswered;
    default:
        return std::nullopt;
    }
}

} // namespace

struct TGateAnswers::THandlers
{
    TCardHandler all;
    QHash<QString, TCardHandler> ofGate;
    TEndHandler end;

    /// One question of a component.
    /// @return what the card gets when it was about a card that is to be let in or not
    std::optional<TAnswer> answer(const TCardQuestion& question, int mode) const;

private:
    TAnswer decide(const TCardQuestion& question) const;
};

std::optional<TAnswer> TGateAnswers::THandlers::answer(const TCardQuestion& question, int mode) const
{
    if (mode == d24::cmOpen) {
        return decide(question);
    }
    const std::optional<TPassEnd> ended = endOf(mode);
    if (const TEndHandler told = end; told && ended) {
        platform::guarded([&] { told(question, *ended); });
    }
    return std::nullopt;
}

TAnswer TGateAnswers::THandlers::decide(const TCardQuestion& question) const
{
    if (common::IsPseudoCard(question.card)) {
        return TAnswer::open();
    }
    const TCardHandler handler = ofGate.value(question.gate, all); // a copy: it may replace itself
    TAnswer answer = TAnswer::refuse();
    if (handler) {
        platform::guarded([&] { answer = handler(question); });
    }
    return answer;
}

TGateAnswers::TGateAnswers(turnstile::TTurnStylerDevice& device)
    : FClassic(&device), FHandlers(std::make_shared<THandlers>())
{
    device.SetOnCheckSQL([handlers = FHandlers](TComponent*, const QVariant& gate, const QVariant& card,
                                                const QVariant&, QImage&, const QVariant& mode,
                                                QVariant& result) {
        const auto answer = handlers->answer({gate.toString(), card.toString(), {}}, mode.toInt());
        result = int(!answer || answer->opens());
    });
}

TGateAnswers::TGateAnswers(d24::TTurnStylerDeviceD24& device)
    : FNetworked(&device), FHandlers(std::make_shared<THandlers>())
{
    device.SetOnCheckSQL([handlers = FHandlers](TComponent*, const QVariant& link, const QVariant& gate,
                                                const QVariant&, const QVariant& card, const QVariant&,
                                                QImage&, const QVariant& mode, QVariant& mess,
                                                QVariant& result) {
        const auto answer =
            handlers->answer({gate.toString(), card.toString(), link.toString()}, mode.toInt());
        if (answer) {
            mess = answer->display().text();
        }
        result = int(!answer || answer->opens());
    });
}

TGateAnswers::~TGateAnswers()
{
    if (FClassic) {
        FClassic->SetOnCheckSQL({});
    }
    if (FNetworked) {
        FNetworked->SetOnCheckSQL({});
    }
}

void TGateAnswers::onCard(TCardHandler handler)
{
    FHandlers->all = std::move(handler);
}

void TGateAnswers::onCard(const QString& gate, TCardHandler handler)
{
    FHandlers->ofGate[gate] = std::move(handler);
}

void TGateAnswers::onEnd(TEndHandler handler)
{
    FHandlers->end = std::move(handler);
}

} // namespace tnv5::answers
