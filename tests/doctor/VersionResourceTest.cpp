// Good and hostile version resources, alone and in a module's file.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "ModuleBytes.h"
#include "VersionBytes.h"
#include "doctor/PeFile.h"
#include "doctor/VersionResource.h"

using namespace OrlindexTest;
using Orlindex::Doctor::VersionResource;
using testing::Optional;

namespace {

constexpr VersionResource::Version Numbers = {1, 2, 3, 4};

/// A copy of exactly that size, so that a sanitizer detects a read beyond its end.
class Exact
{
public:
    explicit Exact(const std::string& bytes) : size_(bytes.size()), bytes_(new char[bytes.size()])
    {
        bytes.copy(bytes_.get(), size_);
    }
    std::string_view View() const { return {bytes_.get(), size_}; }

private:
    std::size_t size_;
    std::unique_ptr<char[]> bytes_;
};

bool IsRead(const std::string& bytes)
{
    return VersionResource::Read(Exact(bytes).View()).has_value();
}

std::u16string TextOf(const std::string& bytes, std::string_view name)
{
    const Exact exact(bytes);
    const auto resource = VersionResource::Read(exact.View());
    return resource ? resource->Text(name) : u"no resource";
}

/// The offset of the block with that key.
std::size_t BlockOf(const std::string& bytes, std::u16string_view key)
{
    return bytes.find(Units(key)) - 6;
}

bool HasVersion(const ModuleBytes& module)
{
    const Exact exact(module.Bytes());
    const auto file = Orlindex::Doctor::PeFile::Read(exact.View());
    const auto bytes = file ? file->VersionResourceBytes() : std::nullopt;
    const auto resource = bytes ? VersionResource::Read(*bytes) : std::nullopt;
    return resource && resource->Text("CompanyName") == u"Maker";
}

/// A module with three languages, of which `good` has the version resource and the others a damaged one.
ModuleBytes ModuleWithLanguages(std::uint32_t first, std::uint32_t second, std::uint32_t third, std::uint32_t good)
{
    ModuleBytes module;
    constexpr std::uint32_t otherEntry = ModuleBytes::VersionEntry + 0x20;
    const auto target = [&](std::uint32_t language) {
        return (language == good ? ModuleBytes::VersionEntry : otherEntry) - ModuleBytes::Types;
    };
    module.PutTable(ModuleBytes::VersionLanguages,
                    {{first, target(first)}, {second, target(second)}, {third, target(third)}});
    return module;
}

} // namespace

TEST(VersionResource, AGoodResourceIsParsed)
{
    const Exact bytes(GoodVersionBytes());
    const auto resource = VersionResource::Read(bytes.View());
    ASSERT_TRUE(resource);
    EXPECT_THAT(resource->FileVersion(), Optional(Numbers));
    EXPECT_EQ(resource->Text("CompanyName"), u"Maker");
    EXPECT_EQ(resource->Text("FileDescription"), u"What");
    EXPECT_EQ(resource->Text("SpecialBuild"), u"");
}

TEST(VersionResource, NamesAreComparedWholeAndWithoutCase)
{
    const std::string bytes = GoodVersionBytes();
    EXPECT_EQ(TextOf(bytes, "COMPANYname"), u"Maker");
    for (const char* const other : {"Company", "CompanyNames", "", "x"})
        EXPECT_EQ(TextOf(bytes, other), u"") << other;
}

TEST(VersionResource, TheTranslationSelectsTheLanguage)
{
    const std::string english = VersionText(u"CompanyName", u"Maker");
    const std::string german = VersionText(u"CompanyName", u"Hersteller");
    const std::string both =
        VersionBlock(u"StringFileInfo", 0, 1, {},
                     VersionBlock(u"040904b0", 0, 1, {}, english) + VersionBlock(u"040704b0", 0, 1, {}, german));
    EXPECT_EQ(TextOf(VersionBytes(Aligned(both) + VersionTranslation(0x407, 0x4B0)), "CompanyName"), u"Hersteller");
    EXPECT_EQ(TextOf(VersionBytes(Aligned(both) + VersionTranslation(0x409, 0x4B0)), "CompanyName"), u"Maker");
    EXPECT_EQ(TextOf(VersionBytes(both), "CompanyName"), u"Maker") << "without translation U.S. English";
    EXPECT_EQ(TextOf(VersionBytes(VersionTranslation(0x409, 0x4B0) + both), "CompanyName"), u"Maker");
}

TEST(VersionResource, ATextMayContainLoneSurrogates)
{
    const std::u16string text = {u'a', 0xD800, u'\u0416', 0xDFFF};
    const std::string bytes = VersionBytes(VersionTexts(u"040904B0", VersionText(u"CompanyName", text)));
    EXPECT_EQ(TextOf(bytes, "CompanyName"), text);
}

