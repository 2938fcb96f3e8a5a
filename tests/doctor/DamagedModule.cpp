#include "DamagedModule.h"

#include <cstring>
#include <stdexcept>

#include <windows.h>

namespace OrlindexTest {
namespace {

template <class Record>
Record At(const std::string& bytes, std::size_t offset)
{
    Record record = {};
    std::memcpy(&record, bytes.substr(offset, sizeof record).data(), sizeof record);
    return record;
}

std::size_t ResourceSectionHeader(const std::string& module)
{
    constexpr char name[IMAGE_SIZEOF_SHORT_NAME] = ".rsrc"; // Padded with zeros.
    const auto start = static_cast<std::size_t>(At<IMAGE_DOS_HEADER>(module, 0).e_lfanew);
    const auto headers = At<IMAGE_NT_HEADERS>(module, start);
    std::size_t section = start + offsetof(IMAGE_NT_HEADERS, OptionalHeader) + headers.FileHeader.SizeOfOptionalHeader;
    for (unsigned index = 0; index < headers.FileHeader.NumberOfSections; ++index)
    {
        if (std::memcmp(module.data() + section, name, sizeof name) == 0)
            return section;
        section += sizeof(IMAGE_SECTION_HEADER);
    }
    throw std::runtime_error("the module has no resources");
}

/// The target of the entry with an identifier, as an offset from the first table. With identifier 0, that of the
/// table's first entry.
std::size_t Follow(const std::string& module, std::size_t table, WORD identifier)
{
    const auto directory = At<IMAGE_RESOURCE_DIRECTORY>(module, table);
    std::size_t offset = table + sizeof directory;
    for (int index = 0; index < directory.NumberOfNamedEntries + directory.NumberOfIdEntries; ++index)
    {
        const auto entry = At<IMAGE_RESOURCE_DIRECTORY_ENTRY>(module, offset);
        if (identifier == 0 || entry.Name == identifier)
            return entry.OffsetToData & ~IMAGE_RESOURCE_DATA_IS_DIRECTORY;
        offset += sizeof entry;
    }
    throw std::runtime_error("the module has no version resource");
}

} // namespace

std::string WithDamage(std::string module, ResourceDamage damage)
{
    const std::size_t header = ResourceSectionHeader(module);
    const std::size_t root = At<IMAGE_SECTION_HEADER>(module, header).PointerToRawData;
    const std::size_t names = root + Follow(module, root, 16); // RT_VERSION
    const std::size_t languages = root + Follow(module, names, VS_VERSION_INFO);
    const std::size_t entry = root + Follow(module, languages, 0);
    const auto put = [&module](std::size_t offset, DWORD number) {
        module.replace(offset, sizeof number, reinterpret_cast<const char*>(&number), sizeof number);
    };
    switch (damage)
    {
    case ResourceDamage::Size:
        put(entry + offsetof(IMAGE_RESOURCE_DATA_ENTRY, Size), 0x100000);
        break;
    case ResourceDamage::Address:
        put(entry + offsetof(IMAGE_RESOURCE_DATA_ENTRY, OffsetToData), 0xFFFFF000);
        break;
    case ResourceDamage::SectionSize:
        put(header + offsetof(IMAGE_SECTION_HEADER, Misc), 0xFFFFFFFF);
        break;
    }
    return module;
}

} // namespace OrlindexTest
