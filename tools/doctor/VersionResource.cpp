#include "VersionResource.h"

#include <algorithm>
#include <cstdio>

namespace Orlindex::Doctor {
namespace {

// The format: https://learn.microsoft.com/windows/win32/menurc/vs-versioninfo
constexpr std::size_t headerSize = 6; ///< Length of the block, length of its value, type of its value.
constexpr std::size_t unitSize = 2;
constexpr std::uint16_t textType = 1; ///< The value's length counts UTF-16 units; for other types it counts bytes.
constexpr std::size_t numbersSize = 52;
constexpr std::size_t translationSize = 4;

/// Values and blocks begin at multiples of four bytes from the start of the resource.
std::size_t Aligned(std::size_t offset)
{
    return (offset + 3) & ~std::size_t{3};
}

char16_t Lower(char16_t unit)
{
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

} // namespace

std::optional<VersionResource> VersionResource::Read(std::string_view bytes)
{
    if (bytes.size() < headerSize)
        return std::nullopt;
    VersionResource resource(bytes);
    const std::size_t length = resource.U16(0);
    if (length > bytes.size())
        return std::nullopt;
    resource.bytes_ = bytes.substr(0, length);
    const std::optional<Block> root = resource.BlockAt(0, length);
    if (!root || !resource.HasKey(*root, "VS_VERSION_INFO"))
        return std::nullopt;
    resource.root_ = *root;
    return resource;
}

std::uint16_t VersionResource::U16(std::size_t offset) const
{
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(bytes_[offset + index]); };
    return static_cast<std::uint16_t>(byte(0) | byte(1) << 8);
}

std::optional<VersionResource::Block> VersionResource::BlockAt(std::size_t offset, std::size_t end) const
{
    if (offset >= end || end - offset < headerSize + unitSize)
        return std::nullopt;
    const std::size_t length = U16(offset);
    if (length < headerSize + unitSize)
        return std::nullopt; // With a length of 0, a walk over the blocks would not end.
    Block block = {};
    block.end = offset + std::min(length, end - offset);
    block.key = offset + headerSize;
    std::size_t keyEnd = block.key;
    while (block.end - keyEnd >= unitSize && U16(keyEnd) != 0)
        keyEnd += unitSize;
    if (block.end - keyEnd < unitSize)
        return std::nullopt; // The key has no terminating zero.
    block.value = std::min(Aligned(keyEnd + unitSize), block.end);
    const std::size_t claimed = std::size_t{U16(offset + 2)} * (U16(offset + 4) == textType ? unitSize : 1);
    block.valueSize = std::min(claimed, block.end - block.value);
    block.children = std::min(Aligned(block.value + block.valueSize), block.end);
    return block;
}

bool VersionResource::HasKey(const Block& block, std::string_view key) const
{
    for (std::size_t index = 0; index < key.size(); ++index)
    {
        const char16_t unit = U16(block.key + index * unitSize);
        // The terminating zero of a shorter key differs, too, so nothing after it is read.
        if (Lower(unit) != Lower(static_cast<unsigned char>(key[index])))
            return false;
    }
    return U16(block.key + key.size() * unitSize) == 0;
}

std::optional<VersionResource::Block> VersionResource::Find(const Block& parent, std::string_view key) const
{
    std::size_t offset = parent.children;
    while (const std::optional<Block> block = BlockAt(offset, parent.end))
    {
        if (HasKey(*block, key))
            return block;
        offset = Aligned(block->end);
    }
    return std::nullopt;
}

std::optional<VersionResource::Version> VersionResource::FileVersion() const
{
    if (root_.valueSize < numbersSize)
        return std::nullopt;
    const std::size_t high = root_.value + 8; // After the signature and the structure's own version.
    return Version{U16(high + 2), U16(high), U16(high + 6), U16(high + 4)};
}

std::string VersionResource::TextsKey() const
{
    const std::optional<Block> info = Find(root_, "VarFileInfo");
    const std::optional<Block> translation = info ? Find(*info, "Translation") : std::nullopt;
    if (!translation || translation->valueSize < translationSize)
        return "040904B0"; // English (United States), UTF-16
    char key[16] = {};
    std::snprintf(key, sizeof key, "%04X%04X", unsigned{U16(translation->value)},
                  unsigned{U16(translation->value + unitSize)});
    return key;
}

std::u16string VersionResource::Text(std::string_view name) const
{
    const std::optional<Block> info = Find(root_, "StringFileInfo");
    const std::optional<Block> texts = info ? Find(*info, TextsKey()) : std::nullopt;
    const std::optional<Block> found = texts ? Find(*texts, name) : std::nullopt;
    std::u16string text;
    if (!found)
        return text;
    for (std::size_t offset = 0; offset + unitSize <= found->valueSize; offset += unitSize)
    {
        const char16_t unit = U16(found->value + offset);
        if (unit == 0)
            break;
        text += unit;
    }
    return text;
}

} // namespace Orlindex::Doctor
