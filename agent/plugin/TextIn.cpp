#include "plugin/TextIn.h"

#include <cstring>
#include <cwchar>
#include <utility>

#include "platform/Text.h"

namespace Kestrany::Agent {

namespace {

IdErrorCode TakeChecked(std::string text, std::string& taken)
{
    if (!ToWide(text))
        return IdInvalidText;
    taken = std::move(text);
    return IdSuccess;
}

} // namespace

IdErrorCode TakeWide(const wchar_t* text, std::string& taken)
{
    if (text == nullptr || *text == L'\0')
        return IdFailed;
    std::optional<std::string> narrow = ToUtf8(text);
    if (!narrow)
        return IdInvalidText;
    taken = *std::move(narrow);
    return IdSuccess;
}

IdErrorCode TakeAddress(const wchar_t* text, std::string& taken)
{
    constexpr wchar_t replacement = 0xFFFD;
    if (text != nullptr && std::wcschr(text, replacement) != nullptr)
        return IdInvalidText;
    return TakeWide(text, taken);
}

IdErrorCode TakeNarrow(const char* text, std::string& taken)
{
    return TakeChecked(text == nullptr ? std::string() : std::string(text), taken);
}

IdErrorCode TakeNarrow(const char* text, int capacity, std::string& taken)
{
    if (text == nullptr || capacity <= 0)
        return TakeChecked({}, taken);
    const auto size = static_cast<std::size_t>(capacity);
    const void* end = std::memchr(text, '\0', size);
    const std::size_t length = end == nullptr ? size : static_cast<std::size_t>(static_cast<const char*>(end) - text);
    return TakeChecked(std::string(text, length), taken);
}

} // namespace Kestrany::Agent
