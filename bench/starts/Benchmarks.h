#ifndef ORLINDEX_BENCH_STARTS_BENCHMARKS_H
#define ORLINDEX_BENCH_STARTS_BENCHMARKS_H

#include <benchmark/benchmark.h>

namespace OrlindexBench {

/// The library's start against the floor's, and the library's steps.
void RegisterColdStarts(int turns);
/// The library's start with more and more to read, search and enumerate.
void RegisterGrowth(int turns);

} // namespace OrlindexBench

#endif
