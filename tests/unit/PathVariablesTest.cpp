// Replacing references to path variables.

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "locate/PathVariables.h"
#include "support/PathVariablePattern.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::BeginsWithPathVariable;
using Kestrany::IdentityServices::ExpandPathVariables;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Values of the variables that these tests know.
bool KnownValue(const std::wstring& name, std::wstring& value)
{
    static const std::map<std::wstring, std::wstring> values = {
        {L"a", L"ONE"}, {L"b", L"TWO"}, {L"ab", L"%a%"}, {L"long", std::wstring(1000, L'x')}};
    const auto known = values.find(name);
    if (known == values.end())
        return false;
    value = known->second;
    return true;
}

Expansion Expand(const std::wstring& text)
{
    Expansion expansion = {text, 0, {}};
    expansion.matches =
        ExpandPathVariables(expansion.text, [&expansion](const std::wstring& name, std::wstring& value) {
            EXPECT_EQ(value, L"") << "a lookup starts with nothing";
            expansion.names.push_back(name);
            return KnownValue(name, value);
        });
    return expansion;
}

void ExpectUntouched(const std::wstring& text)
{
    const Expansion expansion = Expand(text);
    EXPECT_EQ(expansion.text, text);
    EXPECT_EQ(expansion.matches, 0);
    EXPECT_THAT(expansion.names, IsEmpty());
}

} // namespace

TEST(ExpandPathVariables, AReferenceIsReplacedByItsValue)
{
    EXPECT_EQ(Expand(L"%a%"), (Expansion{L"ONE", 1, {L"a"}}));
    EXPECT_EQ(Expand(L"x%a%y"), (Expansion{L"xONEy", 1, {L"a"}}));
    EXPECT_EQ(Expand(L"%a%\\folder\\%b%.dll"), (Expansion{L"ONE\\folder\\TWO.dll", 2, {L"a", L"b"}}));
}

TEST(ExpandPathVariables, ATextWithoutReferenceIsUntouched)
{
    ExpectUntouched(L"");
    ExpectUntouched(L"C:\\folder");
}

TEST(ExpandPathVariables, ATextWithOnePercentSignIsUntouched)
{
    ExpectUntouched(L"%");
    ExpectUntouched(L"100% sure");
    ExpectUntouched(L"%a");
    ExpectUntouched(L"a%");
}

TEST(ExpandPathVariables, TwoReferencesBackToBackBothExpand)
{
    EXPECT_EQ(Expand(L"%a%%b%"), (Expansion{L"ONETWO", 2, {L"a", L"b"}}));
}

TEST(ExpandPathVariables, AnUnknownNameStaysAndIsCounted)
{
    EXPECT_EQ(Expand(L"%Unknown%"), (Expansion{L"%Unknown%", 1, {L"Unknown"}}));
    EXPECT_EQ(Expand(L"%a%%Unknown%%b%"), (Expansion{L"ONE%Unknown%TWO", 3, {L"a", L"Unknown", L"b"}}));
}

TEST(ExpandPathVariables, AnEmptyNameStaysAndIsCounted)
{
    EXPECT_EQ(Expand(L"%%"), (Expansion{L"%%", 1, {L""}}));
    EXPECT_EQ(Expand(L"%%a%"), (Expansion{L"%%a%", 1, {L""}})) << "the second sign belongs to the first reference";
    EXPECT_EQ(Expand(L"%%%%"), (Expansion{L"%%%%", 2, {L"", L""}}));
}

TEST(ExpandPathVariables, TheShortestReferenceIsTaken)
{
    EXPECT_EQ(Expand(L"%a%b%a%"), (Expansion{L"ONEbONE", 2, {L"a", L"a"}}));
    EXPECT_EQ(Expand(L"%x%a%"), (Expansion{L"%x%a%", 1, {L"x"}}))
        << "what follows a match is not searched from inside it";
}

TEST(ExpandPathVariables, AValueIsNotExpandedAgain)
{
    EXPECT_EQ(Expand(L"%ab%"), (Expansion{L"%a%", 1, {L"ab"}}));
    EXPECT_EQ(Expand(L"%ab%b%"), (Expansion{L"%a%b%", 1, {L"ab"}})) << "nor joined with the text behind it";
}

TEST(ExpandPathVariables, NamesAreHandedOnAsTheyAreWritten)
{
    EXPECT_EQ(Expand(L"% a %%A%"), (Expansion{L"% a %%A%", 2, {L" a ", L"A"}}));
}

