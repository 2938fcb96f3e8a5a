// Calls that forward, and what they cost where there is nothing to forward to.

#include "calls/Benchmarks.h"
#include "calls/Plugin.h"
#include "common/Comparison.h"
#include "floor/Floor.h"
#include "orlindex/IdServicesMgr.h"
#include "orlindex/SSOClientPrivate.h"
#include "orlindex/talix.h"

namespace OrlindexBench {

using namespace Kestrany;
using IdentityServices::IdServicesMgr;
using IdentityServices::SSOClientPrivate;

namespace {

constexpr int callsATurn = 2000;

void ClassMember(benchmark::State& state)
{
    const IdServicesMgr& manager = *IdServicesMgr::GetInstance();
    Floor::SetClient(&LoadedClient());
    Compare(
        state, callsATurn, [] { benchmark::DoNotOptimize(Floor::IsLoggedIn()); },
        [&] { benchmark::DoNotOptimize(manager.IsLoggedIn()); });
}

void FlatFunction(benchmark::State& state)
{
    Floor::SetClient(&LoadedClient());
    Compare(
        state, callsATurn, [] { benchmark::DoNotOptimize(Floor::RefreshToken()); },
        [] { benchmark::DoNotOptimize(talix_refresh_token()); });
}

/// What keeping exceptions in costs, besides: the floor of a member lets them out.
void FlatFunctionOverMember(benchmark::State& state)
{
    Floor::SetClient(&LoadedClient());
    Compare(
        state, callsATurn, [] { benchmark::DoNotOptimize(Floor::IsLoggedIn()); },
        [] { benchmark::DoNotOptimize(talix_refresh_token()); });
}

void Fallback(benchmark::State& state)
{
    Floor::SetClient(nullptr);
    Compare(
        state, callsATurn, [] { benchmark::DoNotOptimize(Floor::IsLoggedIn()); },
        [] { benchmark::DoNotOptimize(SSOClientPrivate::LoadLoginFromCache(false)); });
}

} // namespace

void RegisterForwarding(int turns)
{
    benchmark::RegisterBenchmark("forward/class_member", ClassMember)->Iterations(turns)->UseManualTime();
    benchmark::RegisterBenchmark("forward/flat_function", FlatFunction)->Iterations(turns)->UseManualTime();
    benchmark::RegisterBenchmark("forward/flat_function_over_member", FlatFunctionOverMember)
        ->Iterations(turns)
        ->UseManualTime();
}

void RegisterFallback(int turns)
{
    benchmark::RegisterBenchmark("forward/fallback", Fallback)->Iterations(turns)->UseManualTime();
}

} // namespace OrlindexBench
