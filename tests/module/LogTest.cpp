// Where messages go: the plugin's logger, the list of pending messages, the standard output.

#include <cstdio>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iostream>
#include <locale>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <psapi.h>

#include "LogCapture.h"
#include "base/Log.h"
#include "base/Message.h"
#include "locate/SSOPathResolver.h"
#include "support/CapturedOutput.h"
#include "support/Text.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
namespace TALIXLog = Kestrany::TALIXLog;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// The messages that waited for a logger.
std::vector<LogLine> TakePending()
{
    LogCapture log;
    FlushPendingLog();
    return log.Take();
}

/// Sets the error flag of the standard output, as a failed write does.
void FailStandardOutput()
{
    std::fflush(stdout);
    const int output = _dup(1);
    const int unwritable = _open("NUL", _O_RDONLY);
    _dup2(unwritable, 1);
    std::fputc('\n', stdout);
    std::fflush(stdout);
    _dup2(output, 1);
    _close(unwritable);
    _close(output);
    ASSERT_NE(std::ferror(stdout), 0);
}

/// The private memory of this process, in bytes.
std::size_t PrivateBytes()
{
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

} // namespace

TEST(Log, WithoutLoggerAnInfoMessageIsOnlyKept)
{
    CapturedOutput output;
    DefaultLogFunction(L"progress", TALIXLog::Info);
    EXPECT_EQ(output.Take(), "");
    EXPECT_THAT(TakePending(), ElementsAre(InfoLine("progress")));
}

TEST(Log, WithoutLoggerAnErrorMessageIsKeptAndPrinted)
{
    CapturedOutput output;
    DefaultLogFunction(L"failure", TALIXLog::Error);
    EXPECT_EQ(output.Take(), "failure\n");
    EXPECT_THAT(TakePending(), ElementsAre(ErrorLine("failure")));
}

TEST(Log, WithoutLoggerAWarningIsOnlyKept)
{
    CapturedOutput output;
    DefaultLogFunction(L"fallback", TALIXLog::Warning);
    EXPECT_EQ(output.Take(), "");
    EXPECT_THAT(TakePending(), ElementsAre(WarningLine("fallback")));
}

TEST(Log, MessagesAreFlushedInTheirOrder)
{
    CapturedOutput output;
    DefaultLogFunction(L"first", TALIXLog::Info);
    DefaultLogFunction(L"second", TALIXLog::Error);
    DefaultLogFunction(L"third", TALIXLog::Warning);
    DefaultLogFunction(L"", TALIXLog::Info);
    EXPECT_THAT(TakePending(), ElementsAre(InfoLine("first"), ErrorLine("second"), WarningLine("third"), InfoLine("")));
    EXPECT_EQ(output.Take(), "second\n") << "flushing to a logger prints nothing";
}

TEST(Log, AFlushEmptiesTheList)
{
    DefaultLogFunction(L"once", TALIXLog::Info);
    EXPECT_THAT(TakePending(), SizeIs(1));
    EXPECT_THAT(TakePending(), IsEmpty());
}

TEST(Log, ASharedMessageIsDeliveredAsOftenAsItWasWrittenAndInOrder)
{
    const auto attempt = std::make_shared<const std::wstring>(L"attempt");
    LogSharedMessage(attempt, TALIXLog::Info);
    LogSharedMessage(attempt, TALIXLog::Info);
    LogSharedMessage(attempt, TALIXLog::Warning);
    DefaultLogFunction(L"between", TALIXLog::Info);
    LogSharedMessage(attempt, TALIXLog::Info);
    EXPECT_THAT(TakePending(), ElementsAre(InfoLine("attempt"), InfoLine("attempt"), WarningLine("attempt"),
                                           InfoLine("between"), InfoLine("attempt")));
}

TEST(Log, TheRepeatsOfASharedMessageTakeNoMemory)
{
    const auto attempt = std::make_shared<const std::wstring>(L"attempt");
    for (int i = 0; i < 1000; ++i)
        LogSharedMessage(attempt, TALIXLog::Info);
    EXPECT_EQ(attempt.use_count(), 2) << "one record holds it";
    EXPECT_THAT(TakePending(), SizeIs(1000));
    EXPECT_EQ(attempt.use_count(), 1);
}

