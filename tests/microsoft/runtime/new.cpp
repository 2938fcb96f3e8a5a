// operator new and operator delete, on top of the C runtime's allocator.
#include <new.h>
#include <stdlib.h>

extern "C" int __cdecl _callnewh(size_t size);

namespace {

/// Throws if there is no handler for a lack of memory, or if it gives up.
template <typename Allocate>
void* AllocateOrThrow(size_t size, Allocate allocate)
{
    for (;;)
    {
        if (void* block = allocate(size ? size : 1))
            return block;
        if (!_callnewh(size))
            throw std::bad_alloc();
    }
}

template <typename Allocate>
void* NullIfThrown(Allocate allocate) noexcept
{
    try
    {
        return allocate();
    }
    catch (...)
    {
        return nullptr;
    }
}

} // namespace

void* operator new(size_t size)
{
    return AllocateOrThrow(size, [](size_t bytes) { return malloc(bytes); });
}

void* operator new(size_t size, std::align_val_t alignment)
{
    return AllocateOrThrow(size, [&](size_t bytes) { return _aligned_malloc(bytes, static_cast<size_t>(alignment)); });
}

void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    return NullIfThrown([&] { return operator new(size); });
}

void* operator new(size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return NullIfThrown([&] { return operator new(size, alignment); });
}

void operator delete(void* block) noexcept
{
    free(block);
}

void operator delete(void* block, std::align_val_t) noexcept
{
    _aligned_free(block);
}

// All others are one of these.

void* operator new[](size_t size)
{
    return operator new(size);
}

void* operator new[](size_t size, std::align_val_t alignment)
{
    return operator new(size, alignment);
}

void* operator new[](size_t size, const std::nothrow_t& tag) noexcept
{
    return operator new(size, tag);
}

void* operator new[](size_t size, std::align_val_t alignment, const std::nothrow_t& tag) noexcept
{
    return operator new(size, alignment, tag);
}

void operator delete[](void* block) noexcept
{
    operator delete(block);
}

void operator delete(void* block, size_t) noexcept
{
    operator delete(block);
}

void operator delete[](void* block, size_t) noexcept
{
    operator delete(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept
{
    operator delete(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    operator delete(block);
}

void operator delete[](void* block, std::align_val_t alignment) noexcept
{
    operator delete(block, alignment);
}

void operator delete(void* block, size_t, std::align_val_t alignment) noexcept
{
    operator delete(block, alignment);
}

void operator delete[](void* block, size_t, std::align_val_t alignment) noexcept
{
    operator delete(block, alignment);
}

void operator delete(void* block, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    operator delete(block, alignment);
}

void operator delete[](void* block, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    operator delete(block, alignment);
}
