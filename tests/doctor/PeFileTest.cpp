// Module files as they should be, and as they should not: no byte of them makes the reader leave the file.

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "doctor/PeFile.h"

using Orlindex::Doctor::PeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

// Where things lie in the module below.
constexpr std::size_t PeOffset = 0x80;
constexpr std::size_t Coff = PeOffset + 4;
constexpr std::size_t Optional = Coff + 20;
constexpr std::size_t Directories = Optional + 112;
constexpr std::size_t SectionTable = Directories + 16 * 8;
constexpr std::size_t SectionOffset = 0x400;
constexpr std::uint32_t SectionAddress = 0x1000;
constexpr std::size_t SectionSize = 0x400;
constexpr std::uint32_t Exports = SectionAddress;
constexpr std::uint32_t Names = SectionAddress + 0x40;
constexpr std::uint32_t FirstName = SectionAddress + 0x60;
constexpr std::uint32_t SecondName = SectionAddress + 0x70;
constexpr std::uint32_t Imports = SectionAddress + 0x100;
constexpr std::uint32_t LibraryName = SectionAddress + 0x180;

/// A 64-bit DLL that exports two names and imports one library, and which a test may change.
class Module
{
public:
    Module() : bytes_(SectionOffset + SectionSize, '\0')
    {
        Put(0, "MZ");
        Put32(0x3C, PeOffset);
        Put(PeOffset, std::string_view("PE\0\0", 4));
        Put16(Coff, PeFile::MachineX64);
        Put16(Coff + 2, 1);              // sections
        Put16(Coff + 16, 112 + 16 * 8);  // size of the optional header
        Put16(Coff + 18, 0x2000 | 0x22); // a DLL
        Put16(Optional, 0x20B);          // 64-bit
        Put32(Optional + 108, 16);       // directories
        Put32(Directories, Exports);
        Put32(Directories + 4, 0x80);
        Put32(Directories + 8, Imports);
        Put32(Directories + 12, 40);
        Put32(SectionTable + 8, SectionSize);
        Put32(SectionTable + 12, SectionAddress);
        Put32(SectionTable + 16, SectionSize);
        Put32(SectionTable + 20, SectionOffset);
        Put32(At(Exports + 24), 2); // names
        Put32(At(Exports + 32), Names);
        Put32(At(Names), FirstName);
        Put32(At(Names + 4), SecondName);
        Put(At(FirstName), "First");
        Put(At(SecondName), "Second");
        Put32(At(Imports + 12), LibraryName);
        Put(At(LibraryName), "library.dll");
    }

    static std::size_t At(std::uint32_t address) { return SectionOffset + (address - SectionAddress); }

    void Put(std::size_t offset, std::string_view text) { bytes_.replace(offset, text.size(), text); }
    void Put16(std::size_t offset, std::uint16_t number)
    {
        bytes_.at(offset) = static_cast<char>(number & 0xFF);
        bytes_.at(offset + 1) = static_cast<char>(number >> 8);
    }
    void Put32(std::size_t offset, std::uint32_t number)
    {
        Put16(offset, static_cast<std::uint16_t>(number & 0xFFFF));
        Put16(offset + 2, static_cast<std::uint16_t>(number >> 16));
    }

    const std::string& Bytes() const { return bytes_; }
    std::optional<PeFile> Read() const { return PeFile::Read(bytes_); }

private:
    std::string bytes_;
};

/// Everything that the reader can be asked for.
void AskEverything(std::string_view bytes)
{
    // A copy of exactly that size: a sanitizer sees every step beyond its end.
    const std::string exact(bytes);
    if (const auto file = PeFile::Read(exact))
    {
        file->Exports("Second");
        EXPECT_LE(file->ExportedNames(10).size(), 10U);
        EXPECT_LE(file->ImportedLibraries(10).size(), 10U);
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
    module.Put16(Coff + 18, 0x22);
    ASSERT_TRUE(module.Read());
    EXPECT_FALSE(module.Read()->IsDll());
}

TEST(PeFile, AModuleForAnotherMachineSaysSo)
{
    Module module;
    module.Put16(Coff, PeFile::MachineX86);
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
    module.Put(PeOffset, "NE");
    EXPECT_FALSE(module.Read());
}

TEST(PeFile, AHeaderOffsetOutsideOfTheFileIsRefused)
{
    for (const std::uint32_t offset : {0xFFFFFFFFU, 0xFFFFFFFCU, 0x80000000U, 0x7FFU, 0x800U, 0x801U})
    {
        Module module;
        module.Put32(0x3C, offset);
        EXPECT_FALSE(module.Read()) << offset;
    }
}

TEST(PeFile, MoreSectionsThanTheSystemTakesAreRefused)
{
    Module module;
    module.Put16(Coff + 2, 0xFFFF);
    EXPECT_FALSE(module.Read());
}

TEST(PeFile, ADirectoryThatTheHeaderHasNoRoomForIsNoDirectory)
{
    Module module;
    module.Put32(Optional + 108, 0xFFFFFFFF);
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ExportedNames(10), SizeIs(2));
    module.Put32(Optional + 108, 0);
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ExportedNames(10), IsEmpty());
    EXPECT_THAT(module.Read()->ImportedLibraries(10), IsEmpty());
}

TEST(PeFile, ACountOfNamesThatNoFileHoldsEndsAtTheEndOfTheFile)
{
    Module module;
    module.Put32(Module::At(Exports + 24), 0xFFFFFFFF);
    module.Put32(Module::At(Exports + 32), SectionAddress + SectionSize - 4); // room for one
    module.Put32(Module::At(SectionAddress + SectionSize - 4), FirstName);
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ExportedNames(1000), ElementsAre("First"));
}

TEST(PeFile, ANameThatDoesNotEndIsNoName)
{
    Module module;
    const std::uint32_t last = SectionAddress + SectionSize - 4;
    module.Put32(Module::At(Names), last);
    module.Put(Module::At(last), "abcd");
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ExportedNames(10), ElementsAre("Second"));
}

TEST(PeFile, ImportsThatNeverEndEnd)
{
    Module module;
    for (std::uint32_t record = Imports; record < LibraryName - 20; record += 20)
        module.Put32(Module::At(record + 12), LibraryName);
    ASSERT_TRUE(module.Read());
    EXPECT_THAT(module.Read()->ImportedLibraries(3), SizeIs(3));
}

TEST(PeFile, AddressesAtTheEndOfTheRangeDoNotWrapAround)
{
    Module module;
    module.Put32(Directories, 0xFFFFFFFF);
    module.Put32(Directories + 8, 0xFFFFFFF0);
    module.Put32(SectionTable + 12, 0xFFFFF000);
    module.Put32(SectionTable + 20, 0xFFFFF000);
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
    for (std::size_t offset = 0x3C; offset < SectionTable + 40; ++offset)
    {
        Module changed = module;
        changed.Put32(offset, 0xFFFFFFFF);
        AskEverything(changed.Bytes());
    }
}
