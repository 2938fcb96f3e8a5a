// Good and hostile module files: whatever their bytes, the parser reads nothing outside of the file.

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "ModuleBytes.h"
#include "doctor/PeFile.h"
#include "doctor/VersionResource.h"

using Orlindex::Doctor::PeFile;
using Orlindex::Doctor::VersionResource;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Module = OrlindexTest::ModuleBytes;

/// Calls every function of the parser.
void ParseEverything(std::string_view bytes)
{
    // A copy of exactly that size, so that a sanitizer detects a read beyond its end.
    const std::string exact(bytes);
    if (const auto file = PeFile::Read(exact))
    {
        file->Exports("Second");
        EXPECT_LE(file->ExportedNames(10).size(), 10U);
        EXPECT_LE(file->ImportedLibraries(10).size(), 10U);
        if (const auto version = file->VersionResourceBytes())
        {
            EXPECT_LE(version->size(), exact.size());
            if (const auto resource = VersionResource::Read(*version))
            {
                resource->FileVersion();
                resource->Text("FileDescription");
            }
        }
    }
}

} // namespace

TEST(PeFile, AGoodModuleIsParsed)
{
    const Module module;
    const auto file = module.Read();
    ASSERT_TRUE(file);
    EXPECT_EQ(file->Machine(), PeFile::MachineX64);
    EXPECT_TRUE(file->Is64Bit());
    EXPECT_TRUE(file->IsDll());
    EXPECT_THAT(file->ExportedNames(10), ElementsAre("First", "Second"));
    EXPECT_THAT(file->ExportedNames(1), ElementsAre("First"));
    EXPECT_THAT(file->ImportedLibraries(10), ElementsAre("library.dll"));
}

TEST(PeFile, AnExportedNameIsComparedWholeAndWithCase)
{
    const Module module;
    const auto file = module.Read();
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->Exports("Second"));
    for (const char* const other : {"second", "Secon", "Second2", ""})
        EXPECT_FALSE(file->Exports(other)) << other;
}

TEST(PeFile, AProgramIsNotADll)
{
    Module module;
    module.Put16(Module::Coff + 18, 0x22);
    ASSERT_TRUE(module.Read());
    EXPECT_FALSE(module.Read()->IsDll());
}

TEST(PeFile, TheMachineIsReadFromTheHeader)
{
    Module module;
    module.Put16(Module::Coff, PeFile::MachineX86);
    ASSERT_TRUE(module.Read());
    EXPECT_EQ(module.Read()->Machine(), PeFile::MachineX86);
}

TEST(PeFile, AFileThatIsNotAModuleIsRefused)
{
    EXPECT_FALSE(PeFile::Read(""));
    EXPECT_FALSE(PeFile::Read("MZ"));
    EXPECT_FALSE(PeFile::Read(std::string(4096, '\0')));
    EXPECT_FALSE(PeFile::Read(std::string(4096, '\xFF')));
    Module module;
    module.Put(Module::PeOffset, "NE");
    EXPECT_FALSE(module.Read());
}

TEST(PeFile, AHeaderOffsetOutsideOfTheFileIsRefused)
{
    const auto size = static_cast<std::uint32_t>(Module().Bytes().size());
    for (const std::uint32_t offset : {0xFFFFFFFFU, 0xFFFFFFFCU, 0x80000000U, size - 1, size, size + 1})
    {
        Module module;
        module.Put32(0x3C, offset);
        EXPECT_FALSE(module.Read()) << offset;
    }
}

TEST(PeFile, MoreSectionsThanTheSystemAcceptsAreRefused)
{
    Module module;
    module.Put16(Module::Coff + 2, 0xFFFF);
    EXPECT_FALSE(module.Read());
}

TEST(PeFile, ADirectoryBeyondTheOptionalHeaderIsIgnored)
{
    Module module;
    module.Put32(Module::Optional + 108, 0xFFFFFFFF);
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ExportedNames(10), SizeIs(2));
    module.Put32(Module::Optional + 108, 0);
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ExportedNames(10), IsEmpty());
    EXPECT_THAT(module.Read()->ImportedLibraries(10), IsEmpty());
}

TEST(PeFile, TooLargeACountOfNamesEndsWithTheFile)
{
    Module module;
    module.Put32(Module::At(Module::Exports + 24), 0xFFFFFFFF);
    module.Put32(Module::At(Module::Exports + 32), Module::SectionAddress + Module::SectionSize - 4); // room for one
    module.Put32(Module::At(Module::SectionAddress + Module::SectionSize - 4), Module::FirstName);
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ExportedNames(1000), ElementsAre("First"));
}

TEST(PeFile, ANameWithoutTerminatingZeroIsSkipped)
{
    Module module;
    const std::uint32_t last = Module::SectionAddress + Module::SectionSize - 4;
    module.Put32(Module::At(Module::Names), last);
    module.Put(Module::At(last), "abcd");
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ExportedNames(10), ElementsAre("Second"));
}

TEST(PeFile, ImportsWithoutAnEndAreLimited)
{
    Module module;
    for (std::uint32_t record = Module::Imports; record < Module::LibraryName - 20; record += 20)
        module.Put32(Module::At(record + 12), Module::LibraryName);
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ImportedLibraries(3), SizeIs(3));
}

TEST(PeFile, AddressesAtTheEndOfTheRangeDoNotWrapAround)
{
    Module module;
    module.Put32(Module::Directories, 0xFFFFFFFF);
    module.Put32(Module::Directories + 8, 0xFFFFFFF0);
    module.Put32(Module::SectionTable + 12, 0xFFFFF000);
    module.Put32(Module::SectionTable + 20, 0xFFFFF000);
    ParseEverything(module.Bytes());
}

TEST(PeFile, AFileMayEndAnywhere)
{
    const Module module;
    for (std::size_t size = 0; size < module.Bytes().size(); ++size)
        ParseEverything(std::string_view(module.Bytes()).substr(0, size));
}

TEST(PeFile, AnyByteMayHaveAnyValue)
{
    const Module module;
    std::string bytes = module.Bytes();
    for (std::size_t offset = 0; offset < bytes.size(); ++offset)
    {
        const char original = bytes[offset];
        for (const char other : {'\0', '\x01', '\x7F', '\x80', '\xFF'})
        {
            bytes[offset] = other;
            ParseEverything(bytes);
        }
        bytes[offset] = original;
    }
}

TEST(PeFile, AnyNumberOfTheHeadersMayBeHuge)
{
    const Module module;
    for (std::size_t offset = 0x3C; offset < Module::SectionTable + 40; ++offset)
    {
        Module changed = module;
        changed.Put32(offset, 0xFFFFFFFF);
        ParseEverything(changed.Bytes());
    }
}
