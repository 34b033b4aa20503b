#pragma once

#include "tnv5/platform/errors.h"

namespace tnv5::js {

/// What went wrong in a script, and where.
struct TScriptFailure
{
    QString Text;  ///< such as "TypeError: gate.Opn is not a function"
    QString File;  ///< as it was given to `evaluate`; empty: unknown
    int Line = 0;  ///< 0: unknown
    QString Stack; ///< one call a line, the innermost first, as "function@file:line"; may be empty

    /// "club.js:12: TypeError: ..."; only the text when the place is not known.
    QString message() const;
};

/// A script that failed or was interrupted. The message tells file, line and text.
class EScriptError : public platform::Exception
{
public:
    explicit EScriptError(const TScriptFailure& failure) : Exception(failure.message()), FFailure(failure) {}
    const TScriptFailure& failure() const { return FFailure; }

private:
    TScriptFailure FFailure;
};

} // namespace tnv5::js
