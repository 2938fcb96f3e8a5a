#ifndef ORLINDEX_BENCH_BENCHMARKS_H
#define ORLINDEX_BENCH_BENCHMARKS_H

namespace OrlindexBench {

// Each function registers its comparisons. `turns` is the number of measurements for each side of a comparison.

void RegisterForwarding(int turns);
void RegisterTokens(int turns);
void RegisterEvents(int turns);
void RegisterThreads(int turns);
/// For a process without a plugin.
void RegisterFallback(int turns);

} // namespace OrlindexBench

#endif
