#include "tnv5/scales/end_search.h"

#include <algorithm>

namespace tnv5::scales {

qsizetype TEndSearch::find(const TFamily& family, TStep step, const QByteArray& buffer)
{
    if (FFamily != &family || FStep != step) { // it looks for something else now
        FFamily = &family;
        FStep = step;
        restart();
    }
    // an end of several bytes may have begun in what was searched
    const qsizetype from = family.endSize > 0 ? std::max<qsizetype>(0, FSearched - family.endSize + 1) : 0;
    const qsizetype position =
        family.findStop(step, QByteArray::fromRawData(buffer.constData() + from, buffer.size() - from));
    FSearched = position > 0 ? 0 : buffer.size();
    return position > 0 ? from + position : position;
}

} // namespace tnv5::scales
