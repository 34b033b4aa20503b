// Takes the place of the C library's allocation functions in the whole program, shared libraries included,
// and leaves the work to them.

#include "bench/allocations.h"

#include <QByteArray>
#include <benchmark/benchmark.h>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

constinit thread_local std::uint64_t counted = 0;

} // namespace

extern "C" {

// glibc's own names of what is replaced here
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) noexcept
{
    ++counted;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    ++counted;
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept
{
    ++counted;
    return __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    ++counted;
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept
{
    ++counted;
    void* const found = __libc_memalign(alignment, size);
    if (found == nullptr) {
        return ENOMEM;
    }
    *block = found;
    return 0;
}

} // extern "C"

namespace tnv5::bench {

std::uint64_t allocations()
{
    return counted;
}

bool allocationsAreSeen()
{
    constexpr qsizetype kMore = 64;
    const std::uint64_t before = counted;
    QByteArray bytes(kMore, 'x'); // in Qt: malloc
    benchmark::DoNotOptimize(bytes.data());
    bytes.reserve(2 * kMore); // in Qt: realloc
    benchmark::DoNotOptimize(bytes.data());
    void* const block = ::operator new(kMore);
    benchmark::DoNotOptimize(block);
    ::operator delete(block);
    return counted - before == 3;
}

} // namespace tnv5::bench
