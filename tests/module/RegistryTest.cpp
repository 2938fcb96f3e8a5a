// The scan of versioned registry subkeys for the latest installation.

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "ForeignLocale.h"
#include "Imports.h"
#include "UserKey.h"
#include "locate/Registry.h"
#include "support/Text.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::GetLatestRegistryLocation;
using Kestrany::IdentityServices::LatestRegistryLocation;
using testing::ElementsAre;

namespace {

struct Latest
{
    std::string version;
    std::string location;

    bool operator==(const Latest& other) const { return version == other.version && location == other.location; }
};

void PrintTo(const Latest& latest, std::ostream* stream)
{
    *stream << latest.version << " at " << latest.location;
}

std::optional<Latest> Find(const std::wstring& keyText)
{
    const LatestRegistryLocation latest = GetLatestRegistryLocation(keyText);
    if (!latest.found)
        return std::nullopt;
    return Latest{latest.version, latest.location};
}

std::wstring Slashed(std::wstring text)
{
    for (wchar_t& character : text)
        if (character == L'\\')
            character = L'/';
    return text;
}

LSTATUS LetThrough(const std::wstring&, REGSAM)
{
    return ERROR_SUCCESS;
}

/// Makes this process see what a 32-bit process sees of a key that only exists in the 64-bit view.
LSTATUS Only64BitView(const std::wstring&, REGSAM access)
{
    return access & KEY_WOW64_64KEY ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

} // namespace

class RegistryLocation : public testing::Test
{
protected:
    std::optional<Latest> Find() const { return OrlindexTest::Find(key.Text()); }

