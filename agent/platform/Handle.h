#ifndef AGENT_PLATFORM_HANDLE_H
#define AGENT_PLATFORM_HANDLE_H

#include <memory>

#include <windows.h>

namespace Kestrany::Agent {

struct HandleCloser
{
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};

/// A kernel object that is closed with its owner. Null when there is none.
using Handle = std::unique_ptr<void, HandleCloser>;

/// Owns a handle of the calls that answer INVALID_HANDLE_VALUE for none.
inline Handle OwnValid(HANDLE handle)
{
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

} // namespace Kestrany::Agent

#endif
