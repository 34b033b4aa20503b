#pragma once

#include <cstdio>
#include <exception>

namespace tnv5::bench {

/// The body of a measuring program's main(): what it raises becomes one line. @return the exit code
template <class Run>
int runProgram(const char* name, const Run& run)
{
    try {
        return run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", name, error.what());
        return 1;
    }
}

} // namespace tnv5::bench
