#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "identity/Suggestion.h"
#include "identity/simulated/Scenario.h"

namespace Kestrany::Agent::Simulated {

namespace {

std::string ProblemOf(const std::string& text)
{
    std::string problem;
    EXPECT_FALSE(ReadScenario(text, "a.json", problem)) << text;
    return problem;
}

TEST(ScenarioReaderTest, AnEmptyObjectIsTheBuiltInScenario)
{
    std::string problem;
    const std::optional<Scenario> scenario = ReadScenario("{}", "a.json", problem);
    ASSERT_TRUE(scenario) << problem;
    EXPECT_EQ(scenario->login, LoginBehavior::Accept);
    EXPECT_EQ(scenario->users.front().userName, DefaultAccounts().front().userName);
    EXPECT_EQ(scenario->tokenLifetime.count(), 3600);
    EXPECT_TRUE(scenario->features.idToken);
}

TEST(ScenarioReaderTest, EveryKeyIsRead)
{
    std::string problem;
    const std::optional<Scenario> scenario = ReadScenario(R"({
        "$schema": "s",
        "users": [{"userId": "1", "userName": "ann", "firstName": "A", "lastName": "N", "email": "e",
                   "displayName": "d", "secret": "s", "profile": {"locale": "en"}},
                  {"userId": "2", "userName": "bob"}],
        "login": {"behavior": "wait", "user": "bob", "waitSeconds": 7, "lifetimeSeconds": 8},
        "tokens": {"lifetimeSeconds": 9},
        "latencyMilliseconds": 10,
        "features": ["loginMode"],
        "faults": [{"operation": "login", "call": 2, "result": 4001},
                   {"operation": "getUser", "fromCall": 3, "effect": "crash"},
                   {"operation": "logout", "call": 1, "effect": "hang"}]
    })",
                                                          "a.json", problem);
    ASSERT_TRUE(scenario) << problem;
    ASSERT_EQ(scenario->users.size(), 2u);
    EXPECT_EQ(scenario->users[0].secret, "s");
    EXPECT_EQ(scenario->users[0].profile["locale"].asString(), "en");
    EXPECT_EQ(scenario->login, LoginBehavior::Wait);
    EXPECT_EQ(scenario->loginUser, "bob");
    EXPECT_EQ(scenario->loginWait.count(), 7);
    EXPECT_EQ(scenario->loginLifetime.count(), 8);
    EXPECT_EQ(scenario->tokenLifetime.count(), 9);
    EXPECT_EQ(scenario->latency.count(), 10);
    EXPECT_FALSE(scenario->features.idToken);
    EXPECT_TRUE(scenario->features.loginMode);
    ASSERT_EQ(scenario->faults.size(), 3u);
    EXPECT_EQ(scenario->faults[0].result, static_cast<IdErrorCode>(4001));
    EXPECT_FALSE(scenario->faults[0].onwards);
    EXPECT_TRUE(scenario->faults[1].onwards);
    EXPECT_EQ(scenario->faults[1].effect, FaultEffect::Crash);
    EXPECT_EQ(scenario->faults[2].effect, FaultEffect::Hang);
}

TEST(ScenarioReaderTest, AProblemNamesFileLineColumnKeyAndWhatIsAllowed)
{
    EXPECT_EQ(ProblemOf("{\n  \"login\": {\n    \"behaviour\": \"accept\"\n  }\n}"),
              "a.json:3:5: login.behaviour: unknown key; did you mean \"behavior\"? Allowed here: \"behavior\", "
              "\"user\", \"waitSeconds\", \"lifetimeSeconds\"");
    EXPECT_EQ(ProblemOf("{\n\"login\": {\"behavior\": \"acept\"}}"),
              "a.json:2:23: login.behavior: must be one of \"accept\", \"refuse\", \"cancel\", \"wait\"; did you mean "
              "\"accept\"?");
    EXPECT_EQ(ProblemOf("{\"latencyMilliseconds\": -1}"),
              "a.json:1:25: latencyMilliseconds: must be a whole number from 0 to 60000");
}

