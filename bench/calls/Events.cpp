// Delivery of one event to many callbacks.

#include <array>
#include <cstdint>
#include <utility>

#include "calls/Benchmarks.h"
#include "common/Comparison.h"
#include "orlindex/talix.h"

namespace OrlindexBench {
namespace {

constexpr std::size_t mostCallbacks = 1000;

volatile std::int32_t received = 0;

/// A separate function for each number, because the library identifies a callback by its address.
template <std::size_t Number>
void TALIX_CALL Receive(std::int32_t, std::int32_t status, void*)
{
    received = status + static_cast<std::int32_t>(Number);
}

template <std::size_t... Numbers>
constexpr std::array<talix_event_callback, sizeof...(Numbers)> AllCallbacks(std::index_sequence<Numbers...>)
{
    return {Receive<Numbers>...};
}

const std::array<talix_event_callback, mostCallbacks> callbacks =
    AllCallbacks(std::make_index_sequence<mostCallbacks>());

void Dispatch(benchmark::State& state, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        talix_add_event_callback(callbacks[i], nullptr);
    Compare(
        state, static_cast<int>(20000 / (count + 10)),
        [&] {
            for (std::size_t i = 0; i < count; ++i)
                callbacks[i](TALIX_EVENT_TOKEN_REFRESHED, IdSuccess, nullptr);
        },
        [] { benchmark::DoNotOptimize(talix_dispatch_events()); });
    for (std::size_t i = 0; i < count; ++i)
        talix_remove_event_callback(callbacks[i]);
}

} // namespace

void RegisterEvents(int turns)
{
    for (const std::size_t count : {std::size_t{1}, std::size_t{10}, mostCallbacks})
        benchmark::RegisterBenchmark(("events/" + std::to_string(count)).c_str(), Dispatch, count)
            ->Iterations(turns)
            ->UseManualTime();
}

} // namespace OrlindexBench
