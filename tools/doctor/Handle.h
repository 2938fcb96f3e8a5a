#ifndef ORLINDEX_DOCTOR_HANDLE_H
#define ORLINDEX_DOCTOR_HANDLE_H

#include <memory>
#include <windows.h>

namespace Orlindex::Doctor {

struct HandleCloser
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const
    {
        if (handle != INVALID_HANDLE_VALUE)
            CloseHandle(handle);
    }
};

/// A kernel object that is closed with its owner.
using Handle = std::unique_ptr<void, HandleCloser>;

} // namespace Orlindex::Doctor

#endif
