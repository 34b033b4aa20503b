#pragma once

// The library asserts what any file can break, such as "[`]", and without assertions lets the compiler rely
// on it. Here it is always checked, and a file that breaks it raises.

namespace tnv5::host {

/// A file is no TOML, and the library cannot say where.
struct ENoToml
{
};

[[noreturn]] inline void failAsNoToml()
{
    throw ENoToml();
}

} // namespace tnv5::host

#pragma push_macro("NDEBUG")
#undef NDEBUG
#define TOML_ASSERT(expr) ((expr) ? void() : ::tnv5::host::failAsNoToml())
#include <toml++/toml.h>
#pragma pop_macro("NDEBUG")
