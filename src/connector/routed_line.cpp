#include "tnv5/connector/routed_line.h"

#include "tnv5/common/text.h"

namespace tnv5::connector {

using common::Copy;
using common::CopyFrom;
using common::Pos;

namespace {

constexpr qsizetype kDeviceLength = 4;
constexpr qsizetype kTrailing = 2;

QStringView afterColon(QStringView line)
{
    return CopyFrom(line, Pos(u":", line) + 1);
}

} // namespace

QStringView ipOf(QStringView line)
{
    return Copy(line, 2, Pos(u":", line) - 2);
}

QStringView deviceOf(QStringView line)
{
    return Copy(afterColon(line), 1, kDeviceLength);
}

QStringView deviceTypeOf(QStringView line)
{
    const QStringView letter = Copy(afterColon(line), kDeviceLength, 1);
    return letter == u"G" || letter == u"I" ? letter : QStringView(u"T");
}

QStringView statusOf(QStringView line)
{
    const QStringView text = afterColon(line);
    return Copy(text, kDeviceLength + 1, text.size() - kDeviceLength - kTrailing);
}

QStringView shortStatusOf(QStringView line)
{
    return Copy(statusOf(line), 1, 2);
}

QStringView cardNumberOf(QStringView line)
{
    return CopyFrom(statusOf(line), 3);
}

} // namespace tnv5::connector
