#ifndef ORLINDEX_BENCH_COMPARISON_H
#define ORLINDEX_BENCH_COMPARISON_H

#include <algorithm>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "common/Stopwatch.h"

namespace OrlindexBench {

inline double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Times of the floor and of the library, measured alternately. Other load on the machine affects both sides alike, and
/// the median ignores the few measurements that were interrupted.
class Comparison
{
public:
    void Add(double floor, double library)
    {
        floor_.push_back(floor);
        library_.push_back(library);
        ratio_.push_back(library / floor);
    }

    /// `calls` is the number of calls that each time covers.
    void Report(benchmark::State& state, double calls = 1) const
    {
        state.counters["floor_ns"] = Median(floor_) / calls;
        state.counters["library_ns"] = Median(library_) / calls;
        state.counters["ratio"] = Median(ratio_);
    }

private:
    std::vector<double> floor_;
    std::vector<double> library_;
    std::vector<double> ratio_;
};

/// Measures each side once per turn, with functions that return the nanoseconds for `calls` calls. The sides alternate
/// in going first.
template <class FloorTime, class LibraryTime>
void CompareTimes(benchmark::State& state, double calls, const FloorTime& floor, const LibraryTime& library)
{
    floor(); // Fills the caches of both.
    library();
    Comparison comparison;
    bool floorFirst = true;
    for (auto _ : state)
    {
        const double first = floorFirst ? floor() : library();
        const double second = floorFirst ? library() : floor();
        const auto [floorTime, libraryTime] = floorFirst ? std::pair(first, second) : std::pair(second, first);
        comparison.Add(floorTime, libraryTime);
        state.SetIterationTime(libraryTime * 1e-9);
        floorFirst = !floorFirst;
    }
    comparison.Report(state, calls);
}

template <class Call>
double TimeOf(int calls, const Call& call)
{
    const Stopwatch watch;
    for (int i = 0; i < calls; ++i)
        call();
    return watch.Nanoseconds();
}

/// Compares two calls, each made `calls` times per turn.
template <class FloorCall, class LibraryCall>
void Compare(benchmark::State& state, int calls, const FloorCall& floor, const LibraryCall& library)
{
    CompareTimes(state, calls, [&] { return TimeOf(calls, floor); }, [&] { return TimeOf(calls, library); });
}

} // namespace OrlindexBench

#endif
