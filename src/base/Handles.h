#ifndef ORLINDEX_BASE_HANDLES_H
#define ORLINDEX_BASE_HANDLES_H

#include <memory>
#include <type_traits>
#include <windows.h>

#include <combaseapi.h>

namespace Kestrany::IdentityServices {

// One owning type for each kind of resource that the platform allocates.

struct HandleCloser
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const
    {
        if (handle != INVALID_HANDLE_VALUE) // not covered: OwnFile makes it null.
            CloseHandle(handle);
    }
};

/// A kernel object; null if there is none. For a function that returns INVALID_HANDLE_VALUE on failure, use OwnFile.
using Handle = std::unique_ptr<void, HandleCloser>;

/// Owns the result of a function that returns INVALID_HANDLE_VALUE on failure.
inline Handle OwnFile(HANDLE handle)
{
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

struct LocalMemoryFreer
{
    void operator()(void* memory) const { LocalFree(memory); }
};

/// Memory that the platform allocated with LocalAlloc.
template <class Type>
using LocalMemory = std::unique_ptr<Type, LocalMemoryFreer>;

struct TaskMemoryFreer
{
    void operator()(void* memory) const { CoTaskMemFree(memory); }
};

/// Memory that the platform allocated with CoTaskMemAlloc.
template <class Type>
using TaskMemory = std::unique_ptr<Type, TaskMemoryFreer>;

struct ModuleReleaser
{
    void operator()(HMODULE module) const { FreeLibrary(module); }
};

/// One reference to a loaded module.
using ModuleReference = std::unique_ptr<std::remove_pointer_t<HMODULE>, ModuleReleaser>;

} // namespace Kestrany::IdentityServices

#endif