TEST(VersionResource, ATextWithALengthInBytesEndsAtItsZero)
{
    std::string bytes = GoodVersionBytes();
    PutU16(bytes, BlockOf(bytes, u"CompanyName") + 2, 12);
    EXPECT_EQ(TextOf(bytes, "CompanyName"), u"Maker");
}

TEST(VersionResource, ATextEndsWithItsBlockWhateverItsLength)
{
    for (const unsigned length : {0x7FFFU, 0x8000U, 0xFFFFU})
    {
        std::string bytes = GoodVersionBytes();
        PutU16(bytes, BlockOf(bytes, u"FileDescription") + 2, length);
        EXPECT_EQ(TextOf(bytes, "FileDescription"), u"What");
    }
}

TEST(VersionResource, ATextWithoutZeroEndsWithItsBlock)
{
    std::string bytes = VersionBytes(
        VersionBlock(u"StringFileInfo", 0, 1, {},
                     VersionBlock(u"040904B0", 0, 1, {}, VersionBlock(u"CompanyName", 0xFFFF, 1, Units(u"Maker")))));
    EXPECT_EQ(TextOf(bytes, "CompanyName"), u"Maker");
}

TEST(VersionResource, ABlockEndsWithItsParentWhateverItsLength)
{
    for (const char16_t* const key : {u"StringFileInfo", u"040904B0", u"CompanyName"})
    {
        std::string bytes = GoodVersionBytes();
        PutU16(bytes, BlockOf(bytes, key), 0xFFFF);
        EXPECT_EQ(TextOf(bytes, "CompanyName"), u"Maker") << Units(key);
    }
}

TEST(VersionResource, ABlockShorterThanItsHeaderEndsTheSearch)
{
    for (const unsigned length : {0U, 1U, 7U})
    {
        std::string bytes = GoodVersionBytes();
        PutU16(bytes, BlockOf(bytes, u"CompanyName"), length);
        EXPECT_EQ(TextOf(bytes, "FileDescription"), u"") << length;
    }
}

TEST(VersionResource, AResourceTooShortForNumbersHasNone)
{
    std::string bytes = VersionBytes({}).substr(0, 44);
    PutU16(bytes, 0, static_cast<unsigned>(bytes.size()));
    const Exact exact(bytes);
    const auto resource = VersionResource::Read(exact.View());
    ASSERT_TRUE(resource);
    EXPECT_EQ(resource->FileVersion(), std::nullopt);
}

TEST(VersionResource, ACutResourceIsRefused)
{
    const std::string bytes = GoodVersionBytes();
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_FALSE(IsRead(bytes.substr(0, size))) << size;
    EXPECT_TRUE(IsRead(bytes + std::string(100, 'x'))) << "bytes after the resource are ignored";
}

