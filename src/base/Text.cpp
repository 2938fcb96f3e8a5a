#include "base/Text.h"

#include <limits>
#include <windows.h>

namespace Kestrany::IdentityServices {
namespace {

constexpr DWORD replaceIllFormed = 0;

template <class Text>
bool FitsPlatformLength(Text text)
{
    return text.size() <= static_cast<std::size_t>((std::numeric_limits<int>::max)());
}

std::optional<std::wstring> ConvertToWide(std::string_view utf8, DWORD flags)
{
    if (utf8.empty())
        return std::wstring();
    if (!FitsPlatformLength(utf8)) // not covered: A test would need a text of two gigabytes.
        return std::nullopt;       // not covered: A test would need a text of two gigabytes.
    const int length = static_cast<int>(utf8.size());
    const int needed = MultiByteToWideChar(CP_UTF8, flags, utf8.data(), length, nullptr, 0);
    if (needed <= 0)
        return std::nullopt;
    std::wstring utf16(static_cast<std::size_t>(needed), L'\0');
    if (MultiByteToWideChar(CP_UTF8, flags, utf8.data(), length, utf16.data(), needed) != needed)
        return std::nullopt;
    return utf16;
}

std::optional<std::string> ConvertToUtf8(std::wstring_view utf16, DWORD flags)
{
    if (utf16.empty())
        return std::string();
    if (!FitsPlatformLength(utf16)) // not covered: A test would need a text of two gigabytes.
        return std::nullopt;        // not covered: A test would need a text of two gigabytes.
    const int length = static_cast<int>(utf16.size());
    const int needed = WideCharToMultiByte(CP_UTF8, flags, utf16.data(), length, nullptr, 0, nullptr, nullptr);
    if (needed <= 0)
        return std::nullopt;
    std::string utf8(static_cast<std::size_t>(needed), '\0');
    if (WideCharToMultiByte(CP_UTF8, flags, utf16.data(), length, utf8.data(), needed, nullptr, nullptr) != needed)
        return std::nullopt;
    return utf8;
}

} // namespace

std::wstring Widen(std::string_view utf8)
{
    return ConvertToWide(utf8, replaceIllFormed).value_or(std::wstring());
}

std::string Narrow(std::wstring_view utf16)
{
    return ConvertToUtf8(utf16, replaceIllFormed).value_or(std::string());
}

std::optional<std::wstring> WidenStrictly(std::string_view utf8)
{
    return ConvertToWide(utf8, MB_ERR_INVALID_CHARS);
}

// not covered from here: Only the agent converts strictly; its tests do.
std::optional<std::string> NarrowStrictly(std::wstring_view utf16)
{
    return ConvertToUtf8(utf16, WC_ERR_INVALID_CHARS);
}
// not covered to here

std::size_t NarrowInto(char* target, std::wstring_view utf16)
{
    constexpr std::size_t longest = (std::numeric_limits<int>::max)() / Utf8BytesPerUnit;
    if (utf16.empty() || utf16.size() > longest) // not covered: A test would need a text of two gigabytes.
        return 0;
    const int length = static_cast<int>(utf16.size());
    const int capacity = length * static_cast<int>(Utf8BytesPerUnit);
    const int size = WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, target, capacity, nullptr, nullptr);
    return size > 0 ? static_cast<std::size_t>(size) : 0;
}

} // namespace Kestrany::IdentityServices
