#ifndef ORLINDEX_API_BOUNDEDCOPY_H
#define ORLINDEX_API_BOUNDEDCOPY_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Kestrany::IdentityServices {

/// Copies a text with its terminating zero into a buffer of `capacity` bytes by the runtime's bounded copy. A buffer
/// that is null or too small is emptied where it can be, and the runtime's invalid-parameter handler is called: the
/// host's own where it installed one, else the process ends.
inline void BoundedCopy(char* target, std::size_t capacity, const char* text)
{
    strcpy_s(target, capacity, text);
}

/// A caller's size, a signed number of bytes, as the capacity that the copy is told. A negative one is not refused: by
/// contract it is widened with its sign and compares as very large.
inline std::size_t CallerCapacity(std::int32_t size)
{
    return static_cast<std::size_t>(static_cast<std::int64_t>(size));
}

} // namespace Kestrany::IdentityServices

#endif
