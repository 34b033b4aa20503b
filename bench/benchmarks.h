#pragma once

#include <benchmark/benchmark.h>

namespace tnv5::bench {

/// Runs the benchmarks of a program. @return the exit code
inline int runBenchmarks(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace tnv5::bench
