#pragma once

#include "tnv5/script/script_engine.h"

namespace tnv5::registration {

/// Registers all units of the module with the host's script engine, in their order: connector, switch,
/// turnstile, panel, D24, coffee, scales, bank. Calls are counted: only the first one registers. The engine
/// must live until the last `unload`.
/// @throws what the engine throws; nothing stays registered then, and the call does not count
void load(script::TScriptEngine& engine);

/// Undoes a `load`; the last one removes exactly what was registered, the units in reverse. More calls than
/// `load` had do nothing.
void unload() noexcept;

} // namespace tnv5::registration
