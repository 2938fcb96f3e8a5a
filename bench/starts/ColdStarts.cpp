// First starts, with the time of each step.

#include <algorithm>
#include <utility>
#include <vector>

#include "common/Comparison.h"
#include "common/RegisteredServer.h"
#include "starts/Benchmarks.h"
#include "starts/StartPrograms.h"

namespace OrlindexBench {
namespace {

template <class Figure>
double LeastOf(const std::vector<StartFigures>& starts, const Figure& figure)
{
    double least = figure(starts.front());
    for (const StartFigures& start : starts)
        least = std::min(least, figure(start));
    return least;
}

double OwnMedian(const std::vector<StartFigures>& starts)
{
    std::vector<double> own;
    own.reserve(starts.size());
    for (const StartFigures& start : starts)
        own.push_back(start.Own());
    return Median(std::move(own));
}

/// Reports the minimum of each step, because interruptions only add time. Also reports the median of the library's own
/// part, which is the time of a typical start.
void ReportSteps(benchmark::State& state, const std::vector<StartFigures>& starts)
{
    state.counters["trust_ns"] = LeastOf(starts, [](const StartFigures& start) { return start.trust; });
    state.counters["load_ns"] = LeastOf(starts, [](const StartFigures& start) { return start.load; });
    state.counters["registry_ns"] = LeastOf(starts, [](const StartFigures& start) { return start.registry; });
    state.counters["files_ns"] = LeastOf(starts, [](const StartFigures& start) { return start.files; });
    state.counters["account_ns"] = LeastOf(starts, [](const StartFigures& start) { return start.account; });
    state.counters["rest_ns"] = LeastOf(starts, [](const StartFigures& start) { return start.Rest(); });
    state.counters["own_ns"] = LeastOf(starts, [](const StartFigures& start) { return start.Own(); });
    state.counters["own_median_ns"] = OwnMedian(starts);
}

void ColdStart(benchmark::State& state)
{
    const RegisteredServer server;
    StartFloor(); // Loads the files into the system's cache.
    StartLibrary();
    Comparison comparison;
    std::vector<StartFigures> floors;
    std::vector<StartFigures> starts;
    for (auto _ : state)
    {
        floors.push_back(StartFloor());
        starts.push_back(StartLibrary());
        comparison.Add(floors.back().total, starts.back().total);
        state.SetIterationTime(starts.back().total * 1e-9);
    }
    comparison.Report(state);
    ReportSteps(state, starts);
    state.counters["floor_own_ns"] = LeastOf(floors, [](const StartFigures& start) { return start.Own(); });
    state.counters["floor_own_median_ns"] = OwnMedian(floors);
}

} // namespace

void RegisterColdStarts(int turns)
{
    benchmark::RegisterBenchmark("start/cold", ColdStart)->Iterations(turns)->UseManualTime();
}

} // namespace OrlindexBench
