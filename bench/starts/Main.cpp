// Measures first starts, each in its own process: bench_starts [--quick] [options of Google Benchmark]
//
// Runs in a host's folder, as bench_calls does.

#include <cstdio>
#include <exception>

#include "common/Options.h"
#include "common/RegisteredServer.h"
#include "starts/Benchmarks.h"

int main(int argc, char** argv)
{
    using namespace OrlindexBench;
    try
    {
        const bool quick = TakeOption(argc, argv, "--quick");
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv))
            return 2;
        RegisterColdStarts(quick ? 4 : 25);
        RegisterGrowth(quick ? 1 : 7);
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "bench_starts: %s\n", error.what());
        return 1;
    }
}
