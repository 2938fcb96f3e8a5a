#ifndef ORLINDEX_BENCH_BENCHMARKS_H
#define ORLINDEX_BENCH_BENCHMARKS_H

namespace OrlindexBench {

// Each registers its comparisons. `turns` is how many measurements each side of a comparison gets.

void RegisterForwarding(int turns);
void RegisterTokens(int turns);
void RegisterEvents(int turns);
void RegisterThreads(int turns);
/// For a process in which no plugin could be loaded.
void RegisterFallback(int turns);

} // namespace OrlindexBench

#endif
