#ifndef ORLINDEX_DOCTOR_VERSIONRESOURCE_H
#define ORLINDEX_DOCTOR_VERSIONRESOURCE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Orlindex::Doctor {

/// Reads a version resource (VS_VERSIONINFO) from its bytes. They may be hostile: nothing outside of them is read. A
/// resource has at most 65,535 bytes, each is looked at a fixed number of times, and nothing nests deeper than the
/// three levels of the format. The bytes must outlive the object.
class VersionResource
{
public:
    using Version = std::array<std::uint16_t, 4>;

    /// nullopt if the bytes are no version resource, or not all of one.
    static std::optional<VersionResource> Read(std::string_view bytes);

    /// nullopt if the resource has no numbers.
    std::optional<Version> FileVersion() const;
    /// A text of the resource's first language, by its name, up to its terminating zero; empty if there is none. The
    /// units are those of the file: a surrogate may stand alone.
    std::u16string Text(std::string_view name) const;

private:
    /// A header, a key, a value, and the blocks within, one after the other. All of it lies within the bytes.
    struct Block
    {
        std::size_t key;
        std::size_t value;
        std::size_t valueSize; ///< Bytes.
        std::size_t children;
        std::size_t end;
    };

    explicit VersionResource(std::string_view bytes) : bytes_(bytes) {}

    std::uint16_t U16(std::size_t offset) const;
    /// The block at an offset, cut where the one that it lies in ends. nullopt if there is no room for one.
    std::optional<Block> BlockAt(std::size_t offset, std::size_t end) const;
    std::optional<Block> Find(const Block& parent, std::string_view key) const;
    /// ASCII letters count in any case.
    bool HasKey(const Block& block, std::string_view key) const;
    /// The key of the block with the texts, which is made of a language and a code page.
    std::string TextsKey() const;

    std::string_view bytes_;
    Block root_ = {};
};

} // namespace Orlindex::Doctor

#endif
