#include "CorruptedModules.h"

#include <algorithm>
#include <cstring>
#include <random>

#include <windows.h>

namespace OrlindexTest {

namespace {

/// The parts of a module file that locate its sections and its signature.
class ModuleFile
{
public:
    explicit ModuleFile(std::string bytes) : bytes_(std::move(bytes))
    {
        IMAGE_DOS_HEADER dos;
        std::memcpy(&dos, bytes_.data(), sizeof dos);
        headersAt_ = static_cast<std::size_t>(dos.e_lfanew);
        std::memcpy(&headers_, bytes_.data() + headersAt_, sizeof headers_);
    }

    const std::string& Bytes() const { return bytes_; }
    std::string& Bytes() { return bytes_; }

    std::vector<std::size_t> SectionBoundaries() const
    {
        std::vector<std::size_t> boundaries;
        for (std::size_t i = 0; i < headers_.FileHeader.NumberOfSections; ++i)
        {
            IMAGE_SECTION_HEADER section;
            std::memcpy(&section, bytes_.data() + headersAt_ + sizeof headers_ + i * sizeof section, sizeof section);
            if (section.SizeOfRawData == 0)
                continue;
            boundaries.push_back(section.PointerToRawData);
            boundaries.push_back(section.PointerToRawData + section.SizeOfRawData);
        }
        return boundaries;
    }

    /// For the certificate table the address is a file offset.
    IMAGE_DATA_DIRECTORY Certificates() const
    {
        return headers_.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_SECURITY];
    }

    void SetCertificates(std::size_t place, std::size_t size)
    {
        IMAGE_DATA_DIRECTORY& directory = headers_.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_SECURITY];
        directory.VirtualAddress = static_cast<DWORD>(place);
        directory.Size = static_cast<DWORD>(size);
        std::memcpy(&bytes_[headersAt_], &headers_, sizeof headers_);
    }

private:
    std::string bytes_;
    std::size_t headersAt_ = 0;
    IMAGE_NT_HEADERS64 headers_ = {};
};

std::string Data(std::size_t size)
{
    return std::string(size, '\xA5');
}

CorruptedModule WithTable(const ModuleFile& good, const std::string& name, std::size_t place, std::size_t size)
{
    ModuleFile corrupted = good;
    corrupted.SetCertificates(place, size);
    return {name, corrupted.Bytes()};
}

} // namespace

std::vector<CorruptedModule> WithFlippedBytes(const std::string& module, int count, std::uint32_t seed)
{
    std::mt19937 random(seed);
    std::vector<CorruptedModule> corrupted;
    for (int i = 0; i < count; ++i)
    {
        // Not a distribution of the standard library: each implementation has another one.
        const std::size_t begin = module.size() * static_cast<std::size_t>(i) / static_cast<std::size_t>(count);
        const std::size_t end = module.size() * static_cast<std::size_t>(i + 1) / static_cast<std::size_t>(count);
        const std::size_t place = begin + random() % (end - begin);
        const unsigned bit = random() % 8;
        std::string bytes = module;
        bytes[place] = static_cast<char>(bytes[place] ^ (1 << bit));
        corrupted.push_back({"bit " + std::to_string(bit) + " flipped at " + std::to_string(place), bytes});
    }
    return corrupted;
}

std::vector<CorruptedModule> CutOff(const std::string& module)
{
    std::vector<std::size_t> places = ModuleFile(module).SectionBoundaries();
    for (std::size_t part = 0; part < 16; ++part)
        places.push_back(module.size() * part / 16);
    places.push_back(module.size() - 1);
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    std::vector<CorruptedModule> corrupted;
    for (const std::size_t place : places)
        corrupted.push_back({"cut off at " + std::to_string(place), module.substr(0, place)});
    return corrupted;
}

std::vector<CorruptedModule> WithAppendedData(const std::string& module)
{
    const ModuleFile good(module);
    const IMAGE_DATA_DIRECTORY table = good.Certificates();
    std::vector<CorruptedModule> corrupted;
    for (const std::size_t size : {1, 7, 8, 4096, 100001})
    {
        const std::string length = std::to_string(size) + " bytes ";
        corrupted.push_back({length + "behind the file", module + Data(size)});
        ModuleFile inside(module + Data(size));
        inside.SetCertificates(table.VirtualAddress, table.Size + size);
        corrupted.push_back({length + "behind the signature, in its table", inside.Bytes()});
        // Within the one certificate too, as its own length says.
        const auto grown = static_cast<DWORD>(table.Size + size);
        std::memcpy(&inside.Bytes()[table.VirtualAddress], &grown, sizeof grown);
        corrupted.push_back({length + "within the certificate", inside.Bytes()});
        corrupted.push_back(
            {length + "before the certificate", std::string(module).insert(table.VirtualAddress, Data(size))});
    }
    return corrupted;
}

std::vector<CorruptedModule> WithOtherCertificateTables(const std::string& module)
{
    const ModuleFile good(module);
    const IMAGE_DATA_DIRECTORY table = good.Certificates();
    const std::size_t place = table.VirtualAddress;
    const std::size_t size = table.Size;
    std::vector<CorruptedModule> corrupted = {
        WithTable(good, "table at the end of the file", module.size(), size),
        WithTable(good, "table beyond the file", module.size() + 4096, size),
        WithTable(good, "table beyond 4 GB", 0xFFFFFFF0, size),
        WithTable(good, "table larger than the file", place, 0x7FFFFFFF),
        WithTable(good, "table as large as can be", place, 0xFFFFFFFF),
        WithTable(good, "table of 1 byte", place, 1),
        WithTable(good, "table of 7 bytes", place, 7),
        WithTable(good, "table without size", place, 0),
        WithTable(good, "table at the beginning of the file", 0, size),
        WithTable(good, "table on the headers", 64, size),
        WithTable(good, "table not aligned", place + 1, size - 1),
        WithTable(good, "no table", 0, 0),
    };

    ModuleFile twice(module + module.substr(place, size));
    twice.SetCertificates(place, 2 * size);
    corrupted.push_back({"the certificate twice", twice.Bytes()});
    for (const DWORD length : {DWORD{0}, DWORD{7}, DWORD{9}, DWORD{0x7FFFFFFF}, DWORD{0xFFFFFFFF}})
    {
        std::string bytes = module;
        std::memcpy(&bytes[place], &length, sizeof length);
        corrupted.push_back({"certificate of length " + std::to_string(length), bytes});
    }
    std::string otherKind = module;
    otherKind[place + 6] = 1; // A certificate instead of a signature.
    corrupted.push_back({"certificate of another kind", otherKind});
    return corrupted;
}

} // namespace OrlindexTest