TEST(VersionResource, BytesThatAreNotAVersionResourceAreRefused)
{
    EXPECT_FALSE(IsRead(std::string(200, '\0')));
    EXPECT_FALSE(IsRead(std::string(70'000, '\xFF')));
    EXPECT_FALSE(IsRead(VersionBlock(u"VS_VERSION", 0, 0, {})));
    EXPECT_FALSE(IsRead(VersionBlock(u"VS_VERSION_INFO2", 0, 0, {})));
}

TEST(VersionResource, AnyByteMayHaveAnyValue)
{
    std::string bytes = GoodVersionBytes();
    for (char& byte : bytes)
    {
        const char original = byte;
        for (const char other : {'\0', '\x01', '\x7F', '\x80', '\xFF'})
        {
            byte = other;
            TextOf(bytes, "FileDescription");
        }
        byte = original;
    }
}

TEST(VersionResourceInModule, TheVersionResourceIsFound)
{
    EXPECT_TRUE(HasVersion(ModuleBytes()));
}

TEST(VersionResourceInModule, ASizeBeyondTheSectionIsRefused)
{
    for (const std::uint32_t size : {0x100000U, 0xFFFFFFFFU, ModuleBytes::SectionSize, 0U})
    {
        ModuleBytes module;
        module.PutEntry(ModuleBytes::VersionEntry, ModuleBytes::Version, size);
        EXPECT_FALSE(HasVersion(module)) << size;
    }
}

TEST(VersionResourceInModule, BytesAfterTheSectionAreNotRead)
{
    ModuleBytes module;
    module.Append(std::string(0x10000, '\0'));
    EXPECT_TRUE(HasVersion(module));
    const std::uint32_t left = ModuleBytes::SectionAddress + ModuleBytes::SectionSize - ModuleBytes::Version;
    module.PutEntry(ModuleBytes::VersionEntry, ModuleBytes::Version, left);
    EXPECT_TRUE(HasVersion(module));
    module.PutEntry(ModuleBytes::VersionEntry, ModuleBytes::Version, left + 1);
    EXPECT_FALSE(HasVersion(module));
}

TEST(VersionResourceInModule, AnAddressOutsideOfTheSectionsIsRefused)
{
    for (const std::uint32_t address : {0U, 0xFFFFF000U, 0x80000000U, ModuleBytes::SectionAddress - 1,
                                        ModuleBytes::SectionAddress + ModuleBytes::SectionSize})
    {
        ModuleBytes module;
        module.PutEntry(ModuleBytes::VersionEntry, address, 100);
        EXPECT_FALSE(HasVersion(module)) << address;
    }
}

TEST(VersionResourceInModule, ASectionOfFourGigabytesHasTheBytesOfTheFile)
{
    ModuleBytes module;
    module.Put32(ModuleBytes::SectionTable + 8, 0xFFFFFFFF);
    EXPECT_TRUE(HasVersion(module));
    module.Put32(ModuleBytes::SectionTable + 16, 0xFFFFFFFF);
    EXPECT_TRUE(HasVersion(module));
    module.PutEntry(ModuleBytes::VersionEntry, ModuleBytes::Version, 0xFFFFF000);
    EXPECT_FALSE(HasVersion(module));
}

TEST(VersionResourceInModule, ATableThatRefersToItselfIsRefused)
{
    ModuleBytes module;
    module.PutTable(ModuleBytes::VersionLanguages, {{0x409, ModuleBytes::LeadsToTable}});
    EXPECT_FALSE(HasVersion(module)) << "a fourth level";
    module.PutTable(ModuleBytes::Types, {{16, ModuleBytes::LeadsToTable}});
    EXPECT_FALSE(HasVersion(module));
}

TEST(VersionResourceInModule, AnEntryInPlaceOfATableIsRefused)
{
    ModuleBytes module;
    module.PutTable(ModuleBytes::Types, {{16, ModuleBytes::VersionNames - ModuleBytes::Types}});
    EXPECT_FALSE(HasVersion(module));
    module = ModuleBytes();
    module.PutTable(ModuleBytes::VersionNames, {{1, ModuleBytes::VersionLanguages - ModuleBytes::Types}});
    EXPECT_FALSE(HasVersion(module));
}

TEST(VersionResourceInModule, OtherTypesAndNamesAreIgnored)
{
    ModuleBytes module;
    module.PutTable(ModuleBytes::Types,
                    {{15, ModuleBytes::LeadsToTable | (ModuleBytes::VersionNames - ModuleBytes::Types)}});
    EXPECT_FALSE(HasVersion(module));
    module = ModuleBytes();
    module.PutTable(ModuleBytes::VersionNames,
                    {{2, ModuleBytes::LeadsToTable | (ModuleBytes::VersionLanguages - ModuleBytes::Types)}});
    EXPECT_FALSE(HasVersion(module));
}

TEST(VersionResourceInModule, ATableWithTooLargeACountEndsWithTheFile)
{
    ModuleBytes module;
    module.Put32(ModuleBytes::At(ModuleBytes::Types) + 12, 0xFFFFFFFF);
    EXPECT_FALSE(HasVersion(module)) << "the numbered entries would stand behind 65,535 others";
    module.Put32(ModuleBytes::At(ModuleBytes::Types) + 12, 0xFFFF0000);
    EXPECT_TRUE(HasVersion(module));
}

TEST(VersionResourceInModule, TheNeutralLanguageIsPreferredThenUsEnglishThenTheFirst)
{
    EXPECT_TRUE(HasVersion(ModuleWithLanguages(0x407, 0x409, 0, 0)));
    EXPECT_TRUE(HasVersion(ModuleWithLanguages(0x407, 0x409, 0x40C, 0x409)));
    EXPECT_TRUE(HasVersion(ModuleWithLanguages(0x407, 0x40A, 0x40C, 0x407)));
    EXPECT_FALSE(HasVersion(ModuleWithLanguages(0x407, 0x409, 0x40C, 0x407)));
}

TEST(VersionResourceInModule, AModuleWithoutResourcesHasNoVersion)
{
    ModuleBytes module;
    module.Put32(ModuleBytes::Directories + 20, 0);
    EXPECT_FALSE(HasVersion(module));
    module = ModuleBytes();
    module.Put32(ModuleBytes::Directories + 16, 0xFFFFFFF0);
    EXPECT_FALSE(HasVersion(module));
}
