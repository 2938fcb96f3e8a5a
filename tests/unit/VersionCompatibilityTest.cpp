// Parsing the elements of a version compatibility file.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

#include "base/Json.h"
#include "load/VersionCompatibility.h"

namespace Kestrany::IdentityServices {

void PrintTo(EntryDefect defect, std::ostream* stream)
{
    const char* const names[] = {"ModuleBlank", "ModulePathBlank", "VersionBlank", "RangeMissing", "RangeInvalid"};
    *stream << names[static_cast<int>(defect)];
}

} // namespace Kestrany::IdentityServices

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

const std::string range = R"("compatibleSsoServicesVersion": {"minVersion": "1.11"})";
const std::string sound = R"({"module": "Sound", "modulePath": "sound.dll", "version": "2.0", )" + range + '}';

struct Parsed
{
    std::vector<VersionCompatibilityEntry> entries;
    std::vector<EntryDefect> defects;
};

/// Replaces the platform's conversion, which is not part of the portable logic.
std::wstring WidenAscii(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

Parsed ParseText(const std::string& json, bool wow64 = false)
{
    Parsed parsed;
    const auto root = ParseJson(json).root;
    if (!root)
    {
        ADD_FAILURE() << "no JSON: " << json;
        return parsed;
    }
    ParseEntries(*root, "ssoClientPlugin", wow64, WidenAscii, [&parsed](ParsedEntry&& entry) {
        if (entry.defect)
            parsed.defects.push_back(*entry.defect);
        else
            parsed.entries.push_back(std::move(entry.entry));
    });
    return parsed;
}

Parsed ParseElements(const std::string& elements, bool wow64 = false)
{
    return ParseText(R"({"ssoClientPlugin": [)" + elements + "]}", wow64);
}

/// Parses an element beside a valid one, which must count whatever is wrong with the other.
EntryDefect DefectOf(const std::string& element)
{
    const Parsed parsed = ParseElements(element + ", " + sound);
    EXPECT_THAT(parsed.entries, SizeIs(1)) << element;
    EXPECT_THAT(parsed.defects, SizeIs(1)) << element;
    EXPECT_TRUE(!parsed.entries.empty() && parsed.entries[0].module == L"Sound") << element;
    return parsed.defects.empty() ? static_cast<EntryDefect>(-1) : parsed.defects[0];
}

std::string ElementWith(const std::string& key, const std::string& value)
{
    std::string element;
    const std::pair<std::string, std::string> members[] = {{"module", R"("M")"},
                                                           {"modulePath", R"("m.dll")"},
                                                           {"version", R"("2")"},
                                                           {"compatibleSsoServicesVersion", R"({"versions": ["1"]})"}};
    for (const auto& [name, standard] : members)
        element += (element.empty() ? "" : ", ") + ('"' + name + "\": ") + (name == key ? value : standard);
    return '{' + element + '}';
}

std::string ElementWithRange(const std::string& value)
{
    return ElementWith("compatibleSsoServicesVersion", value);
}

const std::vector<std::string> notConvertible = {"[]",    "{}",     R"(["x"])", R"({"x": "y"})",       "[[[]]]",
                                                 "1e999", "-1e999", "1e-999",   std::string(2000, '9')};

} // namespace

TEST(ParseEntries, ASoundElementIsReadWhole)
{
    const Parsed parsed = ParseElements(R"({"module": "Client", "modulePath": "%SSOServerAppPath%\\client.dll",
        "modulePathWoW64": "client32.dll", "version": "2.1.0.15", "unknown": [1, 2],
        "compatibleSsoServicesVersion": {"minVersion": "1.9", "maxVersion": "1.11",
                                         "versions": ["2.0", "", "2.1.7"], "unknown": {}}})");
    EXPECT_THAT(parsed.defects, IsEmpty());
    ASSERT_THAT(parsed.entries, SizeIs(1));
    const VersionCompatibilityEntry& entry = parsed.entries[0];
    EXPECT_EQ(entry.module, L"Client");
    EXPECT_EQ(entry.modulePath, L"%SSOServerAppPath%\\client.dll");
    EXPECT_THAT(entry.version, ElementsAre("2", "1", "0", "15"));
    ASSERT_THAT(entry.compatibleRanges, SizeIs(1));
    EXPECT_THAT(entry.compatibleRanges[0].minVersion, ElementsAre("1", "9"));
    EXPECT_THAT(entry.compatibleRanges[0].maxVersion, ElementsAre("1", "11"));
    EXPECT_THAT(entry.compatibleRanges[0].versions, ElementsAre(ElementsAre("2", "0"), ElementsAre("2", "1", "7")))
        << "blank versions are skipped";
    EXPECT_THAT(entry.excludedRanges, IsEmpty());
}

