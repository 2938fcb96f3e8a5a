// Files and registry keys of absurd sizes and shapes: the time is linear in the size, memory is bounded, and nothing
// crashes.

#include <algorithm>

#include "StartTest.h"
#include "TestScale.h"
#include "support/Child.h"
#include "support/MachineKey.h"

namespace OrlindexTest {

namespace {

constexpr long long Megabyte = 1024; // In kilobytes.

/// In milliseconds: fifty times the longest of them, and far less than a quadratic algorithm would take.
constexpr long long LongestRefusal = 2000;

constexpr char Range[] = R"("compatibleSsoServicesVersion": {"minVersion": "1.11", "maxVersion": "1.11"}})";

/// Elements that a file repeats, and how many of them there are.
struct Ignored
{
    const char* what;
    const char* elements;
    std::size_t count;
};

long long CountOf(std::string_view part, std::string_view text)
{
    long long count = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

std::string Repeated(const std::string& text, std::size_t times)
{
    std::string repeated;
    repeated.reserve(text.size() * times);
    for (std::size_t i = 0; i < times; ++i)
        repeated += text;
    return repeated;
}

/// Directories that do not exist.
std::string SearchPaths(int count)
{
    std::string paths;
    for (int i = 0; i < count; ++i)
        paths += R"(C:\\nowhere\\directory )" + std::to_string(i) + ';';
    return paths;
}

std::string Entries(int count)
{
    std::string entries;
    for (int i = 0; i < count; ++i)
        entries += R"({"module": "m", "modulePath": "C:\\nowhere\\)" + std::to_string(i) + R"(.dll", "version": "1.)" +
                   std::to_string(i) + R"(", )" + Range + ',';
    return entries;
}

} // namespace

class Limits : public StartTest
{
protected:
    /// Starts the library with a thousand and with ten thousand elements.
    void ExpectLinear(const std::string& what, const std::function<void(int count)>& prepare)
    {
        prepare(1000);
        const StartFigures thousand = StartInChild("1000 " + what);
        prepare(10000);
        const StartFigures tenThousand = StartInChild("10000 " + what);
        EXPECT_EQ(thousand.result, IdSuccess) << thousand.output;
        EXPECT_EQ(tenThousand.result, IdSuccess) << tenThousand.output;
        EXPECT_LT(tenThousand.milliseconds, 25 * std::max(thousand.milliseconds, 20LL));
        EXPECT_LT(tenThousand.peakKilobytes, 256 * Megabyte);
        PrintCount("milliseconds of a start with 1000 " + what, thousand.milliseconds);
        PrintCount("milliseconds of a start with 10000 " + what, tenThousand.milliseconds);
        PrintCount("peak kilobytes of a start with 10000 " + what, tenThousand.peakKilobytes);
    }

    void ExpectRefused(const std::string& what, long long largestPeak = 64 * Megabyte)
    {
        const StartFigures figures = StartInChild(what);
        EXPECT_EQ(figures.result, IdClientUnavailable) << what << '\n' << figures.output;
        EXPECT_LT(figures.peakKilobytes, largestPeak) << what;
        EXPECT_LT(figures.milliseconds, LongestRefusal) << what;
        largestPeak_ = std::max(largestPeak_, figures.peakKilobytes);
        longest_ = std::max(longest_, figures.milliseconds);
        ++refused_;
    }

    void Report(const std::string& name) const
    {
        PrintCount(name + " refused", refused_);
        PrintCount("peak kilobytes with " + name, largestPeak_);
        PrintCount("milliseconds of the longest start with " + name, longest_);
    }

private:
    int refused_ = 0;
    long long largestPeak_ = 0;
    long long longest_ = 0;
};

TEST_F(Limits, TenThousandSearchDirectoriesTakeTenTimesAsLongAsAThousand)
{
    if (ChildInput())
        return StartAndReport();
    installation.Install();
    ExpectLinear("search directories", [this](int count) {
        installation.WriteClientConfig(R"({"ssoServer": {"searchPaths": ")" + SearchPaths(count) +
                                       JsonPath(installation.ServerFolder()) + R"("}})");
    });
}

