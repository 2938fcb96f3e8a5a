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

TEST(ServerOptionsTest, EveryOptionIsTaken)
{
    ServerOptions options;
    EXPECT_EQ(ParseServerOptions({"--identity", "A.b-c_1", "--quit-after", "30", "--help", "--version"}, options), "");
    EXPECT_EQ(options.identity, "A.b-c_1");
    EXPECT_EQ(options.quitAfterSeconds, 30u);
    EXPECT_TRUE(options.help);
    EXPECT_TRUE(options.version);
}

TEST(ServerOptionsTest, WhatIsWrongIsNamed)
{
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"--frob"}, "--frob"},
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

TEST(CommandLineTest, TextsSurviveTheRuntimesSplitting)
{
    const std::vector<std::wstring> texts = {L"C:\\a b\\p.exe", L"",        L"a\"b",       L"a\\\"b",
                                             L"end\\",          L"two\\\\", L"\x00EB x\ty"};
    int count = 0;
    wchar_t** split = CommandLineToArgvW(JoinCommandLine(texts).c_str(), &count);
    ASSERT_NE(split, nullptr);
    const std::vector<std::wstring> back(split, split + count);
    LocalFree(split);
    EXPECT_EQ(back, texts);
}

} // namespace

} // namespace Kestrany::Agent
