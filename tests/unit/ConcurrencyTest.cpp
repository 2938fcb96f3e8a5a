// Hosts call from many threads. Here all of them use at once what the portable logic shares (statics, the locale, the
// flags of stdout); the thread sanitizer checks it, and the tests check the results.

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "base/ConsoleStream.h"
#include "base/Json.h"
#include "base/Versions.h"
#include "load/VersionCompatibility.h"
#include "load/signature/BinaryTrustResult.h"
#include "locate/ClientConfig.h"
#include "locate/PathVariables.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

namespace {

constexpr int Threads = 8;
constexpr int Rounds = 200;

/// Whether `step` returns true in every round of every thread. All threads begin at the same time.
bool HoldsInEveryThread(const std::function<bool(int thread)>& step)
{
    std::atomic<int> ready{0};
    std::atomic<int> failures{0};
    const auto run = [&](int thread) {
        for (++ready; ready < Threads;)
            std::this_thread::yield();
        int failed =
            0; // A local variable: an atomic that each round uses would order the threads and hide their races.
        for (int round = 0; round < Rounds; ++round)
            failed += step(thread) ? 0 : 1;
        failures += failed;
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < Threads; ++thread)
        threads.emplace_back(run, thread);
    for (std::thread& thread : threads)
        thread.join();
    return failures == 0;
}

const std::string compatibility = R"({"ssoClientPlugin": [
    {"module": "Old", "modulePath": "%a%.dll", "version": "1.9", "compatibleSsoServicesVersion": {"minVersion": "1.10"}},
    {"module": "New", "modulePath": "%b%.dll", "version": "1.10", "compatibleSsoServicesVersion": {"versions": ["1.11"]}},
    {"module": "", "version": 7}]})";

bool NameAsValue(const std::wstring& name, std::wstring& value)
{
    value = name + name;
    return true;
}

std::vector<VersionCompatibilityEntry> Read(const Json::Value& root)
{
    const auto widen = [](const std::string& text) { return std::wstring(text.begin(), text.end()); };
    std::vector<VersionCompatibilityEntry> entries;
    ParseEntries(root, "ssoClientPlugin", false, widen, [&entries](ParsedEntry&& parsed) {
        if (parsed.defect)
            return;
        ExpandPathVariables(parsed.entry.modulePath, NameAsValue);
        entries.push_back(std::move(parsed.entry));
    });
    return entries;
}

bool ChoosesTheNewer(const Json::Value& root)
{
    const auto entries = Read(root);
    const VersionCompatibilityEntry* chosen = ChooseEntry(entries, SplitVersion("1.11.13.3"));
    return entries.size() == 2 && chosen && chosen->module == L"New" && chosen->modulePath == L"bb.dll";
}

} // namespace

TEST(Concurrency, EveryThreadReadsDocumentsOfItsOwn)
{
    EXPECT_TRUE(HoldsInEveryThread([](int thread) {
        const std::string id = "bundle " + std::to_string(thread);
        const auto values = ParseClientConfig(R"({"ssoServer": {"bundleId": ")" + id + R"(", "other": [1.5]}})").values;
        const auto root = ParseJson(compatibility).root;
        return values && values->bundleId == id && !ParseClientConfig("{").values && root && ChoosesTheNewer(*root);
    }));
}

TEST(Concurrency, ThreadsReadOneDocument)
{
    const auto root = ParseJson(compatibility).root;
    ASSERT_TRUE(root);
    EXPECT_TRUE(HoldsInEveryThread([&](int) { return ChoosesTheNewer(*root) && MemberOf(*root, "other").isNull(); }));
}

TEST(Concurrency, NumbersOutOfRangeInOneThreadDoNotDisturbAnother)
{
    EXPECT_TRUE(HoldsInEveryThread([](int thread) {
        // One half converts numbers out of range, which sets errno, while the other converts ones in range.
        const bool outOfRange = thread % 2 == 0;
        const std::string zeros(outOfRange ? 30 : 10, '0');
        return CompareVersions(SplitVersion("1.1" + zeros), SplitVersion("1.7")) == (outOfRange ? -1 : 1) &&
               CompareVersions({}, SplitVersion("1")) == -1;
    }));
}

TEST(Concurrency, LinesGoToStreamsOfTheirOwn)
{
    EXPECT_TRUE(HoldsInEveryThread([](int thread) {
        std::wostringstream stream;
        const std::wstring line(static_cast<std::size_t>(thread), L'\u4E2D');
        WriteConsoleLine(stream, line);
        return stream.good() && stream.str() == line + L'\n';
    }));
}

TEST(Concurrency, TrustMessagesAreThereForAll)
{
    EXPECT_TRUE(HoldsInEveryThread([](int thread) {
        const auto result = static_cast<BinaryTrustResult>(thread);
        return TrustMessageFor(result).text != nullptr && LoadingAllowed(result) == (thread == 0);
    }));
}

} // namespace OrlindexTest
