#include "plugin/Texts.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <utility>

#include "platform/Base.h"

namespace Kestrany::Agent {

namespace {

IdErrorCode TakeChecked(std::string text, std::string& taken)
{
    if (!WidenStrictly(text))
        return IdInvalidText;
    taken = std::move(text);
    return IdSuccess;
}

/// Whether a text and its terminating zero fit. A negative capacity holds nothing.
bool Fits(std::size_t length, int capacity)
{
    return capacity > 0 && length < static_cast<std::size_t>(capacity);
}

bool IsWanted(const RecordText& entry)
{
    return entry.buffer != nullptr && entry.capacity != 0;
}

} // namespace

IdErrorCode TakeWide(const wchar_t* text, std::string& taken)
{
    if (text == nullptr || *text == L'\0')
        return IdFailed;
    std::optional<std::string> narrow = NarrowStrictly(text);
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

IdErrorCode CopyWide(const std::string& text, wchar_t* buffer, int capacity)
{
    if (buffer == nullptr)
        return IdFailed;
    const std::optional<std::wstring> wide = WidenStrictly(text);
    if (!wide)
        return IdInvalidText;
    if (!Fits(wide->size(), capacity))
        return IdBufferTooSmall;
    std::copy_n(wide->c_str(), wide->size() + 1, buffer);
    return IdSuccess;
}

int CopyWideLength(const std::string& text, wchar_t* buffer, int capacity)
{
    if (CopyWide(text, buffer, capacity) != IdSuccess)
        return 0;
    const std::optional<std::wstring> wide = WidenStrictly(text);
    return wide ? static_cast<int>(wide->size()) : 0;
}

int CopyNarrowLength(const std::string& text, char* buffer, int capacity)
{
    if (buffer == nullptr || !Fits(text.size(), capacity))
        return 0;
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return static_cast<int>(text.size());
}

IdErrorCode CopyRecord(std::initializer_list<RecordText> texts)
{
    const auto overflows = [](const RecordText& entry) {
        return IsWanted(entry) && !Fits(entry.text.size(), entry.capacity);
    };
    if (std::any_of(texts.begin(), texts.end(), overflows))
        return IdBufferTooSmall;
    for (const RecordText& entry : texts)
    {
        if (IsWanted(entry))
            std::copy_n(entry.text.c_str(), entry.text.size() + 1, entry.buffer);
    }
    return IdSuccess;
}

} // namespace Kestrany::Agent
