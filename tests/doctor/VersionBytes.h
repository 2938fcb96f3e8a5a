#ifndef ORLINDEX_DOCTOR_TESTS_VERSIONBYTES_H
#define ORLINDEX_DOCTOR_TESTS_VERSIONBYTES_H

#include <cstdint>
#include <string>
#include <string_view>

namespace OrlindexTest {

// Version resources in the form of a resource compiler, for tests that change them.

inline void PutU16(std::string& bytes, std::size_t offset, unsigned number)
{
    bytes.at(offset) = static_cast<char>(number & 0xFF);
    bytes.at(offset + 1) = static_cast<char>(number >> 8 & 0xFF);
}

inline std::string Units(std::u16string_view text)
{
    std::string bytes;
    for (const char16_t unit : text)
        bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    return bytes;
}

inline std::string Aligned(std::string bytes)
{
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return bytes;
}

/// A block with these blocks, whose value has `valueLength` units of its type.
inline std::string VersionBlock(std::u16string_view key, unsigned valueLength, unsigned type, const std::string& value,
                                const std::string& blocks = {})
{
    std::string block(6, '\0');
    block += Units(key) + std::string(2, '\0');
    block = Aligned(block) + value;
    if (!blocks.empty())
        block = Aligned(block) + blocks;
    PutU16(block, 0, static_cast<unsigned>(block.size()));
    PutU16(block, 2, valueLength);
    PutU16(block, 4, type);
    return block;
}

inline std::string VersionText(std::u16string_view name, std::u16string_view text)
{
    const std::string value = Units(text) + std::string(2, '\0');
    return Aligned(VersionBlock(name, static_cast<unsigned>(value.size() / 2), 1, value));
}

/// Texts in one language, such as u"040904B0".
inline std::string VersionTexts(std::u16string_view language, const std::string& texts)
{
    return Aligned(VersionBlock(u"StringFileInfo", 0, 1, {}, VersionBlock(language, 0, 1, {}, texts)));
}

inline std::string VersionTranslation(unsigned language, unsigned codePage)
{
    std::string value(4, '\0');
    PutU16(value, 0, language);
    PutU16(value, 2, codePage);
    return VersionBlock(u"VarFileInfo", 0, 1, {}, VersionBlock(u"Translation", 4, 0, value));
}

/// The numbers 1.2.3.4, and these blocks.
inline std::string VersionBytes(const std::string& blocks)
{
    std::string numbers("\xBD\x04\xEF\xFE\0\0\1\0\2\0\1\0\4\0\3\0", 16);
    numbers.resize(52);
    return VersionBlock(u"VS_VERSION_INFO", 52, 0, numbers, blocks);
}

/// With the texts "CompanyName" and "FileDescription".
inline std::string SoundVersionBytes()
{
    return VersionBytes(
        VersionTexts(u"040904B0", VersionText(u"CompanyName", u"Maker") + VersionText(u"FileDescription", u"What")) +
        VersionTranslation(0x409, 0x4B0));
}

} // namespace OrlindexTest

#endif
