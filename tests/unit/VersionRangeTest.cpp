// Which versions of the library a plugin build supports, and which build is chosen.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "load/VersionCompatibility.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

namespace {

const VersionParts sdk = SplitVersion("1.11.13.3");

VersionRange Range(const std::string& minVersion, const std::string& maxVersion,
                   const std::vector<std::string>& versions = {})
{
    VersionRange range = {SplitVersion(minVersion), SplitVersion(maxVersion), {}};
    for (const std::string& version : versions)
        range.versions.push_back(SplitVersion(version));
    return range;
}

VersionRange Listed(const std::vector<std::string>& versions)
{
    return Range("", "", versions);
}

VersionRange Serving()
{
    return Range("1.11", "1.11");
}

VersionRange NotServing()
{
    return Range("2", "2");
}

VersionCompatibilityEntry Entry(const std::vector<VersionRange>& compatible,
                                const std::vector<VersionRange>& excluded = {})
{
    return {L"module", L"path", SplitVersion("1"), compatible, excluded};
}

VersionCompatibilityEntry Build(const std::string& version, const VersionRange& range = Serving())
{
    return {L"module", L"path", SplitVersion(version), {range}, {}};
}

/// Index of the entry that is chosen; -1 for none.
std::ptrdiff_t Chosen(const std::vector<VersionCompatibilityEntry>& entries)
{
    const VersionCompatibilityEntry* const entry = ChooseEntry(entries, sdk);
    return entry ? entry - entries.data() : -1;
}

} // namespace

TEST(RangeMatches, ABoundComparesOnlyItsOwnParts)
{
    EXPECT_TRUE(RangeMatches(Range("1.10", "1.11"), sdk));
    EXPECT_TRUE(RangeMatches(Range("1.11", "1.11"), sdk));
    EXPECT_TRUE(RangeMatches(Range("1.11", ""), SplitVersion("1.11.0")));
    EXPECT_TRUE(RangeMatches(Range("1", "1"), sdk));
    EXPECT_TRUE(RangeMatches(Range("1.11.13.3", "1.11.13.3"), sdk));
}

TEST(RangeMatches, AMaximumOf1_10_99DoesNotMatch)
{
    EXPECT_FALSE(RangeMatches(Range("1.10", "1.10.99"), sdk));
    EXPECT_FALSE(RangeMatches(Range("", "1.10.99"), sdk));
}

TEST(RangeMatches, AMaximumOf1_11_13_2DoesNotMatch)
{
    EXPECT_FALSE(RangeMatches(Range("1.10", "1.11.13.2"), sdk));
}

TEST(RangeMatches, AMaximumOfMorePartsThanTheVersionMatches)
{
    EXPECT_TRUE(RangeMatches(Range("1.10", "1.11.13.3.0"), sdk));
}

TEST(RangeMatches, AMinimumOfMorePartsThanTheVersionDoesNotMatch)
{
    EXPECT_FALSE(RangeMatches(Range("1.11.13.3.0", ""), sdk));
}

TEST(RangeMatches, OnlyAMinimum)
{
    EXPECT_TRUE(RangeMatches(Range("1.11.13.3", ""), sdk));
    EXPECT_TRUE(RangeMatches(Range("1.9", ""), sdk));
    EXPECT_FALSE(RangeMatches(Range("1.11.13.4", ""), sdk));
    EXPECT_FALSE(RangeMatches(Range("2", ""), sdk));
}

TEST(RangeMatches, OnlyAMaximum)
{
    EXPECT_TRUE(RangeMatches(Range("", "1.11"), sdk));
    EXPECT_TRUE(RangeMatches(Range("", "2"), sdk));
    EXPECT_FALSE(RangeMatches(Range("", "1.9"), sdk));
}

TEST(RangeMatches, BothBoundsMustHold)
{
    EXPECT_FALSE(RangeMatches(Range("1.12", "2"), sdk));
    EXPECT_FALSE(RangeMatches(Range("1.9", "1.10"), sdk));
    EXPECT_FALSE(RangeMatches(Range("2", "1"), sdk));
}

TEST(RangeMatches, AListed1_11MatchesEvery1_11)
{
    for (const char* version : {"1.11", "1.11.0", "1.11.13.3", "1.11.99.1"})
        EXPECT_TRUE(RangeMatches(Listed({"1.11"}), SplitVersion(version))) << version;
    for (const char* version : {"1", "1.1", "1.12", "1.110", "2.11"})
        EXPECT_FALSE(RangeMatches(Listed({"1.11"}), SplitVersion(version))) << version;
}

TEST(RangeMatches, AListed1_11_13_4DoesNotMatch1_11_13_3)
{
    EXPECT_FALSE(RangeMatches(Listed({"1.11.13.4"}), sdk));
}

TEST(RangeMatches, AnyListedVersionMatches)
{
    EXPECT_TRUE(RangeMatches(Listed({"1.9", "2", "1.11"}), sdk));
    EXPECT_FALSE(RangeMatches(Listed({"1.9", "2", "1.12"}), sdk));
}

