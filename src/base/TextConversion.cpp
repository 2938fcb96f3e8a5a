#include "base/TextConversion.h"

#include <limits>
#include <windows.h>

namespace Kestrany::IdentityServices {
namespace {

template <class Text>
bool FitsPlatformLength(Text text)
{
    return text.size() <= static_cast<std::size_t>((std::numeric_limits<int>::max)());
}

} // namespace

std::wstring Widen(std::string_view utf8)
{
    if (utf8.empty() || !FitsPlatformLength(utf8))
        return {};
    const int length = static_cast<int>(utf8.size());
    const int needed = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    if (needed <= 0)
        return {};
    std::wstring utf16(static_cast<std::size_t>(needed), L'\0');
    if (MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, utf16.data(), needed) != needed)
        return {};
    return utf16;
}

std::string Narrow(std::wstring_view utf16)
{
    if (utf16.empty() || !FitsPlatformLength(utf16))
        return {};
    const int length = static_cast<int>(utf16.size());
    const int needed = WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, nullptr, 0, nullptr, nullptr);
    if (needed <= 0)
        return {};
    std::string utf8(static_cast<std::size_t>(needed), '\0');
    if (WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, utf8.data(), needed, nullptr, nullptr) != needed)
        return {};
    return utf8;
}

std::size_t NarrowInto(char* target, std::wstring_view utf16)
{
    constexpr std::size_t longest = (std::numeric_limits<int>::max)() / Utf8BytesAUnit;
    if (utf16.empty() || utf16.size() > longest)
        return 0;
    const int length = static_cast<int>(utf16.size());
    const int capacity = length * static_cast<int>(Utf8BytesAUnit);
    const int size = WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, target, capacity, nullptr, nullptr);
    return size > 0 ? static_cast<std::size_t>(size) : 0;
}

} // namespace Kestrany::IdentityServices
