// Starts with increasing numbers of entries, registry keys and directories.

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "common/RegisteredServer.h"
#include "starts/Benchmarks.h"
#include "starts/StartPrograms.h"
#include "support/Text.h"

namespace OrlindexBench {
namespace {

/// Replaces a file's contents for the lifetime of the object.
class ChangedFile
{
public:
    ChangedFile(std::filesystem::path file, const std::string& contents)
        : file_(std::move(file)), before_(OrlindexTest::ReadFile(file_))
    {
        OrlindexTest::WriteFile(file_, contents);
    }
    ChangedFile(const ChangedFile&) = delete;
    ChangedFile& operator=(const ChangedFile&) = delete;
    ~ChangedFile() { OrlindexTest::WriteFile(file_, before_); }

private:
    std::filesystem::path file_;
    std::string before_;
};

/// Measures the library's own part of a start, because the time to verify and load the module does not grow; the
/// minimum, as for every step.
void MeasureStarts(benchmark::State& state)
{
    double own = std::numeric_limits<double>::max();
    for (auto _ : state)
    {
        const StartFigures figures = StartLibrary();
        own = std::min(own, figures.Own());
        state.SetIterationTime(figures.total * 1e-9);
    }
    state.counters["own_ns"] = own;
}

std::string Entry(const std::string& modulePath)
{
    return R"({"module": "PellwickClient.dll", "modulePath": ")" + modulePath +
           R"(", "version": "1.11.13.3", "compatibleSsoServicesVersion": {"minVersion": "1.10", "maxVersion": "1.11"}})";
}

std::string CompatibilityJson(int count, const std::string& element)
{
    std::string json = R"({"ssoClientPlugin": [)" + Entry("%SSOServerAppPath%/PellwickClient.dll");
    for (int i = 1; i < count; ++i)
        json += ",\n" + element;
    return json + "]}";
}

void CompatibilityFile(benchmark::State& state, int count, const std::string& element)
{
    const ChangedFile file(OwnFolder().parent_path() / "server" / "TALIXVersionCompatibility.config",
                           CompatibilityJson(count, element));
    const RegisteredServer server;
    MeasureStarts(state);
}

/// All entries serve this version; the first one is chosen.
void Entries(benchmark::State& state, int count)
{
    CompatibilityFile(state, count, Entry("C:/elsewhere/PellwickClient.dll"));
}

/// All entries but the first are ignored, each with a message.
void DefectiveEntries(benchmark::State& state, int count)
{
    CompatibilityFile(state, count, R"({"module": "PellwickClient.dll"})");
}

void Subkeys(benchmark::State& state, int count)
{
    const RegisteredServer server;
    server.AddOlderVersions(count - 1);
    MeasureStarts(state);
}

/// These directories are searched before the registered one, and do not exist.
void Directories(benchmark::State& state, int count)
{
    std::string directories;
    for (int i = 0; i < count; ++i)
        directories += R"(C:\\nowhere\\)" + std::to_string(i) + ';';
    const ChangedFile file(OwnFolder() / "Orlindex.config",
                           R"({"ssoServer": {"searchPaths": ")" + directories + R"("}})");
    const RegisteredServer server;
    MeasureStarts(state);
}

void Register(const std::string& name, void (*measure)(benchmark::State&, int), int turns)
{
    for (const int count : {10, 1000, 10000})
        benchmark::RegisterBenchmark((name + '/' + std::to_string(count)).c_str(), measure, count)
            ->Iterations(turns)
            ->UseManualTime();
}

} // namespace

void RegisterGrowth(int turns)
{
    Register("growth/entries", Entries, turns);
    Register("growth/defective_entries", DefectiveEntries, turns);
    Register("growth/subkeys", Subkeys, turns);
    Register("growth/directories", Directories, turns);
}

} // namespace OrlindexBench
