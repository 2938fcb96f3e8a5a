// A call that returns a text.

#include "calls/Benchmarks.h"
#include "calls/Plugin.h"
#include "common/Comparison.h"
#include "floor/Floor.h"
#include "orlindex/talix.h"

namespace OrlindexBench {

using namespace Kestrany;

namespace {

constexpr int callsPerTurn = 100;

/// `units` is the token's length: 60 for an opaque token, 1200 for a token with claims.
void GetToken(benchmark::State& state, std::uint64_t units)
{
    IdentityServices::ISSOClient& client = LoadedClient();
    client.SetHostApplicationWindow(units);
    Floor::SetClient(&client);
    char text[4096];
    talix_buffer buffer = {};
    buffer.buffer = text;
    buffer.size = sizeof text;
    Compare(
        state, callsPerTurn, [&] { benchmark::DoNotOptimize(Floor::GetToken(&buffer)); },
        [&] { benchmark::DoNotOptimize(talix_get_token(&buffer)); });
}

} // namespace

void RegisterTokens(int turns)
{
    for (const int units : {60, 1200})
        benchmark::RegisterBenchmark(("token/" + std::to_string(units)).c_str(), GetToken, units)
            ->Iterations(turns)
            ->UseManualTime();
}

} // namespace OrlindexBench
