#include "support/answers.h"

namespace tnv5::tests {

void TAnswers::answer(TRecorder& trace, const TQuestion& question) const
{
    QStringList values;
    for (const QVariant& value : question.asked) {
        values << value.toString();
    }
    const int mode = values.takeLast().toInt();
    QVariant& result = *question.answered.last();
    EXPECT_EQ(question.asked.last().typeId(), int(QMetaType::Int));
    EXPECT_EQ(result.typeId(), int(QMetaType::Int));
    const QString line = QStringLiteral("check %1 mode %2 preset %3")
                             .arg(values.join(trace.Separator))
                             .arg(mode)
                             .arg(result.toInt());
    if (const auto answer = ByMode.find(mode); answer != ByMode.end()) {
        result = answer->second;
    }
    if (question.answered.size() > 1) {
        QVariant& message = *question.answered.first();
        EXPECT_EQ(message.toString(), QString());
        message = Message.isValid() ? Message : message;
    }
    trace.add(line);
}

} // namespace tnv5::tests