TEST(Log, AMessageThatIsWrittenAgainIsKeptOnceAndDeliveredAsOftenAsItWasWritten)
{
    constexpr int times = 2000;
    const std::wstring texts[] = {std::wstring(2000, L'a'), std::wstring(2000, L'b')};
    CapturedOutput output;
    const std::size_t before = PrivateBytes();
    for (int i = 0; i < times; ++i)
        DefaultLogFunction(texts[i % 2], i % 4 < 2 ? TALIXLog::Error : TALIXLog::Info);
    EXPECT_LT(PrivateBytes() - before, 1024u * 1024) << "the texts alone would be 8 MB";

    const std::string a(2000, 'a');
    const std::string b(2000, 'b');
    std::string printed;
    std::vector<LogLine> expected;
    for (int i = 0; i < times; i += 4)
    {
        printed += a + '\n' + b + '\n';
        expected.insert(expected.end(), {ErrorLine(a), ErrorLine(b), InfoLine(a), InfoLine(b)});
    }
    EXPECT_EQ(output.Take(), printed) << "failures alone, and each";
    EXPECT_EQ(TakePending(), expected);
}

TEST(Log, AFlushWithoutLoggerPrintsEveryMessage)
{
    DefaultLogFunction(L"progress", TALIXLog::Info);
    DefaultLogFunction(L"fallback", TALIXLog::Warning);
    CapturedOutput output;
    FlushPendingLog();
    EXPECT_EQ(output.Take(), "progress\nfallback\n");
    EXPECT_THAT(TakePending(), IsEmpty());
}

TEST(Log, WithALoggerMessagesGoStraightToIt)
{
    CapturedOutput output;
    LogCapture log;
    DefaultLogFunction(L"progress", TALIXLog::Info);
    DefaultLogFunction(L"failure", TALIXLog::Error);
    EXPECT_THAT(log.Take(), ElementsAre(InfoLine("progress"), ErrorLine("failure")));
    EXPECT_EQ(output.Take(), "") << "nothing is printed any more";
    FlushPendingLog();
    EXPECT_THAT(log.Take(), IsEmpty()) << "nothing was kept";
}

TEST(Log, AMessageThatComesFromTheLoggerDuringAFlushIsDelivered)
{
    DefaultLogFunction(L"first", TALIXLog::Info);
    DefaultLogFunction(L"second", TALIXLog::Info);
    std::vector<std::string> received;
    SetPluginLogger([&received](const std::wstring& message, LogLevel level) {
        received.push_back(ToUtf8(message));
        if (message == L"first")
            DefaultLogFunction(L"from the logger", level);
    });
    FlushPendingLog();
    SetPluginLogger(nullptr);
    EXPECT_THAT(received, ElementsAre("first", "from the logger", "second"));
}

namespace {

/// Expects that only the message "bad" is lost if the logger throws for it.
void ExpectOnlyTheBadMessageLost(const std::function<void()>& raise)
{
    DefaultLogFunction(L"bad", TALIXLog::Info);
    DefaultLogFunction(L"good", TALIXLog::Info);
    std::vector<std::string> received;
    SetPluginLogger([&](const std::wstring& message, LogLevel) {
        if (message == L"bad")
            raise();
        received.push_back(ToUtf8(message));
    });
    EXPECT_NO_THROW(FlushPendingLog());
    EXPECT_NO_THROW(DefaultLogFunction(L"bad", TALIXLog::Error));
    DefaultLogFunction(L"last", TALIXLog::Error);
    SetPluginLogger(nullptr);
    EXPECT_THAT(received, ElementsAre("good", "last"));
}

} // namespace

TEST(Log, ALoggerThatThrowsCostsNoOtherMessage)
{
    ExpectOnlyTheBadMessageLost([] { throw std::runtime_error("the logger failed"); });
}

