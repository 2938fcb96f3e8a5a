#ifndef ORLINDEX_DOCTOR_VERSIONRESOURCE_H
#define ORLINDEX_DOCTOR_VERSIONRESOURCE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Orlindex::Doctor {

/// Parses the bytes of a version resource (VS_VERSIONINFO). They may be hostile: nothing outside of them is read. A
/// resource has at most 65,535 bytes, each is read a fixed number of times, and blocks nest no deeper than the three
/// levels of the format. The bytes must outlive the object. Portable: tested and fuzzed natively, under sanitizers.
class VersionResource
{
public:
    using Version = std::array<std::uint16_t, 4>;

    /// nullopt if the bytes are not a version resource, or are cut.
    static std::optional<VersionResource> Read(std::string_view bytes);

    /// nullopt if the resource has no numbers.
    std::optional<Version> FileVersion() const;
    /// A text of the resource's first language, by its name, up to its terminating zero; empty if there is none. It may
    /// contain lone surrogates.
    std::u16string Text(std::string_view name) const;

private:
    /// A header, a key, a value, and the child blocks, one after the other. All offsets are within the bytes.
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
    /// The block at an offset, cut at the end of its parent. nullopt if there is no room for one.
    std::optional<Block> BlockAt(std::size_t offset, std::size_t end) const;
    std::optional<Block> Find(const Block& parent, std::string_view key) const;
    /// Compares without regard to ASCII case.
    bool HasKey(const Block& block, std::string_view key) const;
    /// The key of the block that contains the texts: a language and a code page, such as "040904B0".
    std::string TextsKey() const;

    std::string_view bytes_;
    Block root_ = {};
};

} // namespace Orlindex::Doctor

#endif
