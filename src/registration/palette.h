#pragma once

#include "tnv5/script/script_engine.h"

#include <functional>

namespace tnv5::registration {

/// What lists components for people who draw forms: a form designer, or any tool.
class TPalette
{
public:
    TPalette() = default;
    virtual ~TPalette() = default;
    TPalette(const TPalette&) = delete;
    TPalette& operator=(const TPalette&) = delete;

    /// Puts classes on a page, in their order.
    virtual void RegisterComponents(const QString& page, const script::TScriptClasses& classes) = 0;
};

/// What a host supplies to the palette.
struct TPaletteHost
{
    /// Where `Register` puts the components; without one it does nothing.
    TPalette* palette = nullptr;
    /// The page of device components in the host's words, read at each `Register`; without it "Devices".
    std::function<QString()> pageName;
};

/// Sets what `Register` uses. @return what it used before
TPaletteHost setPaletteHost(TPaletteHost host);

/// Offers the seven components that a form author may use, in one call. The serial bank terminal `TBankPos`
/// is not among them; intended, it is created in code only. At run time nobody calls it.
/// @throws what the host's functions throw
void Register();

/// The seven, in their order.
script::TScriptClasses paletteClasses();

} // namespace tnv5::registration