TEST_F(Limits, TenThousandCompatibilityEntriesTakeTenTimesAsLongAsAThousand)
{
    if (ChildInput())
        return StartAndReport();
    installation.Install();
    ExpectLinear("compatibility entries", [this](int count) {
        installation.WriteCompatibilityFile(R"({"ssoClientPlugin": [)" + Entries(count) +
                                            R"({"module": "m", "modulePath": ")" + JsonPath(installation.PluginFile()) +
                                            R"(", "version": "2.0", )" + Range + "]}");
    });
}

/// Each of the two files in turn, with a good other one.
TEST_F(Limits, FilesOfAbsurdSizesAndShapesAreRefused)
{
    if (ChildInput())
        return StartAndReport();
    using namespace std::string_literals;
    const std::pair<const char*, std::string> files[] = {
        {"64 MB of blanks and an object", std::string(64 * 1024 * 1024, ' ') + "{}"},
        {"just over 8 MB", std::string(8 * 1024 * 1024, ' ') + "{}"},
        {"an array 100000 deep", std::string(100000, '[') + std::string(100000, ']')},
        {"an object 100000 deep", Repeated(R"({"a":)", 100000) + "1" + std::string(100000, '}')},
        {"an array 100000 deep that never ends", std::string(100000, '[')},
        {"zeros alone", std::string(4096, '\0')},
        {"a zero before the object", "\0{}"s},
        {"a zero inside a path",
         "{\"ssoServer\": {\"searchPaths\": \"C:\\\\a\0b\"}, \"ssoClientPlugin\": [{\"modulePath\": \"a\0b\"}]}"s},
        {"an escaped zero inside a path",
         R"({"ssoServer": {"searchPaths": "C:\\a\u0000b"}, "ssoClientPlugin": [{"module": "m", "version": "1",
             "modulePath": "C:\\a\u0000b.dll", )"s +
             Range + "]}"},
        {"a text that never ends", "{\"ssoServer\": \"" + std::string(1024 * 1024, 'x')},
        {"a number of a million digits", R"({"ssoServer": )" + std::string(1000000, '9') + '}'},
        {"bytes that are no UTF-8", "{\"ssoServer\": {\"searchPaths\": \"\xFF\xFE\xC0\x80\"}}"},
        {"halves of surrogate pairs", R"({"ssoServer": {"searchPaths": "\ud83d\ud83d \udE00"}})"},
        {"UTF-16", "\xFF\xFE{\0}\0"s},
    };
    for (const auto& [what, bytes] : files)
    {
        installation.Install();
        installation.WriteCompatibilityFile(bytes);
        ExpectRefused("the version compatibility file is "s + what);
        installation.Install();
        installation.WriteClientConfig(bytes);
        ExpectRefused("the client config file is "s + what);
    }
    Report("files of absurd sizes and shapes");
}

/// The log names each ignored element, and prints it.
TEST_F(Limits, ElementsThatAreNoneTakeTimeAndMemoryInProportion)
{
    if (ChildInput())
        return StartAndReport();
    installation.Install();
    const std::size_t many = ShortOrLong(30000, 300000);
    const auto start = [this](std::size_t count) {
        installation.WriteCompatibilityFile(R"({"ssoClientPlugin": [)" + Repeated("0,", count) + "0]}");
        return StartInChild(std::to_string(count) + " elements that are none");
    };
    const StartFigures few = start(many / 10);
    const StartFigures figures = start(many);
    EXPECT_EQ(figures.result, IdClientUnavailable);
    EXPECT_LT(figures.milliseconds, 25 * std::max(few.milliseconds, 20LL));
    EXPECT_LT(figures.peakKilobytes - few.peakKilobytes, static_cast<long long>(many)) << "a kilobyte each";
    PrintCount("elements that are none", static_cast<long long>(many));
    PrintCount("milliseconds of a start with elements that are none", figures.milliseconds);
    PrintCount("peak kilobytes of a start with elements that are none", figures.peakKilobytes);
}

