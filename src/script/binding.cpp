#include "tnv5/script/binding.h"

namespace tnv5::script {

void checkCount(const QVariantList& args, std::size_t count)
{
    if (args.size() != qsizetype(count)) {
        throw platform::EConvertError(
            QStringLiteral("%1 arguments instead of %2").arg(args.size()).arg(count));
    }
}

} // namespace tnv5::script
