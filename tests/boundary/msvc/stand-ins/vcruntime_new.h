#pragma once

#include <stddef.h>
#include <vcruntime_exception.h>

namespace std {

enum class align_val_t : size_t
{
};

struct nothrow_t
{
    explicit nothrow_t() = default;
};
extern const nothrow_t nothrow;

} // namespace std

void* operator new(size_t);
void* operator new[](size_t);
void* operator new(size_t, const std::nothrow_t&) noexcept;
void* operator new[](size_t, const std::nothrow_t&) noexcept;
void* operator new(size_t, std::align_val_t);
void* operator new[](size_t, std::align_val_t);
void operator delete(void*) noexcept;
void operator delete[](void*) noexcept;
void operator delete(void*, size_t) noexcept;
void operator delete[](void*, size_t) noexcept;
void operator delete(void*, const std::nothrow_t&) noexcept;
void operator delete[](void*, const std::nothrow_t&) noexcept;
void operator delete(void*, std::align_val_t) noexcept;
void operator delete[](void*, std::align_val_t) noexcept;
void operator delete(void*, size_t, std::align_val_t) noexcept;
void operator delete[](void*, size_t, std::align_val_t) noexcept;

inline void* operator new(size_t, void* place) noexcept
{
    return place;
}

inline void* operator new[](size_t, void* place) noexcept
{
    return place;
}

inline void operator delete(void*, void*) noexcept {}

inline void operator delete[](void*, void*) noexcept {}
