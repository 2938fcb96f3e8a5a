// Lengths and counts that no sensible file has: parsed completely or refused, in short time and on an ordinary stack.

#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "base/ConsoleStream.h"
#include "base/Json.h"
#include "base/JsonNumbers.h"
#include "base/Versions.h"
#include "load/VersionCompatibility.h"
#include "locate/ClientConfig.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

namespace {

constexpr std::size_t million = 1000 * 1000;
constexpr std::size_t many = 50 * 1000; ///< Number of parts; their tests are slower under a sanitizer.

std::string Repeated(const std::string& text, std::size_t count)
{
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

std::string Quoted(const std::string& text)
{
    return '"' + text + '"';
}

std::string Element(const std::string& version, const std::string& range)
{
    return R"({"module": "M", "modulePath": "m.dll", "version": )" + Quoted(version) +
           R"(, "compatibleSsoServicesVersion": )" + range + '}';
}

std::vector<VersionCompatibilityEntry> ReadElements(const std::string& elements)
{
    const auto root = ParseJson(R"({"list": [)" + elements + "]}").root;
    EXPECT_TRUE(root);
    const auto widen = [](const std::string& text) { return std::wstring(text.begin(), text.end()); };
    std::vector<VersionCompatibilityEntry> entries;
    ParseEntries(root.value_or(Json::Value()), "list", false, widen, [&entries](ParsedEntry&& parsed) {
        EXPECT_FALSE(parsed.defect) << "an element has a defect";
        entries.push_back(std::move(parsed.entry));
    });
    return entries;
}

} // namespace

TEST(HostileLengths, AVersionOfFiftyThousandPartsIsSplitJoinedAndCompared)
{
    const std::string text = Repeated("1.", many);
    const VersionParts version = SplitVersion(text);
    EXPECT_EQ(version.size(), many + 1);
    EXPECT_TRUE(JoinVersion(version) == text);
    EXPECT_EQ(CompareVersions(version, version), 0);
    EXPECT_EQ(CompareVersions(version, SplitVersion(text + "1")), -1);
    EXPECT_EQ(CompareVersions(version, SplitVersion("1")), 1);
}

TEST(HostileLengths, APartOfAMillionDigitsIsComparedAsText)
{
    const std::string digits(million, '9');
    EXPECT_EQ(CompareVersions({digits}, {digits}), 0);
    EXPECT_EQ(CompareVersions({digits}, {digits + "0"}), -1);
    EXPECT_EQ(CompareVersions({digits}, {"99999"}), 1);
    EXPECT_EQ(CompareVersions({std::string(million, '0') + '7'}, {"7"}), -1) << "zeros keep a number in range";
}

TEST(HostileLengths, AThousandElementsAreReadAndTheHighestIsChosen)
{
    std::string elements;
    for (int i = 0; i < 1000; ++i)
        elements += Element("1." + std::to_string(i), R"({"minVersion": "1"})") + ',';
    const auto entries = ReadElements(elements + Element("1.5", R"({"minVersion": "2"})"));
    ASSERT_EQ(entries.size(), 1001u);
    EXPECT_EQ(ChooseEntry(entries, SplitVersion("1.11.13.3")), &entries[999]);
}

TEST(HostileLengths, ARangeOfTenThousandVersionsIsSearched)
{
    const std::string listed = Repeated(R"("1.12", )", 10000);
    const auto entries = ReadElements(Element("1", R"({"versions": [)" + listed + R"("1.11"]})"));
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_TRUE(RangesMatch(entries[0], SplitVersion("1.11.13.3")));
    EXPECT_FALSE(RangesMatch(entries[0], SplitVersion("1.13")));
}

TEST(HostileLengths, ABoundOfFiftyThousandPartsIsABoundLikeOthers)
{
    const std::string bound = Repeated("1.", many) + '1';
    const auto entries = ReadElements(Element("1", R"({"minVersion": )" + Quoted(bound) + '}'));
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_FALSE(RangesMatch(entries[0], SplitVersion("1.1"))) << "missing parts are less";
    EXPECT_TRUE(RangesMatch(entries[0], SplitVersion("1.2")));
}

TEST(HostileLengths, ATextOfAMegabyteIsReadWhole)
{
    const std::string text(million, 'x');
    const auto values = ParseClientConfig(R"({"ssoServer": {"searchPaths": )" + Quoted(text) + "}}").values;
    ASSERT_TRUE(values);
    EXPECT_TRUE(values->searchPaths == text);
}

TEST(HostileLengths, NestingIsReadUpToTheReadersLimitAndRefusedBeyond)
{
    const auto nested = [](std::size_t levels) {
        return R"({"ssoServer": {"bundleId": "b"}, "other": )" + std::string(levels, '[') + std::string(levels, ']') +
               '}';
    };
    const auto values = ParseClientConfig(nested(900)).values;
    ASSERT_TRUE(values);
    EXPECT_EQ(values->bundleId, "b");
    EXPECT_FALSE(ParseClientConfig(nested(1001)).values);
    EXPECT_FALSE(ParseClientConfig(nested(million)).values);
    EXPECT_FALSE(ParseClientConfig(std::string(million, '[')).values);
    EXPECT_FALSE(ParseClientConfig(Repeated(R"({"a":)", million)).values);
}

TEST(HostileLengths, ANumberOfAMillionDigitsCostsItsKeyAloneAndNoTime)
{
    const std::string digits(million, '9');
    for (const std::string& number : {digits, "-" + digits, "1." + digits, "1e" + digits, "0." + digits + "e5"})
    {
        const auto values = ParseClientConfig("// \" \r\n/* \" */{\"ssoServer\": {\"bundleId\": " + number +
                                              R"(, "searchPaths": "s"}})")
                                .values;
        ASSERT_TRUE(values) << number.substr(0, 8);
        EXPECT_EQ(values->bundleId, "") << number.substr(0, 8);
        EXPECT_EQ(values->searchPaths, "s") << number.substr(0, 8);
    }
}

TEST(HostileLengths, AMillionDigitsThatAreNoNumberAreRefusedAtOnce)
{
    const std::string digits(million, '9');
    for (const std::string& number : {digits + 'e', "-." + digits + "e+", "-e" + digits, "1." + digits + "E-"})
        EXPECT_FALSE(ParseJson("[1, " + number + ", 2]").root) << number.substr(0, 8);
}

TEST(HostileLengths, ManyNumbersOutOfRangeTakeNoTime)
{
    const auto root = ParseJson('[' + Repeated("1e999,", many) + "1]").root;
    ASSERT_TRUE(root);
    EXPECT_EQ(root->size(), many + 1);
}

TEST(HostileLengths, AdjacentCommentsHideNoNumber)
{
    // Without the limit the parser would accept this value.
    const std::string number = '1' + std::string(1000, '0') + "e-990";
    for (const std::string comments : {"", "/**//**/", "/***//* */", "/*/*//**/", "/**//*\n*/", "/**/ /**//**/"})
    {
        for (const std::string& text : {comments + '[' + number + ']', '[' + comments + number + ']'})
        {
            const auto root = ParseJson(text).root;
            ASSERT_TRUE(root) << comments;
            EXPECT_TRUE(IsNumberOutOfRange((*root)[0])) << comments;
        }
    }
    EXPECT_TRUE(ParseJson("/**//**/[1/**//**/, 2]/**//**/").root);
    EXPECT_TRUE(ParseJson("/*" + number + "*//*" + number + "*//" + '/' + number + "\n[1]").root);
}

TEST(HostileLengths, DigitsThatAreNoNumberMayBeMany)
{
    const std::string digits(5000, '9');
    const auto values = ParseClientConfig("//" + digits + "\n/*" + digits +
                                          R"(*/{"ssoServer": {"searchPaths": "\"", "bundleId": ")" + digits + R"("}})")
                            .values;
    ASSERT_TRUE(values);
    EXPECT_EQ(values->bundleId, digits);
}

TEST(HostileLengths, ANumberOfAThousandCharactersIsReadAsItStands)
{
    const auto root = ParseJson("[1" + std::string(994, '0') + "e-990, 1" + std::string(995, '0') + "e-990]").root;
    ASSERT_TRUE(root);
    EXPECT_DOUBLE_EQ((*root)[0].asDouble(), 10000);
    EXPECT_TRUE(IsNumberOutOfRange((*root)[1]));
}

TEST(HostileLengths, ALineOfAMegabyteThatTheStreamTakesIsWritten)
{
    std::wostringstream stream;
    WriteConsoleLine(stream, std::wstring(million, L'\u4E2D'));
    EXPECT_EQ(stream.str().size(), million + 1);
}

} // namespace OrlindexTest
