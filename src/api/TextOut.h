#ifndef ORLINDEX_API_TEXTOUT_H
#define ORLINDEX_API_TEXTOUT_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "api/BoundedCopy.h"
#include "base/Text.h"
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
        const auto end = std::find(buffer.begin(), buffer.end(), L'\0');
        return {buffer.data(), static_cast<std::size_t>(end - buffer.begin())};
    }
};

/// Copies a text as UTF-8 into the caller's buffer. Answers `result`, or IdBufferTooSmall with the buffer untouched.
template <std::size_t Units>
talix_status_code CopyTextOut(const PluginText<Units>& text, const talix_buffer& out, talix_status_code result)
{
    char utf8[Units * Utf8BytesPerUnit + 1];
    const std::size_t size = NarrowInto(utf8, text.Text());
    utf8[size] = '\0';
    const std::size_t capacity = CallerCapacity(out.size);
    if (capacity <= size)
        return IdBufferTooSmall;
    if (out.buffer)
        std::memcpy(out.buffer, utf8, size + 1); // It fits; the bounded copy goes byte by byte.
    else
        BoundedCopy(out.buffer, capacity, utf8);
    return result;
}

} // namespace Kestrany::IdentityServices

#endif
