// Version texts: splitting, joining, comparing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "base/Versions.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::CompareVersions;
using Kestrany::IdentityServices::JoinVersion;
using Kestrany::IdentityServices::SplitVersion;
using Kestrany::IdentityServices::VersionParts;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

int Compare(const std::string& a, const std::string& b, int limit = -1)
{
    return CompareVersions(SplitVersion(a), SplitVersion(b), limit);
}

void ExpectLess(const std::string& a, const std::string& b)
{
    EXPECT_EQ(Compare(a, b), -1) << a << " against " << b;
    EXPECT_EQ(Compare(b, a), 1) << b << " against " << a;
}

void ExpectEqual(const std::string& a, const std::string& b)
{
    EXPECT_EQ(Compare(a, b), 0) << a << " against " << b;
    EXPECT_EQ(Compare(b, a), 0) << b << " against " << a;
}

} // namespace

TEST(SplitVersion, SplitsAtEveryPoint)
{
    EXPECT_THAT(SplitVersion("1.11.13.3"), ElementsAre("1", "11", "13", "3"));
    EXPECT_THAT(SplitVersion("7"), ElementsAre("7"));
    EXPECT_THAT(SplitVersion("1.2-beta.x"), ElementsAre("1", "2-beta", "x"));
}

TEST(SplitVersion, KeepsEmptyParts)
{
    EXPECT_THAT(SplitVersion("1..2"), ElementsAre("1", "", "2"));
    EXPECT_THAT(SplitVersion("1."), ElementsAre("1", ""));
    EXPECT_THAT(SplitVersion(".1"), ElementsAre("", "1"));
    EXPECT_THAT(SplitVersion("."), ElementsAre("", ""));
}

TEST(SplitVersion, EmptyTextHasNoParts)
{
    EXPECT_THAT(SplitVersion(""), IsEmpty());
}

TEST(JoinVersion, UndoesSplitVersion)
{
    for (const std::string text : {"", "1", "1.11.13.3", "1..2", ".", "1.", ".1"})
        EXPECT_EQ(JoinVersion(SplitVersion(text)), text);
}

TEST(CompareVersions, TenIsGreaterThanNine)
{
    ExpectLess("1.9", "1.10");
    ExpectLess("2.0.9", "2.0.10");
    ExpectLess("1.9.0", "1.10.0");
    ExpectLess("9", "10");
}

TEST(CompareVersions, EqualTextsAreEqual)
{
    ExpectEqual("1.11.13.3", "1.11.13.3");
    ExpectEqual("", "");
    ExpectEqual("1..2", "1..2");
}

TEST(CompareVersions, EarlierPartsDecide)
{
    ExpectLess("1.99.99", "2.0.0");
    ExpectLess("1.2.99", "1.3");
}

TEST(CompareVersions, AMissingPartIsLessThanZero)
{
    ExpectLess("1.2", "1.2.0");
    ExpectLess("1.11.13.3", "1.11.13.3.0");
    ExpectLess("", "0");
}

TEST(CompareVersions, AnEmptyPartIsLessThanAnyOtherAndEqualToAMissingOne)
{
    ExpectLess("1.", "1.0");
    ExpectLess("1.", "1.a");
    ExpectLess("1..5", "1.0.5");
    ExpectEqual("1.", "1");
    ExpectEqual("1...", "1");
}

TEST(CompareVersions, EqualNumbersAreComparedAsText)
{
    ExpectLess("1.02", "1.2");
    ExpectLess("01", "1");
    ExpectLess("001", "01");
    ExpectLess("1", "1a");
    ExpectLess("+1", "1");
    ExpectLess(" 1", "1");
}

TEST(CompareVersions, LeadingDigitsDecideBeforeTheRestOfThePart)
{
    ExpectLess("9z", "10a");
    ExpectLess("1.9-release", "1.10-alpha");
    ExpectLess("2 ", "10 ");
    ExpectLess("-1", "0");
    ExpectLess("-2", "-1");
}

