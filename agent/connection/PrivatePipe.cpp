#include "connection/PrivatePipe.h"

#include <memory>

#include <sddl.h>

#include "platform/User.h"

namespace Kestrany::Agent {

namespace {

struct LocalFreer
{
    void operator()(void* descriptor) const { LocalFree(descriptor); }
};
using Descriptor = std::unique_ptr<void, LocalFreer>;

/// All rights for the user, none for anybody else; the inherited default would let others read.
Descriptor OwnUserAlone()
{
    const std::wstring text = L"O:" + OwnUserSid() + L"D:P(A;;GA;;;" + OwnUserSid() + L")";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1, &descriptor, nullptr))
        return {};
    return Descriptor(descriptor);
}

} // namespace

Handle CreatePrivatePipe(const std::wstring& name, PipeKind kind, bool first, DWORD instances, DWORD bufferSize)
{
    const Descriptor descriptor = OwnUserAlone();
    if (!descriptor)
        return {};
    SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor.get(), FALSE};
    const DWORD open = PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | (first ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0);
    const DWORD mode =
        (kind == PipeKind::Messages ? PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE : PIPE_TYPE_BYTE | PIPE_READMODE_BYTE) |
        PIPE_REJECT_REMOTE_CLIENTS;
    return OwnValid(CreateNamedPipeW(name.c_str(), open, mode, instances, bufferSize, bufferSize, 0, &attributes));
}

Handle OpenPrivatePipe(const std::wstring& name, const Deadline& deadline)
{
    for (;;)
    {
        // The server learns who asks, but cannot act for the asker.
        Handle pipe =
            OwnValid(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
        if (pipe || GetLastError() != ERROR_PIPE_BUSY)
            return pipe;
        // Others ask at the same time. A limit of 0 would mean the pipe's own.
        const DWORD left = deadline.Left();
        if (left == 0 || !WaitNamedPipeW(name.c_str(), left))
            return {};
    }
}

} // namespace Kestrany::Agent