TEST(ExpandPathVariables, ALineTerminatorEndsNoReference)
{
    ExpectUntouched(L"%a\n%");
    ExpectUntouched(L"%a\r%");
    ExpectUntouched(L"%\n%\r%");
    EXPECT_EQ(Expand(L"%a\n%a%"), (Expansion{L"%a\nONE", 1, {L"a"}})) << "the sign before the line end is passed over";
    EXPECT_EQ(Expand(L"%a%\n%b%"), (Expansion{L"ONE\nTWO", 2, {L"a", L"b"}}));
}

TEST(ExpandPathVariables, TheUnicodeLineAndParagraphSeparatorsAreLineTerminators)
{
    ExpectUntouched(L"%a\u2028%");
    ExpectUntouched(L"%a\u2029b%");
    EXPECT_EQ(Expand(L"%x\u2028%a%\u2029%b%"), (Expansion{L"%x\u2028ONE\u2029TWO", 2, {L"a", L"b"}}));
    EXPECT_EQ(Expand(L"%\u0085\t\v\f%").matches, 1) << "these are not";
}

TEST(ExpandPathVariables, AFailedLookupLeavesTheReferenceWhateverItFilledIn)
{
    std::wstring text = L"<%a%>";
    EXPECT_EQ(ExpandPathVariables(text,
                                  [](const std::wstring&, std::wstring& value) {
                                      value = L"ignored";
                                      return false;
                                  }),
              1);
    EXPECT_EQ(text, L"<%a%>");
}

TEST(ExpandPathVariables, ZeroCharactersAreOrdinary)
{
    const std::wstring text(L"%\0%\0", 4);
    EXPECT_EQ(Expand(text), (Expansion{text, 1, {std::wstring(1, L'\0')}}));
}

TEST(ExpandPathVariables, EveryEntryOfAListIsExpandedInOrder)
{
    std::vector<std::wstring> texts = {L"%b%", L"", L"plain", L"%a%%b%", L"%none%"};
    std::vector<std::wstring> names;
    ExpandPathVariables(texts, [&names](const std::wstring& name, std::wstring& value) {
        names.push_back(name);
        return KnownValue(name, value);
    });
    EXPECT_THAT(texts, ElementsAre(L"TWO", L"", L"plain", L"ONETWO", L"%none%"));
    EXPECT_THAT(names, ElementsAre(L"b", L"a", L"b", L"none"));
}

TEST(ExpandPathVariables, AgreesWithTheRegularExpression)
{
    std::mt19937 random(1113);
    const std::wstring alphabet = L"%%%ab\n\r";
    std::uniform_int_distribution<std::size_t> letter(0, alphabet.size() - 1);
    std::uniform_int_distribution<std::size_t> length(0, 16);
    for (int i = 0; i < 5000; ++i)
    {
        std::wstring text(length(random), L'\0');
        for (wchar_t& character : text)
            character = alphabet[letter(random)];
        const Expansion expected = ExpandByPattern(text, KnownValue);
        const Expansion actual = Expand(text);
        ASSERT_EQ(actual.text, expected.text) << testing::PrintToString(text);
        ASSERT_EQ(actual.matches, expected.matches) << testing::PrintToString(text);
        ASSERT_EQ(actual.names, expected.names) << testing::PrintToString(text);
    }
}

TEST(ExpandPathVariables, ATextOfAMegabyteIsExpanded)
{
    constexpr std::size_t megabyte = 1024 * 1024;
    const std::wstring name(megabyte, L'n');
    const Expansion one = Expand(L'%' + name + L"%%a%");
    EXPECT_EQ(one.matches, 2);
    EXPECT_TRUE(one.text == L'%' + name + L"%ONE");

    ExpectUntouched(L'%' + name);

    const Expansion many = Expand(std::wstring(megabyte, L'%'));
    EXPECT_EQ(many.matches, static_cast<std::int32_t>(megabyte / 2));
    EXPECT_TRUE(many.text == std::wstring(megabyte, L'%'));
}

TEST(ExpandPathVariables, AMegabyteOfBrokenReferencesIsPassedOver)
{
    std::wstring text;
    while (text.size() < 1024 * 1024)
        text += L"%a\n";
    ExpectUntouched(text);
}

TEST(ExpandPathVariables, ATextBeginsWithAReferenceWhereItIsAWholeOne)
{
    for (const wchar_t* text : {L"%a%", L"%%", L"%unknown%\\folder", L"%a b%x%"})
        EXPECT_TRUE(BeginsWithPathVariable(text)) << testing::PrintToString(text);
    for (const wchar_t* text : {L"", L"%", L"%a", L"x%a%", L"%a\n%b%", L"\\%a%"})
        EXPECT_FALSE(BeginsWithPathVariable(text)) << testing::PrintToString(text);
}

} // namespace OrlindexTest