TEST(ParseEntries, FileOrderIsKept)
{
    const Parsed parsed =
        ParseElements(ElementWith("module", R"("first")") + ", " + ElementWith("module", R"("second")") + ", " +
                      ElementWith("module", R"("third")"));
    ASSERT_THAT(parsed.entries, SizeIs(3));
    EXPECT_EQ(parsed.entries[0].module, L"first");
    EXPECT_EQ(parsed.entries[1].module, L"second");
    EXPECT_EQ(parsed.entries[2].module, L"third");
}

TEST(ParseEntries, TheFirstCheckThatFailsNamesTheDefect)
{
    EXPECT_EQ(DefectOf("{}"), EntryDefect::ModuleBlank);
    EXPECT_EQ(DefectOf(R"({"module": "M"})"), EntryDefect::ModulePathBlank);
    EXPECT_EQ(DefectOf(R"({"module": "M", "modulePath": "m.dll"})"), EntryDefect::VersionBlank);
    EXPECT_EQ(DefectOf(R"({"module": "M", "modulePath": "m.dll", "version": "2"})"), EntryDefect::RangeMissing);
    EXPECT_EQ(DefectOf(R"({"modulePath": "m.dll", "version": "2", )" + range + '}'), EntryDefect::ModuleBlank);
    EXPECT_EQ(DefectOf(R"({"module": "M", "version": "2", )" + range + '}'), EntryDefect::ModulePathBlank);
    EXPECT_EQ(DefectOf(R"({"module": "M", "modulePath": "m.dll", )" + range + '}'), EntryDefect::VersionBlank);
}

TEST(ParseEntries, BlankTextsCountAsMissing)
{
    EXPECT_EQ(DefectOf(ElementWith("module", R"("")")), EntryDefect::ModuleBlank);
    EXPECT_EQ(DefectOf(ElementWith("modulePath", R"("")")), EntryDefect::ModulePathBlank);
    EXPECT_EQ(DefectOf(ElementWith("version", R"("")")), EntryDefect::VersionBlank);
}

TEST(ParseEntries, NullCountsAsMissing)
{
    EXPECT_EQ(DefectOf(ElementWith("module", "null")), EntryDefect::ModuleBlank);
    EXPECT_EQ(DefectOf(ElementWith("modulePath", "null")), EntryDefect::ModulePathBlank);
    EXPECT_EQ(DefectOf(ElementWith("version", "null")), EntryDefect::VersionBlank);
    EXPECT_EQ(DefectOf(ElementWithRange("null")), EntryDefect::RangeMissing);
}

TEST(ParseEntries, WhiteSpaceCountsAsText)
{
    EXPECT_THAT(ParseElements(ElementWith("module", R"(" ")")).entries, SizeIs(1));
}

TEST(ParseEntries, KeysAreCaseSensitive)
{
    EXPECT_EQ(DefectOf(R"({"Module": "M", "modulePath": "m.dll", "version": "2", )" + range + '}'),
              EntryDefect::ModuleBlank);
    EXPECT_THAT(ParseText(R"({"SsoClientPlugin": [)" + sound + "]}").entries, IsEmpty());
}

TEST(ParseEntries, AnEmptyRangeObjectIsInvalid)
{
    EXPECT_EQ(DefectOf(ElementWithRange("{}")), EntryDefect::RangeInvalid);
}

