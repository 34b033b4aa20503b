#pragma once

#include <cstdint>

namespace tnv5::bench {

/// Allocations that the calling thread has made so far: its calls of malloc, calloc, realloc, aligned_alloc
/// and posix_memalign, from whatever library. `operator new` and Qt's containers end there, so nothing is
/// counted twice. Frees do not count.
std::uint64_t allocations();

/// Whether allocations inside Qt and by `operator new` are seen; without that no figure is worth anything.
bool allocationsAreSeen();

} // namespace tnv5::bench
