#pragma once

#include "tnv5/d24/d24_types.h"
#include "tnv5/script/script_engine.h"

namespace tnv5::script {

/// A variant with a wrapper (`PRecordWrapper`) of a copy of the record, for scripts.
QVariant ConvertTRFidInfoToVariant(const d24::TRFidInfo& Rec);

/// Copies the record of a wrapper; a variant without such a wrapper changes nothing.
void ConvertVariantToTRFidInfo(const QVariant& V, d24::TRFidInfo& Rec);

/// The registration of "TRFidInfo".
TScriptRecord d24Record();

} // namespace tnv5::script