TEST(ParseEntries, ARangeOfBlanksIsInvalid)
{
    for (const char* value : {R"({"minVersion": "", "maxVersion": "", "versions": []})", R"({"versions": ["", ""]})",
                              R"({"minVersion": null, "maxVersion": null, "versions": null})",
                              R"({"versions": [null]})", R"({"minimum": "1"})"})
        EXPECT_EQ(DefectOf(ElementWithRange(value)), EntryDefect::RangeInvalid) << value;
}

TEST(ParseEntries, AnElementWithoutRangeIsMissingIt)
{
    EXPECT_EQ(DefectOf(R"({"module": "M", "modulePath": "m.dll", "version": "2"})"), EntryDefect::RangeMissing);
}

TEST(ParseEntries, EachPartOfARangeSuffices)
{
    for (const char* value : {R"({"minVersion": "1"})", R"({"maxVersion": "1"})", R"({"versions": ["1"]})"})
        EXPECT_THAT(ParseElements(ElementWithRange(value)).entries, SizeIs(1)) << value;
}

TEST(ParseEntries, AListOrObjectWhereATextBelongsIsADefectOfThatKey)
{
    for (const std::string& value : notConvertible)
    {
        EXPECT_EQ(DefectOf(ElementWith("module", value)), EntryDefect::ModuleBlank) << value;
        EXPECT_EQ(DefectOf(ElementWith("modulePath", value)), EntryDefect::ModulePathBlank) << value;
        EXPECT_EQ(DefectOf(ElementWith("version", value)), EntryDefect::VersionBlank) << value;
        EXPECT_EQ(DefectOf(ElementWithRange(R"({"minVersion": )" + value + "}")), EntryDefect::RangeInvalid) << value;
        EXPECT_EQ(DefectOf(ElementWithRange(R"({"maxVersion": )" + value + "}")), EntryDefect::RangeInvalid) << value;
        EXPECT_EQ(DefectOf(ElementWithRange(R"({"versions": ["1", )" + value + "]}")), EntryDefect::RangeInvalid)
            << value;
    }
}

TEST(ParseEntries, AWrongTypeInARangeSpoilsItEvenBesideSoundParts)
{
    EXPECT_EQ(DefectOf(ElementWithRange(R"({"minVersion": "1", "maxVersion": []})")), EntryDefect::RangeInvalid);
    EXPECT_EQ(DefectOf(ElementWithRange(R"({"minVersion": {}, "versions": ["1"]})")), EntryDefect::RangeInvalid);
}

TEST(ParseEntries, VersionsThatAreNoArrayAreInvalid)
{
    for (const char* value : {R"("1.11")", "1", "1e999", "true", R"({"0": "1.11"})"})
        EXPECT_EQ(DefectOf(ElementWithRange(R"({"minVersion": "1", "versions": )" + std::string(value) + "}")),
                  EntryDefect::RangeInvalid)
            << value;
}

TEST(ParseEntries, ARangeThatIsNoObjectIsInvalid)
{
    for (const char* value : {R"("1.11")", R"("")", "1", "1.5", "1e999", "true", "false", "[]", R"(["1.11"])"})
        EXPECT_EQ(DefectOf(ElementWithRange(value)), EntryDefect::RangeInvalid) << value;
}

TEST(ParseEntries, AnElementThatIsNoObjectHasNoModule)
{
    for (const char* element : {R"("text")", "1", "1e999", "true", "[]", R"([{"module": "M"}])"})
        EXPECT_EQ(DefectOf(element), EntryDefect::ModuleBlank) << element;
}

TEST(ParseEntries, NullElementsAreSkippedSilently)
{
    const Parsed parsed = ParseElements("null, " + sound + ", null");
    EXPECT_THAT(parsed.entries, SizeIs(1));
    EXPECT_THAT(parsed.defects, IsEmpty());
}

