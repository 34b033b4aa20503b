#pragma once

#include "support/recorder.h"

#include <map>

namespace tnv5::tests {

/// The host's answers to a controller's questions (`OnCheckSQL`); each question is a line
/// "check VALUES mode MODE preset RESULT".
class TAnswers
{
public:
    /// By mode; a missing mode leaves the result as it was preset.
    std::map<int, QVariant> ByMode;
    /// For a question that takes a message too; an invalid value leaves it empty.
    QVariant Message;

    /// A handler for `OnCheckSQL` of any controller: the values of the question, the mode last among those
    /// that the host only reads; then what it may write, the result last.
    auto handler(TRecorder& trace, const TComponent& sender)
    {
        return [this, &trace, expected = &sender](TComponent* Sender, auto&&... values) {
            EXPECT_EQ(Sender, expected);
            TQuestion question;
            (question.take(values), ...);
            answer(trace, question);
        };
    }

private:
    struct TQuestion
    {
        void take(const QVariant& value) { asked << value; }
        void take(QVariant& value) { answered << &value; }
        void take(const QImage&) {}

        QVariantList asked;
        QList<QVariant*> answered;
    };

    void answer(TRecorder& trace, const TQuestion& question) const;
};

} // namespace tnv5::tests