TEST(ScenarioReaderTest, AnUnknownKeyWithoutASuggestionIsASentence)
{
    EXPECT_EQ(ProblemOf("{\"tokens\": {\"colour\": 1}}"),
              "a.json:1:13: tokens.colour: unknown key. Allowed here: \"lifetimeSeconds\"");
}

TEST(ScenarioReaderTest, AByteOrderMarkDoesNotCountInPlaces)
{
    const std::string mark = "\xEF\xBB\xBF";
    std::string problem;
    EXPECT_TRUE(ReadScenario(mark + "{}", "a.json", problem)) << problem;
    for (const char* text : {"{\"latencyMilliseconds\": -1}", "{\n  \"latency\": 1\n}", "{\n  \"users\": [,]\n}",
                             "{\"$schema\": \"\xFF\"}"})
        EXPECT_EQ(ProblemOf(mark + text), ProblemOf(text));
    for (const std::string& text : {mark, mark + mark + "{}", " " + mark + "{}"})
        EXPECT_FALSE(ReadScenario(text, "a.json", problem)) << text;
}

TEST(ScenarioReaderTest, ASyntaxErrorHasItsPlace)
{
    EXPECT_EQ(ProblemOf("{\n  \"users\": [,]\n}").rfind("a.json:2:13: not valid JSON: ", 0), 0u)
        << ProblemOf("{\n  \"users\": [,]\n}");
    for (const char* text : {"", "{", "{} x", "// no\n{}", "{\"login\": {}, \"login\": {}}", "{'a': 1}", "nul"})
        EXPECT_EQ(ProblemOf(text).rfind("a.json:", 0), 0u) << text;
    EXPECT_NE(ProblemOf(std::string(5000, '[')).find("nested too deeply"), std::string::npos);
}

TEST(ScenarioReaderTest, TextsAreCountedInCharacters)
{
    const auto scenarioWith = [](const std::string& email) {
        return R"({"users": [{"userId": "1", "userName": "a", "email": ")" + email + R"("}]})";
    };
    std::string longest;
    for (int count = 0; count < 1024; ++count)
        longest += "\xE2\x82\xAC";
    std::string problem;
    EXPECT_TRUE(ReadScenario(scenarioWith(longest), "a.json", problem)) << problem;
    EXPECT_NE(ProblemOf(scenarioWith(longest + "x")).find("0 to 1024 characters"), std::string::npos);
    EXPECT_NE(ProblemOf(scenarioWith("\\udc00")).find("half a surrogate pair"), std::string::npos);
}