/// The smallest elements that are ignored; in the long form as many as the largest accepted file has. Their few
/// different messages are kept once each, however often and in whatever order they come. A start-up that takes too long
/// fails as a child that does not end.
TEST_F(Limits, AFileFullOfIgnoredElementsTakesBoundedMemory)
{
    if (ChildInput())
        return StartAndReport();
    installation.Install();
    const std::size_t megabytes = ShortOrLong(1, 8);
    for (const Ignored& kind : {Ignored{"of one kind", "0,", 1}, Ignored{"of two kinds", R"(0,{"module":1},)", 2}})
    {
        const std::string begin = R"({"ssoClientPlugin": [)";
        const std::string end = "0]}";
        const std::string_view elements = kind.elements;
        const std::size_t times = (megabytes * 1024 * 1024 - begin.size() - end.size()) / elements.size();
        installation.WriteCompatibilityFile(begin + Repeated(kind.elements, times) + end);
        const std::string what = std::string("ignored elements ") + kind.what;
        const StartFigures figures = StartInChild(what);
        const auto ignored = static_cast<long long>(times * kind.count + 1);
        EXPECT_EQ(figures.result, IdClientUnavailable) << what;
        EXPECT_EQ(CountOf("Object ignored.", figures.output), ignored) << what << ": each is named";
        EXPECT_LT(figures.peakKilobytes, static_cast<long long>(50 + 70 * megabytes) * Megabyte) << what;
        PrintCount(what, ignored);
        PrintCount("milliseconds of a start with " + what, figures.milliseconds);
        PrintCount("peak kilobytes of a start with " + what, figures.peakKilobytes);
    }
}

class MachineLimits : public Limits
{
};

TEST_F(MachineLimits, TenThousandRegistrySubkeysTakeTenTimesAsLongAsAThousand)
{
    if (ChildInput())
        return StartAndReport();
    installation.Install();
    installation.WriteClientConfig("{}");
    const MachineKey key;
    int made = 0;
    ExpectLinear("registry subkeys", [&](int count) {
        for (; made < count; ++made)
            key.AddVersion(L"1." + std::to_wstring(made), L"C:\\nowhere");
        key.AddVersion(L"2.0", installation.ServerFolder().native());
    });
}

TEST_F(MachineLimits, RegistryTextsThatAreNoneAreNotFollowed)
{
    if (ChildInput())
        return StartAndReport();
    installation.Install();
    installation.WriteClientConfig("{}");
    const std::wstring place = L"C:\\nowhere";
    const std::wstring large(40000, L'x');
    const std::wstring zero(L"C:\\no\0where\0", 12);
    struct Value
    {
        const char* what;
        DWORD type;
        const void* data;
        std::size_t size;
    };
    const Value values[] = {
        {"without its zero", REG_SZ, place.data(), place.size() * 2},
        {"of an odd number of bytes", REG_SZ, place.data(), place.size() * 2 - 1},
        {"of one byte", REG_SZ, place.data(), 1},
        {"of no bytes", REG_SZ, place.data(), 0},
        {"with a zero inside", REG_SZ, zero.data(), zero.size() * 2},
        {"of exactly the limit", REG_SZ, large.data(), 4090},
        {"just over the limit", REG_SZ, large.data(), 4091},
        {"of 80 KB", REG_SZ, large.data(), large.size() * 2},
        {"that is a list", REG_MULTI_SZ, zero.data(), zero.size() * 2},
        {"that is binary", REG_BINARY, large.data(), 999},
        {"that is a number", REG_DWORD, large.data(), 4},
    };
    for (const Value& value : values)
    {
        const MachineKey key;
        key.AddVersion(L"1.0", value.type, value.data, static_cast<DWORD>(value.size));
        key.SetLocation(value.type, value.data, static_cast<DWORD>(value.size));
        ExpectRefused(std::string("a registry text ") + value.what);
    }
    Report("registry texts");
}

} // namespace OrlindexTest
