#include "tnv5/scales/scales_family.h"

#include "tnv5/common/text.h"

namespace tnv5::scales {

QString digitsOf(const QString& text)
{
    QString digits;
    for (const QChar character : text) {
        if (character >= u'0' && character <= u'9') {
            digits += character;
        }
    }
    return digits;
}

std::optional<QString> fieldUnlessBlank(const QString& field)
{
    return common::Trim(field).isEmpty() ? std::nullopt : std::make_optional(field);
}

qsizetype byStrings(TStep /*step*/, const QByteArray& /*buffer*/)
{
    return -1;
}

qsizetype fromFirstByte(TStep /*step*/, const QByteArray& /*buffer*/)
{
    return 1;
}

} // namespace tnv5::scales
