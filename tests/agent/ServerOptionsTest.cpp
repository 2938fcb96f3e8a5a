#include <gtest/gtest.h>

#include "server/ServerInstance.h"
#include "server/ServerLaunch.h"
#include "server/ServerOptions.h"

#include <windows.h>

#include <shellapi.h>

namespace Kestrany::Agent {

namespace {

TEST(ServerOptionsTest, WithoutArgumentsTheDefaultIdentityServes)
{
    ServerOptions options;
    EXPECT_EQ(ParseServerOptions({}, options), "");
    EXPECT_EQ(options.identity, DefaultIdentity);
    EXPECT_FALSE(options.quitAfterSeconds);
    EXPECT_FALSE(options.help);
    EXPECT_FALSE(options.version);
}

TEST(ServerOptionsTest, EveryOptionIsParsed)
{
    ServerOptions options;
    EXPECT_EQ(ParseServerOptions({"--identity", "A.b-c_1", "--quit-after", "30", "--help", "--version"}, options), "");
    EXPECT_EQ(options.identity, "A.b-c_1");
    EXPECT_EQ(options.quitAfterSeconds, 30u);
    EXPECT_TRUE(options.help);
    EXPECT_TRUE(options.version);
    EXPECT_FALSE(options.quit);
    EXPECT_EQ(ParseServerOptions({"--quit", "--identity=B", "--idle-after", "0"}, options), "");
    EXPECT_EQ(options.identity, "B");
    EXPECT_TRUE(options.quit);
    EXPECT_FALSE(options.idleAfterSeconds) << "0 stands for never";
    EXPECT_EQ(ParseServerOptions({"--check-scenario", "a file.json"}, options), "");
    EXPECT_EQ(options.checkScenario, "a file.json");
    EXPECT_EQ(options.idleAfterSeconds, 60u) << "without the option";
}

TEST(ServerOptionsTest, ErrorsAreNamed)
{
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"--frob"}, "unknown argument \"--frob\""},
        {{"--ident", "a"}, "unknown argument \"--ident\""}, // Names are not completed.
        {{"frob"}, "unknown argument \"frob\""},
        {{"-q"}, "unknown argument \"-q\""},
        {{"--quit", "--quit"}, "--quit is given twice"},
        {{"--identity", "--quit"}, "not \"--quit\""},
        {{"--check-scenario", ""}, "the name of a file"},
        {{"--identity"}, "needs a value"},
        {{"--identity", "a", "--identity", "b"}, "twice"},
        {{"--identity", "a\\b"}, "a\\b"},
        {{"--identity", ""}, "1 to 120"},
        {{"--quit-after", "0"}, "\"0\""},
        {{"--quit-after", "-1"}, "\"-1\""},
        {{"--quit-after", "10s"}, "\"10s\""},
        {{"--quit-after", "604801"}, "604801"},
        {{"--quit-after", "99999999999"}, "99999999999"},
    };
    for (const auto& [arguments, expected] : cases)
    {
        ServerOptions options;
        const std::string problem = ParseServerOptions(arguments, options);
        EXPECT_NE(problem.find(expected), std::string::npos) << "'" << problem << "' names " << expected;
    }
}

TEST(ServerOptionsTest, TheHelpTextDescribesTheOptions)
{
    EXPECT_EQ(DescribeServerOptions(),
              "  --identity NAME       the name to run under, 1 to 120 letters, digits and . _ -\n"
              "                        (without it: Kestrany.TALIX.DefaultProcess-v2)\n"
              "  --quit-after SECONDS  quit after this time if nobody asked before\n"
              "  --idle-after SECONDS  quit after this time without a host (without it: 60; 0 for never)\n"
              "  --quit                ask the server that runs under the name to quit, and wait for it\n"
              "  --check-scenario FILE say whether FILE is a valid scenario, and if not, where and why\n");
}

TEST(CommandLineTest, TextsSurviveTheRuntimesSplitting)
{
    const std::vector<std::wstring> texts = {L"C:\\a b\\p.exe", L"",        L"a\"b",       L"a\\\"b",
                                             L"end\\",          L"two\\\\", L"\x00EB x\ty"};
    int count = 0;
    wchar_t** split = CommandLineToArgvW(JoinCommandLine(texts).c_str(), &count);
    ASSERT_NE(split, nullptr);
    const std::vector<std::wstring> back(split, split + count);
    LocalFree(static_cast<void*>(split));
    EXPECT_EQ(back, texts);
}

} // namespace

} // namespace Kestrany::Agent
