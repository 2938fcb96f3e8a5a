#ifndef ORLINDEX_DOCTOR_TESTS_MODULEBYTES_H
#define ORLINDEX_DOCTOR_TESTS_MODULEBYTES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "VersionBytes.h"
#include "doctor/PeFile.h"

namespace OrlindexTest {

/// A 64-bit DLL that exports two names, imports one library and has a version resource. A test may change it.
class ModuleBytes
{
public:
    // File offsets.
    static constexpr std::size_t PeOffset = 0x80;
    static constexpr std::size_t Coff = PeOffset + 4;
    static constexpr std::size_t Optional = Coff + 20;
    static constexpr std::size_t Directories = Optional + 112;
    static constexpr std::size_t SectionTable = Directories + 16 * 8;
    static constexpr std::size_t SectionOffset = 0x400;
    // Addresses.
    static constexpr std::uint32_t SectionAddress = 0x1000;
    static constexpr std::uint32_t SectionSize = 0x800;
    static constexpr std::uint32_t Exports = SectionAddress;
    static constexpr std::uint32_t Names = SectionAddress + 0x40;
    static constexpr std::uint32_t FirstName = SectionAddress + 0x60;
    static constexpr std::uint32_t SecondName = SectionAddress + 0x70;
    static constexpr std::uint32_t Imports = SectionAddress + 0x100;
    static constexpr std::uint32_t LibraryName = SectionAddress + 0x180;
    static constexpr std::uint32_t Types = SectionAddress + 0x200; ///< The first resource table.
    static constexpr std::uint32_t VersionNames = Types + 0x20;
    static constexpr std::uint32_t VersionLanguages = Types + 0x40;
    static constexpr std::uint32_t VersionEntry = Types + 0x80;
    static constexpr std::uint32_t Version = Types + 0x100;
    static constexpr std::uint32_t LeadsToTable = 0x80000000;

    ModuleBytes() : bytes_(SectionOffset + SectionSize, '\0')
    {
        using Orlindex::Doctor::PeFile;
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
        Put32(Directories + 16, Types);
        Put32(Directories + 20, 0x600);
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
        PutTable(Types, {{16, LeadsToTable | (VersionNames - Types)}});
        PutTable(VersionNames, {{1, LeadsToTable | (VersionLanguages - Types)}});
        PutTable(VersionLanguages, {{0x409, VersionEntry - Types}});
        const std::string version = SoundVersionBytes();
        PutEntry(VersionEntry, Version, static_cast<std::uint32_t>(version.size()));
        Put(At(Version), version);
    }

    static constexpr std::size_t At(std::uint32_t address) { return SectionOffset + (address - SectionAddress); }

    void Put(std::size_t offset, std::string_view text) { bytes_.replace(offset, text.size(), text); }
    void Put16(std::size_t offset, std::uint16_t number) { PutU16(bytes_, offset, number); }
    void Put32(std::size_t offset, std::uint32_t number)
    {
        Put16(offset, static_cast<std::uint16_t>(number & 0xFFFF));
        Put16(offset + 2, static_cast<std::uint16_t>(number >> 16));
    }
    /// A resource table with these numbered entries: identifier and offset.
    void PutTable(std::uint32_t address, std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> entries)
    {
        Put16(At(address) + 14, static_cast<std::uint16_t>(entries.size()));
        std::size_t offset = At(address) + 16;
        for (const auto& [identifier, target] : entries)
        {
            Put32(offset, identifier);
            Put32(offset + 4, target);
            offset += 8;
        }
    }
    /// A resource data entry, at which the tables end.
    void PutEntry(std::uint32_t address, std::uint32_t target, std::uint32_t size)
    {
        Put32(At(address), target);
        Put32(At(address) + 4, size);
    }

    /// Bytes behind the last section, where a signature is.
    void Append(const std::string& bytes) { bytes_ += bytes; }

    const std::string& Bytes() const { return bytes_; }
    std::optional<Orlindex::Doctor::PeFile> Read() const { return Orlindex::Doctor::PeFile::Read(bytes_); }

private:
    std::string bytes_;
};

} // namespace OrlindexTest

#endif
