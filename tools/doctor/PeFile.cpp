#include "PeFile.h"

#include <algorithm>

namespace Orlindex::Doctor {
namespace {

// The format's numbers: https://learn.microsoft.com/windows/win32/debug/pe-format
constexpr std::size_t peOffsetField = 0x3C;
constexpr std::size_t coffHeaderSize = 20;
constexpr std::size_t sectionHeaderSize = 40;
constexpr std::size_t importRecordSize = 20;
constexpr std::uint16_t dllCharacteristic = 0x2000;
constexpr std::uint16_t magic32 = 0x10B;
constexpr std::uint16_t magic64 = 0x20B;
constexpr std::size_t exportDirectory = 0;
constexpr std::size_t importDirectory = 1;
constexpr std::size_t resourceDirectory = 2;
constexpr std::uint32_t versionType = 16;
constexpr std::uint32_t versionName = 1;
constexpr std::uint32_t neutralLanguage = 0;
constexpr std::uint32_t usEnglish = 0x409;
constexpr std::uint32_t leadsToTable = 0x80000000;

constexpr std::size_t mostSections = 96;   ///< The system's loader accepts no more.
constexpr std::uint32_t mostNames = 65536; ///< A module numbers its exports with 16 bits.
constexpr std::size_t longestText = 4096;
/// Entries of one resource table that are read. The types that the system defines are few and come first.
constexpr std::uint16_t mostResources = 4096;

} // namespace

std::optional<PeFile> PeFile::Read(std::string_view bytes)
{
    PeFile file(bytes);
    if (!file.ReadHeaders())
        return std::nullopt;
    return file;
}

bool PeFile::ReadHeaders()
{
    const auto offset = U32(peOffsetField);
    if (bytes_.substr(0, 2) != "MZ" || !offset || *offset > bytes_.size() ||
        bytes_.substr(*offset, 4) != std::string_view("PE\0\0", 4))
        return false;
    const std::size_t coff = *offset + std::size_t{4};
    const std::size_t optional = coff + coffHeaderSize;
    const auto machine = U16(coff);
    const auto sectionCount = U16(coff + 2);
    const auto optionalSize = U16(coff + 16);
    const auto characteristics = U16(coff + 18);
    const auto magic = U16(optional);
    if (!machine || !sectionCount || !optionalSize || !characteristics || !magic ||
        (*magic != magic32 && *magic != magic64))
        return false;
    machine_ = *machine;
    dll_ = (*characteristics & dllCharacteristic) != 0;
    pe64_ = *magic == magic64;

    directories_ = optional + (pe64_ ? 112 : 96);
    const auto count = U32(directories_ - 4);
    if (!count || *optionalSize < directories_ - optional)
        return false;
    const std::size_t room = (*optionalSize - (directories_ - optional)) / 8;
    directoryCount_ = static_cast<std::uint32_t>(std::min<std::size_t>(*count, room));
    return ReadSections(optional + *optionalSize, *sectionCount);
}

bool PeFile::ReadSections(std::size_t offset, std::size_t count)
{
    if (count > mostSections)
        return false;
    for (std::size_t index = 0; index < count; ++index, offset += sectionHeaderSize)
    {
        const auto virtualSize = U32(offset + 8);
        const auto address = U32(offset + 12);
        const auto fileSize = U32(offset + 16);
        const auto fileOffset = U32(offset + 20);
        if (!virtualSize || !address || !fileSize || !fileOffset)
            return false;
        const std::uint32_t mapped = *virtualSize == 0 ? *fileSize : std::min(*virtualSize, *fileSize);
        sections_.push_back({*address, mapped, *fileOffset});
    }
    return true;
}

std::optional<std::uint16_t> PeFile::U16(std::size_t offset) const
{
    if (offset > bytes_.size() || bytes_.size() - offset < 2)
        return std::nullopt;
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(bytes_[offset + index]); };
    return static_cast<std::uint16_t>(byte(0) | byte(1) << 8);
}

std::optional<std::uint32_t> PeFile::U32(std::size_t offset) const
{
    const auto low = U16(offset);
    const auto high = U16(offset + 2);
    if (!low || !high)
        return std::nullopt;
    return static_cast<std::uint32_t>(*low) | static_cast<std::uint32_t>(*high) << 16;
}

std::optional<std::size_t> PeFile::OffsetOf(std::uint64_t address) const
{
    for (const Section& section : sections_)
    {
        if (address < section.address || address - section.address >= section.fileSize)
            continue;
        const std::uint64_t offset = section.fileOffset + (address - section.address);
        if (offset < bytes_.size())
            return static_cast<std::size_t>(offset);
    }
    return std::nullopt;
}

std::optional<std::uint16_t> PeFile::U16At(std::uint64_t address) const
{
    const auto offset = OffsetOf(address);
    return offset ? U16(*offset) : std::nullopt;
}

std::optional<std::uint32_t> PeFile::U32At(std::uint64_t address) const
{
    const auto offset = OffsetOf(address);
    return offset ? U32(*offset) : std::nullopt;
}