TEST(Log, ALoggerThatThrowsWhatIsNoExceptionCostsNoOtherMessage)
{
    ExpectOnlyTheBadMessageLost([] { throw 42; });
}

TEST(Log, TheStandardOutputStaysUsableAfterAMessageThatItCannotEncode)
{
    CapturedOutput output;
    DefaultLogFunction(L"C:\\\u4E2D\xD83D\xDE00\\x.dll", TALIXLog::Error);
    EXPECT_TRUE(std::wcout.good());
    std::wcout << L"the host's own text" << std::endl;
    EXPECT_EQ(output.Take(), "C:\\<U+4E2D><U+1F600>\\x.dll\nthe host's own text\n");
    EXPECT_EQ(std::ferror(stdout), 0);
}

TEST(Log, TheErrorFlagThatTheHostsStandardOutputHadBeforeStays)
{
    CapturedOutput output;
    FailStandardOutput();
    DefaultLogFunction(L"failure", TALIXLog::Error);
    EXPECT_NE(std::ferror(stdout), 0);
    std::clearerr(stdout);
    EXPECT_THAT(output.Take(), testing::EndsWith("failure\n"));
}

TEST(Log, AStandardOutputThatFailedBeforeStillShowsFailures)
{
    CapturedOutput output;
    std::wcout.setstate(std::ios::failbit);
    DefaultLogFunction(L"failure", TALIXLog::Error);
    EXPECT_TRUE(std::wcout.fail());
    std::wcout.clear();
    EXPECT_EQ(output.Take(), "failure\n");
}

TEST(Log, MessagesOfManyThreadsAllArriveWhole)
{
    constexpr int threads = 4;
    constexpr int messages = 200;
    LogCapture log;
    std::promise<void> start;
    const std::shared_future<void> started = start.get_future().share();
    std::vector<std::future<void>> writers;
    for (int thread = 0; thread < threads; ++thread)
        writers.push_back(std::async(std::launch::async, [thread, started] {
            started.wait();
            for (int i = 0; i < messages; ++i)
                DefaultLogFunction(std::to_wstring(thread * messages + i), TALIXLog::Info);
        }));
    start.set_value();
    for (std::future<void>& writer : writers)
        writer.get();

    std::vector<std::string> expected;
    for (int i = 0; i < threads * messages; ++i)
        expected.push_back(std::to_string(i));
    std::vector<std::string> received;
    for (const LogLine& line : log.Take())
        received.push_back(line.text);
    EXPECT_THAT(received, testing::UnorderedElementsAreArray(expected));
}

TEST(Log, TheManagersLogGoesTheSameWay)
{
    const SSOPathResolver* const manager = SSOPathResolver::GetInstance();
    {
        CapturedOutput output;
        manager->Log(L"failure", TALIXLog::Error);
        EXPECT_EQ(output.Take(), "failure\n");
    }
    EXPECT_THAT(TakePending(), ElementsAre(ErrorLine("failure")));
    LogCapture log;
    manager->Log(L"progress", TALIXLog::Info);
    EXPECT_THAT(log.Take(), ElementsAre(InfoLine("progress")));
}

TEST(Message, PlacesArgumentsByPosition)
{
    EXPECT_EQ(Message(L"%2% before %1%, and %2% again", L"one", std::wstring(L"two")),
              L"two before one, and two again");
    EXPECT_EQ(Message(L"%1%", L"%2% %s 100%"), L"%2% %s 100%") << "an argument is not read as a format";
    EXPECT_EQ(Message(L"failed with error: %1%", -5L), L"failed with error: -5");
}

TEST(Message, NumbersDoNotDependOnTheHostsLocale)
{
    struct GroupedDigits : std::numpunct<wchar_t>
    {
        wchar_t do_thousands_sep() const override { return L'.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new GroupedDigits));
    EXPECT_EQ(Message(L"failed with error: %1%", 1018L), L"failed with error: 1018");
    std::locale::global(before);
}

} // namespace OrlindexTest
