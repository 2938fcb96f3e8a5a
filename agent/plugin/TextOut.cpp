#include "plugin/TextOut.h"

#include <algorithm>

#include "platform/Text.h"

namespace Kestrany::Agent {

namespace {

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

IdErrorCode CopyWide(const std::string& text, wchar_t* buffer, int capacity)
{
    if (buffer == nullptr)
        return IdFailed;
    const std::optional<std::wstring> wide = ToWide(text);
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
    return static_cast<int>(ToWide(text)->size());
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