std::optional<std::string_view> PeFile::BytesAt(std::uint64_t address, std::uint32_t size) const
{
    for (const Section& section : sections_)
    {
        if (address < section.address || address - section.address >= section.fileSize)
            continue;
        const std::uint64_t within = address - section.address;
        const std::uint64_t offset = section.fileOffset + within;
        if (size <= section.fileSize - within && offset <= bytes_.size() && size <= bytes_.size() - offset)
            return bytes_.substr(static_cast<std::size_t>(offset), size);
    }
    return std::nullopt;
}

std::optional<std::string_view> PeFile::TextAt(std::uint64_t address) const
{
    const auto offset = OffsetOf(address);
    if (!offset)
        return std::nullopt;
    const std::string_view rest = bytes_.substr(*offset, longestText);
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos)
        return std::nullopt;
    return rest.substr(0, end);
}

PeFile::Directory PeFile::DirectoryAt(std::size_t index) const
{
    if (index >= directoryCount_)
        return {};
    const auto address = U32(directories_ + index * 8);
    const auto size = U32(directories_ + index * 8 + 4);
    return address && size ? Directory{*address, *size} : Directory{};
}

template <class Visit>
void PeFile::VisitExports(const Visit& visit) const
{
    const Directory directory = DirectoryAt(exportDirectory);
    if (directory.size == 0)
        return;
    const auto count = U32At(directory.address + std::uint64_t{24});
    const auto names = U32At(directory.address + std::uint64_t{32});
    if (!count || !names)
        return;
    for (std::uint64_t index = 0; index < std::min(*count, mostNames); ++index)
    {
        const auto address = U32At(*names + index * 4);
        if (!address)
            return; // The rest would be outside of the file, too.
        const auto name = TextAt(*address);
        if (name && !visit(*name))
            return;
    }
}

bool PeFile::Exports(std::string_view name) const
{
    bool found = false;
    VisitExports([&](std::string_view exported) {
        found = exported == name;
        return !found;
    });
    return found;
}

std::vector<std::string> PeFile::ExportedNames(std::size_t limit) const
{
    std::vector<std::string> names;
    VisitExports([&](std::string_view exported) {
        if (names.size() < limit)
            names.emplace_back(exported);
        return names.size() < limit;
    });
    return names;
}

std::vector<std::string> PeFile::ImportedLibraries(std::size_t limit) const
{
    std::vector<std::string> libraries;
    const Directory directory = DirectoryAt(importDirectory);
    for (std::uint64_t record = directory.address; directory.size != 0 && libraries.size() < limit;
         record += importRecordSize)
    {
        const auto name = U32At(record + 12);
        if (!name || *name == 0)
            break;
        if (const auto text = TextAt(*name))
            libraries.emplace_back(*text);
        else
            break;
    }
    return libraries;
}

template <class Visit>
void PeFile::VisitResources(std::uint64_t table, const Visit& visit) const
{
    const auto named = U16At(table + 12);
    const auto numbered = U16At(table + 14);
    if (!named || !numbered)
        return;
    const std::uint64_t first = table + 16 + std::uint64_t{*named} * 8; // Entries with names come first.
    for (std::uint64_t index = 0; index < std::min(*numbered, mostResources); ++index)
    {
        const auto identifier = U32At(first + index * 8);
        const auto offset = U32At(first + index * 8 + 4);
        if (!identifier || !offset || !visit(*identifier, *offset))
            return;
    }
}

std::optional<std::uint32_t> PeFile::FindResource(std::uint64_t table, std::initializer_list<std::uint32_t> identifiers,
                                                  bool any) const
{
    std::optional<std::uint32_t> found;
    std::size_t rank = identifiers.size() + (any ? 1 : 0); // Of the entry found; a lower rank is better.
    VisitResources(table, [&](std::uint32_t identifier, std::uint32_t offset) {
        const auto own = static_cast<std::size_t>(std::find(identifiers.begin(), identifiers.end(), identifier) -
                                                  identifiers.begin());
        if (own < rank)
        {
            rank = own;
            found = offset;
        }
        return rank > 0;
    });
    return found;
}

std::optional<std::string_view> PeFile::VersionResourceBytes() const
{
    const Directory directory = DirectoryAt(resourceDirectory);
    if (directory.size == 0)
        return std::nullopt;
    // Exactly three levels, whatever the file says: type, name, language. Offsets count from the first table.
    const std::uint64_t root = directory.address;
    const auto type = FindResource(root, {versionType}, false);
    if (!type || (*type & leadsToTable) == 0)
        return std::nullopt;
    const auto name = FindResource(root + (*type & ~leadsToTable), {versionName}, false);
    if (!name || (*name & leadsToTable) == 0)
        return std::nullopt;
    const auto entry = FindResource(root + (*name & ~leadsToTable), {neutralLanguage, usEnglish}, true);
    if (!entry || (*entry & leadsToTable) != 0)
        return std::nullopt;
    const auto address = U32At(root + *entry);
    const auto size = U32At(root + *entry + 4);
    return address && size ? BytesAt(*address, *size) : std::nullopt;
}

} // namespace Orlindex::Doctor
