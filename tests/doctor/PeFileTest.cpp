// Valid and invalid module files: no byte of them makes the parser read outside the file.

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

/// Calls everything that the parser offers.
void AskEverything(std::string_view bytes)
{
    // A copy of exactly that size: a sanitizer reports every access beyond its end.
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

TEST(PeFile, ASoundModuleIsRead)
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

TEST(PeFile, AnExportedNameIsFoundWholeAndInItsLetterCase)
{
    const Module module;
    const auto file = module.Read();
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->Exports("Second"));
    for (const char* const other : {"second", "Secon", "Second2", ""})
        EXPECT_FALSE(file->Exports(other)) << other;
}

TEST(PeFile, AProgramIsNoDll)
{
    Module module;
    module.Put16(Module::Coff + 18, 0x22);
    ASSERT_TRUE(module.Read());
    EXPECT_FALSE(module.Read()->IsDll());
}

TEST(PeFile, AModuleForAnotherMachineSaysSo)
{
    Module module;
    module.Put16(Module::Coff, PeFile::MachineX86);
    ASSERT_TRUE(module.Read());
    EXPECT_EQ(module.Read()->Machine(), PeFile::MachineX86);
}

TEST(PeFile, WhatIsNoModuleIsRefused)
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

TEST(PeFile, MoreSectionsThanTheSystemTakesAreRefused)
{
    Module module;
    module.Put16(Module::Coff + 2, 0xFFFF);
    EXPECT_FALSE(module.Read());
}

TEST(PeFile, ADirectoryThatTheHeaderHasNoRoomForIsNoDirectory)
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

TEST(PeFile, ACountOfNamesThatNoFileHoldsEndsAtTheEndOfTheFile)
{
    Module module;
    module.Put32(Module::At(Module::Exports + 24), 0xFFFFFFFF);
    module.Put32(Module::At(Module::Exports + 32), Module::SectionAddress + Module::SectionSize - 4); // room for one
    module.Put32(Module::At(Module::SectionAddress + Module::SectionSize - 4), Module::FirstName);
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ExportedNames(1000), ElementsAre("First"));
}

TEST(PeFile, ANameThatDoesNotEndIsNoName)
{
    Module module;
    const std::uint32_t last = Module::SectionAddress + Module::SectionSize - 4;
    module.Put32(Module::At(Module::Names), last);
    module.Put(Module::At(last), "abcd");
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ExportedNames(10), ElementsAre("Second"));
}

TEST(PeFile, ImportsThatNeverEndEnd)
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
    AskEverything(module.Bytes());
}

TEST(PeFile, AFileThatEndsAnywhereIsRead)
{
    const Module module;
    for (std::size_t size = 0; size < module.Bytes().size(); ++size)
        AskEverything(std::string_view(module.Bytes()).substr(0, size));
}

TEST(PeFile, AnyByteMayBeAnyOther)
{
    const Module module;
    std::string bytes = module.Bytes();
    for (std::size_t offset = 0; offset < bytes.size(); ++offset)
    {
        const char original = bytes[offset];
        for (const char other : {'\0', '\x01', '\x7F', '\x80', '\xFF'})
        {
            bytes[offset] = other;
            AskEverything(bytes);
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
        AskEverything(changed.Bytes());
    }
}