TEST(CompareVersions, PartsWithoutDigitsAreComparedAsTextWithoutCase)
{
    ExpectEqual("1.ABC", "1.abc");
    ExpectEqual("1.AbC", "1.aBc");
    ExpectLess("1.abc", "1.ABD");
    ExpectLess("1.ABC", "1.abd");
    ExpectLess("1.ab", "1.ABC");
    ExpectLess("1.a2", "1.B10");
}

TEST(CompareVersions, ANumberAgainstATextIsComparedAsText)
{
    ExpectLess("1.5", "1.abc");
    ExpectLess("1.100", "1.abc");
    ExpectLess("1.-x", "1.5");
}

TEST(CompareVersions, OnlyAsciiCaseIsIgnoredAndBytesAreUnsigned)
{
    ExpectLess("1.\xC3\x84", "1.\xC3\xA4");
    ExpectLess("1.z", "1.\xC3\x84");
    ExpectLess("1.[", "1.Z");
    ExpectLess("1.[", "1._");
    ExpectLess("1._", "1.a");
}

TEST(CompareVersions, TheDifferenceOfExtremeNumbersDoesNotOverflow)
{
    ExpectLess("-9223372036854775808", "9223372036854775807");
    ExpectLess("-1", "9223372036854775807");
    ExpectLess("-9223372036854775808", "1");
    ExpectLess("9223372036854775806", "9223372036854775807");
}

TEST(CompareVersions, NumbersOutOfRangeAreComparedAsText)
{
    ExpectLess("9223372036854775808", "99");
    ExpectLess("2", "9223372036854775808");
    ExpectLess("1000000000000000000000", "2");
    ExpectLess("-99999999999999999999", "1");
    ExpectLess("18446744073709551616", "18446744073709551617");
}

TEST(CompareVersions, APositiveLimitComparesOnlySoManyParts)
{
    EXPECT_EQ(Compare("1.11.13.3", "1.11", 2), 0);
    EXPECT_EQ(Compare("1.11.13.3", "1.12", 2), -1);
    EXPECT_EQ(Compare("1.11.13.3", "1.11", 3), 1);
    EXPECT_EQ(Compare("2.1", "1.9", 1), 1);
    EXPECT_EQ(Compare("1.1", "1.9", 1), 0);
}

TEST(CompareVersions, ALimitBeyondTheLongerListComparesAllParts)
{
    EXPECT_EQ(Compare("1.2", "1.2.0", 3), -1);
    EXPECT_EQ(Compare("1.2", "1.2.0", 100), -1);
    EXPECT_EQ(Compare("1.2", "1.2", 2147483647), 0);
    EXPECT_EQ(Compare("1", "1.0", 2), -1) << "a part that both are asked for and one lacks is an empty one";
}

TEST(CompareVersions, ALimitThatIsNotPositiveComparesAllParts)
{
    for (const int limit : {-1, 0, -7})
        EXPECT_EQ(Compare("1.2.3", "1.2.4", limit), -1) << limit;
}

TEST(CompareVersions, AZeroByteIsAByteLikeOthers)
{
    EXPECT_EQ(CompareVersions({std::string("1\0a", 3)}, {std::string("1\0b", 3)}), -1);
    EXPECT_EQ(CompareVersions({"1"}, {std::string("1\0", 2)}), -1);
}

TEST(CompareVersions, SwappedArgumentsGiveTheOppositeResult)
{
    std::mt19937 random(20240611);
    const std::string alphabet = "0129aAzZ.+- \xC3";
    std::uniform_int_distribution<std::size_t> letter(0, alphabet.size() - 1);
    std::uniform_int_distribution<int> length(0, 7);
    const auto text = [&] {
        std::string made(static_cast<std::size_t>(length(random)), '\0');
        for (char& character : made)
            character = alphabet[letter(random)];
        return made;
    };
    for (int i = 0; i < 5000; ++i)
    {
        const std::string a = text();
        const std::string b = text();
        ASSERT_EQ(Compare(a, b), -Compare(b, a)) << '"' << a << "\" against \"" << b << '"';
        ASSERT_EQ(Compare(a, a), 0) << '"' << a << '"';
    }
}

} // namespace OrlindexTest
