#ifndef ORLINDEX_API_TEXTOUT_H
#define ORLINDEX_API_TEXTOUT_H

#include <array>
#include <cstddef>
#include <string_view>

#include "api/BoundedCopy.h"
#include "base/SystemText.h"
#include "orlindex/talix.h"

namespace Kestrany::IdentityServices {

/// A zero-filled buffer that the plugin writes a text into.
template <std::size_t Units>
struct PluginText
{
    std::array<wchar_t, Units> buffer = {};

    static constexpr int Capacity = static_cast<int>(Units);
    wchar_t* Data() { return buffer.data(); }
    /// Up to its first zero; a plugin that forgets the zero does not lead beyond the buffer.
    std::wstring_view Text() const
    {
        const std::wstring_view whole(buffer.data(), buffer.size());
        return whole.substr(0, whole.find(L'\0'));
    }
};

/// Copies a text as UTF-8 into the caller's buffer. Answers `result`, or IdBufferTooSmall with the buffer untouched.
inline talix_status_code CopyTextOut(std::wstring_view text, const talix_buffer& out, talix_status_code result)
{
    const std::string utf8 = Narrow(text);
    const std::size_t capacity = CallerCapacity(out.size);
    if (capacity <= utf8.size())
        return IdBufferTooSmall;
    BoundedCopy(out.buffer, capacity, utf8.c_str());
    return result;
}

} // namespace Kestrany::IdentityServices

#endif
