#include "tnv5/js/script_error.h"

namespace tnv5::js {

QString TScriptFailure::message() const
{
    if (File.isEmpty()) {
        return Text;
    }
    return Line > 0 ? QStringLiteral("%1:%2: %3").arg(File).arg(Line).arg(Text)
                    : QStringLiteral("%1: %2").arg(File, Text);
}

} // namespace tnv5::js
