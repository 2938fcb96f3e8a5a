// Measures calls of the installed library: bench_calls [--quick] [--without-plugin] [options of Google Benchmark]
//
// Runs in a host's folder, beside Orlindex.dll, with a server application in a sibling folder; scripts/bench.sh creates
// these folders.

#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "calls/Benchmarks.h"
#include "common/Options.h"
#include "common/RegisteredServer.h"
#include "orlindex/talix.h"

namespace {

using namespace OrlindexBench;

void Register(bool withPlugin, bool quick)
{
    const int turns = quick ? 300 : 2000;
    if (!withPlugin)
        return RegisterFallback(turns);
    RegisterForwarding(turns);
    RegisterTokens(turns);
    RegisterEvents(turns);
    RegisterThreads(quick ? 60 : 400);
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        const bool quick = TakeOption(argc, argv, "--quick");
        const bool withPlugin = !TakeOption(argc, argv, "--without-plugin");
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv))
            return 2;
        const RegisteredServer server;
        if ((talix_init() == IdSuccess) != withPlugin)
            throw std::runtime_error(withPlugin ? "the library did not start" : "the library found a plugin module");
        Register(withPlugin, quick);
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "bench_calls: %s\n", error.what());
        return 1;
    }
}
