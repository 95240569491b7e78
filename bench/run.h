// run.h: the end of the main function of a benchmark program.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_BENCH_RUN_H
#define NUV_BENCH_RUN_H

#include <benchmark/benchmark.h>
#include <cstdlib>

namespace bench {

// Runs the registered benchmarks that the arguments select. Returns the exit code.
inline int RunRegistered(int a_iArguments, char** a_vszArguments)
{
    benchmark::Initialize(&a_iArguments, a_vszArguments);
    if (benchmark::ReportUnrecognizedArguments(a_iArguments, a_vszArguments) ||
        benchmark::RunSpecifiedBenchmarks() == 0)
    {
        return EXIT_FAILURE;
    }
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}

} // namespace bench

#endif // NUV_BENCH_RUN_H
