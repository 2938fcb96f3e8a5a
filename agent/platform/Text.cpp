#include "platform/Text.h"

#include <limits>

#include <windows.h>

namespace Kestrany::Agent {

namespace {

constexpr std::size_t MaxLength = std::numeric_limits<int>::max();

std::optional<std::string> Narrow(std::wstring_view text, DWORD flags)
{
    if (text.empty())
        return std::string();
    if (text.size() > MaxLength)
        return std::nullopt;
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, flags, text.data(), length, nullptr, 0, nullptr, nullptr);
    if (size <= 0)
        return std::nullopt;
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, flags, text.data(), length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

} // namespace

std::optional<std::string> ToUtf8(std::wstring_view text)
{
    return Narrow(text, WC_ERR_INVALID_CHARS);
}

std::optional<std::wstring> ToWide(std::string_view text)
{
    if (text.empty())
        return std::wstring();
    if (text.size() > MaxLength)
        return std::nullopt;
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
    if (size <= 0)
        return std::nullopt;
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(), size);
    return wide;
}

std::string ToDisplay(std::wstring_view text)
{
    return Narrow(text, 0).value_or(std::string());
}

std::string SystemMessage(unsigned long code)
{
    wchar_t text[512];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                                        text, static_cast<DWORD>(std::size(text)), nullptr);
    std::string message = ToDisplay({text, length});
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r' || message.back() == ' '))
        message.pop_back();
    return (message.empty() ? std::string("unknown error") : message) + " (" + std::to_string(code) + ")";
}

} // namespace Kestrany::Agent
