#ifndef ORLINDEX_SUPPORT_HANDLE_H
#define ORLINDEX_SUPPORT_HANDLE_H

#include <memory>

#include <windows.h>

namespace OrlindexTest {

struct HandleCloser
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const
    {
        if (handle != INVALID_HANDLE_VALUE)
            CloseHandle(handle);
    }
};

/// A kernel object, closed by the destructor.
using Handle = std::unique_ptr<void, HandleCloser>;

} // namespace OrlindexTest

#endif