TEST(ScenarioReaderTest, IllFormedUtf8IsRefusedWithItsPlace)
{
    for (const char* bytes : {"\xFF", "\x80", "\xC0\xAF", "\xE2\x82", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
        EXPECT_EQ(ProblemOf("{\n  \"$schema\": \"" + std::string(bytes) + "\"}"),
                  "a.json:2:15: not UTF-8; save the file in this encoding");
}

TEST(ScenarioReaderTest, AProfileHasALimit)
{
    const auto scenarioWith = [](const std::string& profile) {
        return R"({"users": [{"userId": "1", "userName": "a", "profile": {)" + profile + "}}]}";
    };
    std::string problem;
    constexpr std::size_t frame = std::string_view(R"({"a":""})").size();
    const std::string longest = R"("a":")" + std::string(65'536 - frame, 'x') + '"';
    EXPECT_TRUE(ReadScenario(scenarioWith(longest), "a.json", problem)) << problem;
    EXPECT_NE(ProblemOf(scenarioWith(R"("b":1,)" + longest)).find("65536 bytes"), std::string::npos);
    std::string members = R"("m":1)";
    for (int index = 0; index < 256; ++index)
        members += ",\"m" + std::to_string(index) + "\":1";
    EXPECT_NE(ProblemOf(scenarioWith(members)).find("256 members"), std::string::npos);
}

TEST(ScenarioReaderTest, EachRuleIsChecked)
{
    const std::pair<const char*, const char*> cases[] = {
        {"[]", "must be an object"},
        {R"({"users": []})", "at least one user"},
        {R"({"users": {}})", "must be an array"},
        {R"({"users": [{"userId": "1"}]})", "\"userName\" is missing"},
        {R"({"users": [{"userId": "", "userName": "a"}]})", "users[0].userId"},
        {R"({"users": [{"userId": "1", "userName": "a"}, {"userId": "1", "userName": "b"}]})", "users[1].userId"},
        {R"({"users": [{"userId": "1", "userName": "a"}, {"userId": "2", "userName": "a"}]})", "users[1].userName"},
        {R"({"users": [{"userId": "1", "userName": "a", "email": 5}]})", "users[0].email"},
        {R"({"users": [{"userId": "1", "userName": "a", "profile": "x"}]})", "users[0].profile"},
        {R"({"users": [{"userId": "1", "userName": "a", "profile": {"a": [{"b": 1e999}]}}]})", "number that is out"},
        {R"({"latencyMilliseconds": 1e999})", "from 0 to 60000"},
        {R"({"login": {"user": "nobody"}})", "login.user"},
        {R"({"login": {"waitSeconds": 601}})", "from 1 to 600"},
        {R"({"login": {"lifetimeSeconds": 0}})", "login.lifetimeSeconds"},
        {R"({"login": {"lifetimeSeconds": true}})", "login.lifetimeSeconds"},
        {R"({"tokens": {"lifetimeSeconds": 1.5}})", "tokens.lifetimeSeconds"},
        {R"({"tokens": 5})", "tokens: must be an object"},
        {R"({"features": ["idtoken"]})", "did you mean \"idToken\""},
        {R"({"faults": [{"call": 1, "result": 4001}]})", "\"operation\" is missing"},
        {R"({"faults": [{"operation": "logn", "call": 1, "result": 4001}]})", "did you mean \"login\""},
        {R"({"faults": [{"operation": "login", "result": 4001}]})", "exactly one of the keys \"call\""},
        {R"({"faults": [{"operation": "login", "call": 1, "fromCall": 1, "result": 4001}]})", "exactly one"},
        {R"({"faults": [{"operation": "login", "call": 1}]})", "exactly one of the keys \"result\""},
        {R"({"faults": [{"operation": "login", "call": 0, "result": 4001}]})", "faults[0].call"},
        {R"({"faults": [{"operation": "login", "call": 1, "result": 1000}]})", "faults[0].result"},
        {R"({"faults": [{"operation": "login", "call": 1, "effect": "explode"}]})", "faults[0].effect"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_NE(ProblemOf(text).find(expected), std::string::npos) << ProblemOf(text);
}

/// The files that host developers start from. Another test checks them against their schema.
TEST(ScenarioReaderTest, TheSamplesAreValid)
{
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(AGENT_SCENARIOS))
    {
        std::ifstream file(entry.path());
        const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        std::string problem;
        EXPECT_TRUE(ReadScenario(text, entry.path().filename().string(), problem)) << problem;
        ++count;
    }
    EXPECT_GE(count, 5);
}

TEST(SuggestionTest, OnlyASimilarWordIsSuggested)
{
    const std::vector<std::string> words = {"users", "login", "tokens"};
    EXPECT_EQ(Suggestion("user", words), "users");
    EXPECT_EQ(Suggestion("tokns", words), "tokens");
    EXPECT_EQ(Suggestion("somethingelse", words), "");
    EXPECT_EQ(Suggestion("", words), "");
    EXPECT_EQ(Suggestion(std::string(100'000, 'x'), words), "");
}

} // namespace

} // namespace Kestrany::Agent::Simulated