TEST(ParseEntries, OtherScalarsAreConvertedToText)
{
    const Parsed parsed = ParseElements(
        R"({"module": true, "modulePath": 7, "version": 1.5,
            "compatibleSsoServicesVersion": {"minVersion": 1, "maxVersion": -2,
                                             "versions": [3, false, 18446744073709551615]}})");
    ASSERT_THAT(parsed.entries, SizeIs(1));
    const VersionCompatibilityEntry& entry = parsed.entries[0];
    EXPECT_EQ(entry.module, L"true");
    EXPECT_EQ(entry.modulePath, L"7");
    EXPECT_THAT(entry.version, ElementsAre("1", "5"));
    EXPECT_THAT(entry.compatibleRanges[0].minVersion, ElementsAre("1"));
    EXPECT_THAT(entry.compatibleRanges[0].maxVersion, ElementsAre("-2"));
    EXPECT_THAT(entry.compatibleRanges[0].versions,
                ElementsAre(ElementsAre("3"), ElementsAre("false"), ElementsAre("18446744073709551615")));
}

TEST(ParseEntries, ARootThatIsNoObjectHasNoElements)
{
    for (const std::string json : {"[]", "null", "1", R"("ssoClientPlugin")", "true", "{}"})
    {
        const Parsed parsed = ParseText(json);
        EXPECT_THAT(parsed.entries, IsEmpty()) << json;
        EXPECT_THAT(parsed.defects, IsEmpty()) << json;
    }
    EXPECT_THAT(ParseText('[' + sound + ']').entries, IsEmpty());
}

TEST(ParseEntries, AKeyWithoutContainerHasNoElements)
{
    for (const char* value : {"null", "1", "2.5", "1e999", R"("text")", "true", "[]", "{}"})
    {
        const Parsed parsed = ParseText(R"({"ssoClientPlugin": )" + std::string(value) + "}");
        EXPECT_THAT(parsed.entries, IsEmpty()) << value;
        EXPECT_THAT(parsed.defects, IsEmpty()) << value;
    }
}

TEST(ParseEntries, AnObjectInPlaceOfTheArrayOffersItsMembers)
{
    const Parsed parsed = ParseText(R"({"ssoClientPlugin": {"a": )" + sound + R"(, "b": {}, "c": )" + sound + "}}");
    EXPECT_THAT(parsed.entries, SizeIs(2));
    EXPECT_THAT(parsed.defects, ElementsAre(EntryDefect::ModuleBlank));
}

TEST(ParseEntries, EveryBadElementIsNamed)
{
    const Parsed parsed = ParseElements("{}, " + sound + ", " + ElementWith("version", R"("")") + ", " +
                                        ElementWithRange("{}") + ", " + sound);
    EXPECT_THAT(parsed.entries, SizeIs(2));
    EXPECT_THAT(parsed.defects,
                ElementsAre(EntryDefect::ModuleBlank, EntryDefect::VersionBlank, EntryDefect::RangeInvalid));
}

TEST(ParseEntries, A64BitProcessIgnoresAnElementWithOnlyTheWow64Path)
{
    const Parsed parsed =
        ParseElements(R"({"module": "M", "modulePathWoW64": "m.dll", "version": "2", )" + range + '}');
    EXPECT_THAT(parsed.entries, IsEmpty());
    EXPECT_THAT(parsed.defects, ElementsAre(EntryDefect::ModulePathBlank));
}

TEST(ParseEntries, AWow64ProcessIgnoresAnElementWithOnlyTheOtherPath)
{
    const Parsed parsed = ParseElements(sound, true);
    EXPECT_THAT(parsed.entries, IsEmpty());
    EXPECT_THAT(parsed.defects, ElementsAre(EntryDefect::ModulePathBlank));
}

TEST(ParseEntries, EachProcessTakesItsOwnPath)
{
    const std::string both =
        R"({"module": "M", "modulePath": "m64.dll", "modulePathWoW64": "m32.dll", "version": "2", )" + range + '}';
    EXPECT_EQ(ParseElements(both).entries.at(0).modulePath, L"m64.dll");
    EXPECT_EQ(ParseElements(both, true).entries.at(0).modulePath, L"m32.dll");
}

} // namespace OrlindexTest
