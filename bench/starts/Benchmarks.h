#ifndef ORLINDEX_BENCH_STARTS_BENCHMARKS_H
#define ORLINDEX_BENCH_STARTS_BENCHMARKS_H

#include <benchmark/benchmark.h>

namespace OrlindexBench {

/// Compares the library's start with the floor's, and reports the library's steps.
void RegisterColdStarts(int turns);
/// The library's start with increasing numbers of entries, registry keys and directories.
void RegisterGrowth(int turns);

} // namespace OrlindexBench

#endif