TEST(RangeMatches, AListedVersionOfMorePartsDoesNotMatch)
{
    EXPECT_FALSE(RangeMatches(Listed({"1.11.13.3.0"}), sdk));
}

TEST(RangeMatches, ListedVersionsCountBesidesTheBounds)
{
    EXPECT_TRUE(RangeMatches(Range("2", "3", {"1.11.13"}), sdk));
    EXPECT_TRUE(RangeMatches(Range("2", "", {"1.11.13"}), sdk));
    EXPECT_TRUE(RangeMatches(Range("1.11", "1.11", {"5"}), sdk)) << "bounds that hold suffice";
    EXPECT_FALSE(RangeMatches(Range("2", "3", {"5"}), sdk));
}

TEST(RangeMatches, AnEmptyVersionMatchesEveryRange)
{
    EXPECT_TRUE(RangeMatches(Range("2", "3"), {}));
    EXPECT_TRUE(RangeMatches(VersionRange(), {}));
}

TEST(RangeMatches, AnEmptyRangeMatchesNoVersion)
{
    EXPECT_FALSE(RangeMatches(VersionRange(), sdk));
}

TEST(RangesMatch, AnEntryWithoutRangesServesEveryVersion)
{
    EXPECT_TRUE(RangesMatch(Entry({}), sdk));
}

TEST(RangesMatch, AnEmptyVersionIsServedByEveryEntry)
{
    EXPECT_TRUE(RangesMatch(Entry({NotServing()}, {Serving()}), {}));
}

TEST(RangesMatch, AnyCompatibleRangeSuffices)
{
    EXPECT_TRUE(RangesMatch(Entry({Serving()}), sdk));
    EXPECT_TRUE(RangesMatch(Entry({NotServing(), Serving()}), sdk));
    EXPECT_TRUE(RangesMatch(Entry({Serving(), NotServing()}), sdk));
    EXPECT_FALSE(RangesMatch(Entry({NotServing(), NotServing()}), sdk));
}

TEST(RangesMatch, EmptyRangesDoNotCount)
{
    EXPECT_TRUE(RangesMatch(Entry({VersionRange()}), sdk)) << "as if there were no range";
    EXPECT_TRUE(RangesMatch(Entry({VersionRange(), VersionRange()}), sdk));
    EXPECT_FALSE(RangesMatch(Entry({VersionRange(), NotServing()}), sdk));
    EXPECT_FALSE(RangesMatch(Entry({NotServing(), VersionRange()}), sdk));
    EXPECT_TRUE(RangesMatch(Entry({VersionRange(), Serving()}), sdk));
}

TEST(RangesMatch, AnExcludedRangeOutweighsACompatibleOne)
{
    EXPECT_FALSE(RangesMatch(Entry({Serving()}, {Serving()}), sdk));
    EXPECT_FALSE(RangesMatch(Entry({Serving()}, {NotServing(), Serving()}), sdk));
    EXPECT_FALSE(RangesMatch(Entry({Serving()}, {VersionRange(), Serving()}), sdk));
    EXPECT_FALSE(RangesMatch(Entry({}, {Serving()}), sdk));
    EXPECT_TRUE(RangesMatch(Entry({Serving()}, {Listed({"1.11.13.4"})}), sdk));
}

TEST(RangesMatch, ExcludedRangesThatAreEmptyOrOthersExcludeNothing)
{
    EXPECT_TRUE(RangesMatch(Entry({Serving()}, {VersionRange()}), sdk));
    EXPECT_TRUE(RangesMatch(Entry({Serving()}, {NotServing()}), sdk));
    EXPECT_FALSE(RangesMatch(Entry({NotServing()}, {NotServing()}), sdk)) << "not excluded is not included";
}

TEST(ChooseEntry, TheHigherVersionWinsWhateverItsPlaceInTheFile)
{
    EXPECT_EQ(Chosen({Build("1.9"), Build("1.10")}), 1);
    EXPECT_EQ(Chosen({Build("1.10"), Build("1.9")}), 0);
    EXPECT_EQ(Chosen({Build("1"), Build("3"), Build("2")}), 1);
}

TEST(ChooseEntry, OfEqualVersionsTheEarlierInTheFileWins)
{
    EXPECT_EQ(Chosen({Build("2.0"), Build("2.0")}), 0);
    EXPECT_EQ(Chosen({Build("1"), Build("2.0"), Build("2.0")}), 1);
    EXPECT_EQ(Chosen({Build("2.RC"), Build("2.rc")}), 0) << "equal without regard to case";
}

TEST(ChooseEntry, AnEntryThatDoesNotServeIsPassedOver)
{
    EXPECT_EQ(Chosen({Build("3", NotServing()), Build("1"), Build("2")}), 2);
    EXPECT_EQ(Chosen({Build("1"), Build("3", NotServing())}), 0);
}

TEST(ChooseEntry, NoneWhereNoneServes)
{
    EXPECT_EQ(Chosen({}), -1);
    EXPECT_EQ(Chosen({Build("3", NotServing()), Build("1", NotServing())}), -1);
}

} // namespace OrlindexTest
