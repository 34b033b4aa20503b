#pragma once

#include "tnv5/scales/scales_family.h"

namespace tnv5::scales {

/// Looks for the end of the packet under way, at every read anew. Where a family's end may stand anywhere in
/// a packet (`TFamily::endSize`), bytes in which it was not are not looked at again, so that a long packet in
/// many small reads costs no more than in one.
///
///     search.restart();                                 // a packet begins
///     search.find(family, TStep::Ask, "\x01\x02S");     // 0
///     search.find(family, TStep::Ask, "\x01\x02S1\x04") // 5; only "1\x04" was looked at
class TEndSearch
{
public:
    /// Another packet begins, or none is under way.
    void restart() { FSearched = 0; }

    /// What `findStop` of the family says about the whole buffer, which begins with the packet and has only
    /// grown since `restart`.
    qsizetype find(const TFamily& family, TStep step, const QByteArray& buffer);

private:
    const TFamily* FFamily = nullptr;
    TStep FStep = TStep::Hey;
    qsizetype FSearched = 0; // bytes in which this family has not found its end in this step
};

} // namespace tnv5::scales
