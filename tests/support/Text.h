#ifndef ORLINDEX_SUPPORT_TEXT_H
#define ORLINDEX_SUPPORT_TEXT_H

#include <filesystem>
#include <string>
#include <string_view>

#include "base/Text.h"

namespace OrlindexTest {

inline std::string ToUtf8(std::wstring_view text)
{
    return Kestrany::IdentityServices::Narrow(text);
}

inline std::wstring ToWide(std::string_view utf8)
{
    return Kestrany::IdentityServices::Widen(utf8);
}

/// The path as the library's log shows it.
inline std::string Utf8(const std::filesystem::path& path)
{
    return ToUtf8(path.native());
}

/// The same path with forward slashes.
inline std::string Forward(const std::filesystem::path& path)
{
    return ToUtf8(path.generic_wstring());
}

void WriteFile(const std::filesystem::path& file, std::string_view bytes);
std::string ReadFile(const std::filesystem::path& file);

} // namespace OrlindexTest

#endif
