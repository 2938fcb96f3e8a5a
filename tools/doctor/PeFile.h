#ifndef ORLINDEX_DOCTOR_PEFILE_H
#define ORLINDEX_DOCTOR_PEFILE_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Orlindex::Doctor {

/// Parses the bytes of a Windows module's file. They may be hostile: nothing outside of them is read, and no number in
/// them determines the time or the memory that parsing takes. The bytes must outlive the object. Portable: tested and
/// fuzzed natively, under sanitizers.
class PeFile
{
public:
    static constexpr std::uint16_t MachineX64 = 0x8664;
    static constexpr std::uint16_t MachineX86 = 0x014C;

    /// nullopt if the bytes are not a Windows module.
    static std::optional<PeFile> Read(std::string_view bytes);

    std::uint16_t Machine() const { return machine_; }
    bool IsDll() const { return dll_; }
    bool Is64Bit() const { return pe64_; }

    /// Whether a name is exported.
    bool Exports(std::string_view name) const;
    /// The first exported names, at most `limit`, in the module's order.
    std::vector<std::string> ExportedNames(std::size_t limit) const;
    /// The first libraries that the module imports, at most `limit`, in the module's order.
    std::vector<std::string> ImportedLibraries(std::size_t limit) const;
    /// The version resource: the neutral one, else the one in U.S. English, else the first. nullopt if there is none,
    /// or if the file does not contain all of its bytes.
    std::optional<std::string_view> VersionResourceBytes() const;

private:
    struct Section
    {
        std::uint32_t address;
        std::uint32_t fileSize; ///< Bytes that are both in the file and mapped.
        std::uint32_t fileOffset;
    };

    struct Directory
    {
        std::uint32_t address = 0;
        std::uint32_t size = 0;
    };

    explicit PeFile(std::string_view bytes) : bytes_(bytes) {}

    bool ReadHeaders();
    bool ReadSections(std::size_t offset, std::size_t count);

    std::optional<std::uint16_t> U16(std::size_t offset) const;
    std::optional<std::uint32_t> U32(std::size_t offset) const;
    /// The offset in the file of an address of the loaded module.
    std::optional<std::size_t> OffsetOf(std::uint64_t address) const;
    std::optional<std::uint16_t> U16At(std::uint64_t address) const;
    std::optional<std::uint32_t> U32At(std::uint64_t address) const;
    /// `size` bytes at an address; nullopt if they are not in the file, within one section.
    std::optional<std::string_view> BytesAt(std::uint64_t address, std::uint32_t size) const;
    /// The text at an address; nullopt if it does not end within the file and within 4096 bytes.
    std::optional<std::string_view> TextAt(std::uint64_t address) const;
    Directory DirectoryAt(std::size_t index) const;
    /// Calls `visit(name)` for each exported name until it returns false.
    template <class Visit>
    void VisitExports(const Visit& visit) const;
    /// Calls `visit(identifier, offset)` for each numbered entry of a resource table until it returns false.
    template <class Visit>
    void VisitResources(std::uint64_t table, const Visit& visit) const;
    /// The offset of the entry whose identifier comes first in `identifiers`. If the table has none of them: with `any`
    /// that of its first entry, else nullopt.
    std::optional<std::uint32_t> FindResource(std::uint64_t table, std::initializer_list<std::uint32_t> identifiers,
                                              bool any) const;

    std::string_view bytes_;
    std::uint16_t machine_ = 0;
    bool dll_ = false;
    bool pe64_ = false;
    std::size_t directories_ = 0; ///< Offset of the first directory.
    std::uint32_t directoryCount_ = 0;
    std::vector<Section> sections_;
};

} // namespace Orlindex::Doctor

#endif