    /// The name of a subkey, in the platform's order.
    std::wstring SubkeyAt(DWORD index) const
    {
        wchar_t name[255] = {};
        DWORD length = 255;
        HKEY opened = nullptr;
        EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, key.Text().substr(18).c_str(), 0, KEY_READ, &opened), ERROR_SUCCESS);
        EXPECT_EQ(RegEnumKeyExW(opened, index, name, &length, nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
        RegCloseKey(opened);
        return name;
    }

    const UserKey key;
};

TEST_F(RegistryLocation, VersionsCompareAsNumbers)
{
    key.AddVersion(L"2.0.9", L"C:\\nine");
    key.AddVersion(L"2.0.10", L"C:\\ten");
    EXPECT_EQ(Find(), (Latest{"2.0.10", "C:\\ten"}));
}

TEST_F(RegistryLocation, TheRootsNameIsComparedWithoutTheProcessesLocale)
{
    key.AddVersion(L"1", L"C:\\one");
    const std::wstring root = L"HKEY_CURRENT_USER";
    const ForeignLocale locale;
    EXPECT_EQ(OrlindexTest::Find(L"hkey_Current_user" + key.Text().substr(root.size())), (Latest{"1", "C:\\one"}));
}

TEST_F(RegistryLocation, TheOrderOfCreationDoesNotMatter)
{
    key.AddVersion(L"2.0.10", L"C:\\ten");
    key.AddVersion(L"1.99", L"C:\\old");
    key.AddVersion(L"2.0.9", L"C:\\nine");
    EXPECT_EQ(Find(), (Latest{"2.0.10", "C:\\ten"}));
}

TEST_F(RegistryLocation, ASubkeyWithoutLocationIsIgnored)
{
    key.AddVersion(L"2.0.9", L"C:\\nine");
    key.AddVersion(L"3.0");
    EXPECT_EQ(Find(), (Latest{"2.0.9", "C:\\nine"}));
}

TEST_F(RegistryLocation, NamesThatAreNoVersionsCompareAsText)
{
    key.AddVersion(L"2.0", L"C:\\two");
    key.AddVersion(L"beta", L"C:\\beta");
    EXPECT_EQ(Find(), (Latest{"beta", "C:\\beta"}));
}

TEST_F(RegistryLocation, NothingIsFoundWithoutSubkeysOrLocations)
{
    EXPECT_EQ(Find(), std::nullopt);
    key.AddVersion(L"1.0");
    EXPECT_EQ(Find(), std::nullopt);
}

TEST_F(RegistryLocation, WithoutALocationBothTextsAreEmpty)
{
    const LatestRegistryLocation latest = GetLatestRegistryLocation(key.Text());
    EXPECT_FALSE(latest.found);
    EXPECT_EQ(latest.version, "");
    EXPECT_EQ(latest.location, "");
}

TEST_F(RegistryLocation, AMissingKeyIsNotFound)
{
    EXPECT_EQ(OrlindexTest::Find(key.Text() + L"\\missing"), std::nullopt);
}

TEST_F(RegistryLocation, AnyOtherRootIsRefused)
{
    key.AddVersion(L"1.0", L"C:\\one");
    const std::wstring path = key.Text().substr(key.Text().find(L'\\'));
    for (const wchar_t* root : {L"HKEY_USERS", L"HKEY_CLASSES_ROOT", L"HKCU", L"HKEY_CURRENT_USE",
                                L"HKEY_CURRENT_USERS", L"", L" HKEY_CURRENT_USER", L"\\HKEY_CURRENT_USER"})
        EXPECT_EQ(OrlindexTest::Find(root + path), std::nullopt) << testing::PrintToString(root);
}

TEST_F(RegistryLocation, AnEmptyKeyTextIsRefused)
{
    EXPECT_EQ(OrlindexTest::Find(L""), std::nullopt);
}

TEST_F(RegistryLocation, TheRootIsWrittenInAnyCase)
{
    key.AddVersion(L"1.0", L"C:\\one");
    EXPECT_TRUE(OrlindexTest::Find(L"hkey_Current_user" + key.Text().substr(key.Text().find(L'\\'))));
}

TEST_F(RegistryLocation, SlashesSeparateLikeBackslashes)
{
    key.AddVersion(L"1.0", L"C:/one");
    EXPECT_EQ(OrlindexTest::Find(Slashed(key.Text())), (Latest{"1.0", "C:/one"})) << "the location keeps its own";
}

TEST_F(RegistryLocation, AKeyBelowTheLocalMachineIsFound)
{
    // A key that every Windows has; its subkeys have no "Location".
    EXPECT_EQ(OrlindexTest::Find(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT"), std::nullopt);
    const RegistryOpenings openings([](const std::wstring& path, REGSAM) {
        EXPECT_EQ(path, L"SOFTWARE\\Kestrany\\Pellwick");
        return ERROR_ACCESS_DENIED;
    });
    EXPECT_EQ(OrlindexTest::Find(L"HKEY_LOCAL_MACHINE/SOFTWARE/Kestrany\\Pellwick"), std::nullopt);
    EXPECT_THAT(openings.Accesses(), ElementsAre(ReadAccess));
}

TEST_F(RegistryLocation, TheLocalMachineIsWrittenInAnyCase)
{
    std::vector<HKEY> roots;
    const RegOpenKeyExDouble openings(
        [&roots](HKEY root, const wchar_t*, DWORD, REGSAM, HKEY*) -> LSTATUS {
            roots.push_back(root);
            return ERROR_ACCESS_DENIED;
        },
        Executable());
    EXPECT_EQ(OrlindexTest::Find(L"hkey_local_Machine\\SOFTWARE\\x"), std::nullopt);
    EXPECT_THAT(roots, ElementsAre(HKEY_LOCAL_MACHINE));
}

TEST_F(RegistryLocation, ANameInAnyScriptSurvivesAsUtf8)
{
    key.AddVersion(L"1.\u4E2D", L"C:\\\u4E2D\u00E4\xD83D\xDE00");
    EXPECT_EQ(Find(), (Latest{"1.\xE4\xB8\xAD", "C:\\\xE4\xB8\xAD\xC3\xA4\xF0\x9F\x98\x80"}));
}

TEST_F(RegistryLocation, AnExpandableTextIsTakenAsItStands)
{
    const wchar_t text[] = L"%ProgramFiles%\\Pellwick";
    key.AddVersion(L"1.0", REG_EXPAND_SZ, text, sizeof text);
    EXPECT_EQ(Find(), (Latest{"1.0", "%ProgramFiles%\\Pellwick"}));
}

TEST_F(RegistryLocation, AValueOfAnotherTypeIsIgnored)
{
    const wchar_t text[] = L"C:\\text\0";
    key.AddVersion(L"1.0", L"C:\\one");
    key.AddVersion(L"2.0", REG_BINARY, text, sizeof text);
    key.AddVersion(L"2.1", REG_DWORD, text, sizeof(DWORD));
    key.AddVersion(L"2.2", REG_MULTI_SZ, text, sizeof text);
    EXPECT_EQ(Find(), (Latest{"1.0", "C:\\one"}));
}

TEST_F(RegistryLocation, ATextWithoutTerminatorEndsWithTheValue)
{
    key.AddVersion(L"1.0", REG_SZ, L"C:\\one!!", 6 * sizeof(wchar_t));
    EXPECT_EQ(Find(), (Latest{"1.0", "C:\\one"}));
}

TEST_F(RegistryLocation, AnOddByteAtTheEndDoesNotCount)
{
    key.AddVersion(L"1.0", REG_SZ, L"C:\\one", 5 * sizeof(wchar_t) + 1);
    EXPECT_EQ(Find(), (Latest{"1.0", "C:\\on"}));
}

TEST_F(RegistryLocation, ATextEndsAtItsFirstZero)
{
    const wchar_t text[] = L"C:\\one\0two";
    key.AddVersion(L"1.0", REG_SZ, text, sizeof text);
    EXPECT_EQ(Find(), (Latest{"1.0", "C:\\one"}));
}

TEST_F(RegistryLocation, AnEmptyLocationCounts)
{
    key.AddVersion(L"1.0", L"C:\\one");
    key.AddVersion(L"2.0", L"");
    EXPECT_EQ(Find(), (Latest{"2.0", ""}));
}

TEST_F(RegistryLocation, ALocationOfNoOrOneByteIsEmpty)
{
    key.AddVersion(L"1.0", REG_SZ, L"", 0);
    EXPECT_EQ(Find(), (Latest{"1.0", ""}));
    key.AddVersion(L"2.0", REG_SZ, L"x", 1);
    EXPECT_EQ(Find(), (Latest{"2.0", ""}));
}

TEST_F(RegistryLocation, ALocationOf4090BytesIsReadAndALongerOneIgnored)
{
    const std::wstring text(3000, L'x');
    key.AddVersion(L"1.0", REG_SZ, text.data(), 4090);
    key.AddVersion(L"2.0", REG_SZ, text.data(), 4091);
    key.AddVersion(L"3.0", REG_SZ, text.data(), 4092);
    EXPECT_EQ(Find(), (Latest{"1.0", std::string(2045, 'x')}));
}

TEST_F(RegistryLocation, AVersionOf254CharactersIsReadAndALongerOneIgnored)
{
    const std::wstring longest = L"1." + std::wstring(252, L'1');
    key.AddVersion(L"0.1", L"C:\\short");
    key.AddVersion(longest, L"C:\\longest");
    key.AddVersion(L"2." + std::wstring(253, L'1'), L"C:\\too long");
    EXPECT_EQ(Find(), (Latest{"1." + std::string(252, '1'), "C:\\longest"}));
}

TEST_F(RegistryLocation, OfEqualVersionsTheLaterSubkeyWins)
{
    // Lone surrogates become the same replacement character, so that two names give one version.
    key.AddVersion(L"1.\xD800", L"C:\\first");
    key.AddVersion(L"1.\xD801", L"C:\\second");
    const auto latest = Find();
    ASSERT_TRUE(latest);
    EXPECT_EQ(latest->version, "1.\xEF\xBF\xBD");
    EXPECT_EQ(latest->location, SubkeyAt(1) == L"1.\xD801" ? "C:\\second" : "C:\\first");
}

TEST_F(RegistryLocation, OfEqualVersionsTheEarlierSubkeyKeepsItsVersionAndTheLaterOneGivesTheLocation)
{
    key.AddVersion(L"0.9", L"older");
    key.AddVersion(L"1.0", L"1.0");
    key.AddVersion(L"1.0.", L"1.0.");
    EXPECT_EQ(Find(), (Latest{ToUtf8(SubkeyAt(1)), ToUtf8(SubkeyAt(2))}));
    EXPECT_EQ(GetLatestRegistryLocation(key.Text()).key, key.Text() + L'\\' + SubkeyAt(2))
        << "the subkey that holds the location";
}

TEST_F(RegistryLocation, ASubkeyThatCannotBeEnumeratedDoesNotEndTheScan)
{
    key.AddVersion(L"1.0", L"C:\\one");
    key.AddVersion(L"2.0", L"C:\\two");
    key.AddVersion(L"3.0", L"C:\\three");
    const RegEnumKeyExDouble enumeration(
        [](HKEY opened, DWORD index, wchar_t* name, DWORD* length, DWORD* reserved, wchar_t* className,
           DWORD* classLength, FILETIME* written) -> LSTATUS {
            EXPECT_EQ(*length, 255u);
            return index == 0 ? ERROR_KEY_DELETED
                              : RegEnumKeyExDouble::Original(opened, index, name, length, reserved, className,
                                                             classLength, written);
        },
        Executable());
    EXPECT_EQ(Find(), (Latest{"3.0", "C:\\three"}));
}

TEST_F(RegistryLocation, ASubkeyThatCannotBeOpenedIsIgnored)
{
    key.AddVersion(L"1.0", L"C:\\one");
    key.AddVersion(L"2.0", L"C:\\two");
    const RegistryOpenings openings(
        [](const std::wstring& path, REGSAM) { return path == L"2.0" ? ERROR_ACCESS_DENIED : ERROR_SUCCESS; });
    EXPECT_EQ(Find(), (Latest{"1.0", "C:\\one"}));
    EXPECT_THAT(openings.Accesses(), ElementsAre(ReadAccess, QueryAccess, QueryAccess))
        << "no second try without WOW64";
}

TEST_F(RegistryLocation, UnderWow64AKeyThatExistsOnlyInThe64BitViewIsFound)
{
    key.AddVersion(L"1.0", L"C:\\one");
    const Wow64Process wow64;
    const RegistryOpenings openings(Only64BitView);
    EXPECT_EQ(Find(), (Latest{"1.0", "C:\\one"}));
    EXPECT_THAT(openings.Accesses(), ElementsAre(ReadAccess, ReadAccess64, QueryAccess, QueryAccess64));
}

TEST_F(RegistryLocation, UnderWow64AKeyThatOpensIsNotOpenedTwice)
{
    key.AddVersion(L"1.0", L"C:\\one");
    const Wow64Process wow64;
    const RegistryOpenings openings(LetThrough);
    EXPECT_EQ(Find(), (Latest{"1.0", "C:\\one"}));
    EXPECT_THAT(openings.Accesses(), ElementsAre(ReadAccess, QueryAccess));
}

TEST_F(RegistryLocation, UnderWow64The64BitViewIsTriedOnce)
{
    const Wow64Process wow64;
    const RegistryOpenings openings([](const std::wstring&, REGSAM) { return ERROR_FILE_NOT_FOUND; });
    EXPECT_EQ(Find(), std::nullopt);
    EXPECT_THAT(openings.Accesses(), ElementsAre(ReadAccess, ReadAccess64));
}

TEST_F(RegistryLocation, AFailedWow64QueryCountsAsNo)
{
    key.AddVersion(L"1.0", L"C:\\one");
    const FailingWow64Query query;
    const RegistryOpenings openings(Only64BitView);
    EXPECT_EQ(Find(), std::nullopt);
    EXPECT_THAT(openings.Accesses(), ElementsAre(ReadAccess));
}

TEST_F(RegistryLocation, EveryKeyThatWasOpenedIsClosed)
{
    key.AddVersion(L"1.0", L"C:\\one");
    key.AddVersion(L"2.0");
    key.AddVersion(L"3.0", L"C:\\three");
    int closings = 0;
    const RegCloseKeyDouble closing(
        [&closings](HKEY opened) {
            ++closings;
            return RegCloseKeyDouble::Original(opened);
        },
        Executable());
    const RegistryOpenings openings(
        [](const std::wstring& path, REGSAM) { return path == L"3.0" ? ERROR_ACCESS_DENIED : ERROR_SUCCESS; });
    EXPECT_TRUE(Find());
    EXPECT_THAT(openings.Accesses(), testing::SizeIs(4));
    EXPECT_EQ(closings, 3) << "the one that did not open is not closed";
}

} // namespace OrlindexTest
