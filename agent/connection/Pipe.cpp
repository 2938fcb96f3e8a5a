#include "connection/Pipe.h"

#include <stdexcept>
#include <utility>

#include <sddl.h>

#include "platform/Base.h"
#include "platform/User.h"

namespace Kestrany::Agent {

namespace {

constexpr DWORD BufferSize = 64 * 1024;
constexpr DWORD ReadSize = 16 * 1024;

using Descriptor = LocalMemory<void>;

/// All rights for the user, none for anybody else. The inherited default would let others read.
Descriptor OwnUserOnly()
{
    const std::wstring text = L"O:" + OwnUserSid() + L"D:P(A;;GA;;;" + OwnUserSid() + L")";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1, &descriptor, nullptr))
        return {};
    return Descriptor(descriptor);
}

Handle MakeEvent()
{
    Handle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!event)
        throw std::runtime_error("no event: " + SystemMessage(GetLastError()));
    return event;
}

std::wstring ExecutableOf(HANDLE process)
{
    std::wstring path(32'768, L'\0');
    auto size = static_cast<DWORD>(path.size());
    path.resize(QueryFullProcessImageNameW(process, 0, path.data(), &size) ? size : 0);
    return path;
}

/// Whether two paths lead to one file. Links, short names and substituted drives give a file several paths.
bool IsSameFile(const std::wstring& left, const std::wstring& right)
{
    const auto open = [](const std::wstring& path) {
        return OwnFile(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
    };
    // Both stay open during the comparison: the index of a deleted file is reused.
    const Handle leftFile = open(left);
    const Handle rightFile = open(right);
    BY_HANDLE_FILE_INFORMATION leftId{};
    BY_HANDLE_FILE_INFORMATION rightId{};
    return leftFile && rightFile && GetFileInformationByHandle(leftFile.get(), &leftId) &&
           GetFileInformationByHandle(rightFile.get(), &rightId) &&
           leftId.dwVolumeSerialNumber == rightId.dwVolumeSerialNumber &&
           leftId.nFileIndexHigh == rightId.nFileIndexHigh && leftId.nFileIndexLow == rightId.nFileIndexLow;
}

} // namespace

PendingOperation::PendingOperation() : event_(MakeEvent())
{
    overlapped_.hEvent = event_.get();
}

void PendingOperation::Read(HANDLE file, void* bytes, DWORD size)
{
    Begin(ReadFile(file, bytes, size, nullptr, &overlapped_));
}

void PendingOperation::Write(HANDLE file, const void* bytes, DWORD size)
{
    Begin(WriteFile(file, bytes, size, nullptr, &overlapped_));
}

void PendingOperation::Begin(BOOL hasEnded)
{
    const DWORD error = hasEnded ? ERROR_SUCCESS : GetLastError();
    beginError_ = error == ERROR_IO_PENDING ? ERROR_SUCCESS : error;
}

std::optional<DWORD> PendingOperation::Finish(HANDLE file, DWORD milliseconds, HANDLE cancelled)
{
    if (beginError_ != ERROR_SUCCESS)
    {
        SetLastError(beginError_);
        return std::nullopt;
    }
    DWORD size = 0;
    // An operation that has ended already needs no wait, which would be a further request to the system.
    if (GetOverlappedResult(file, &overlapped_, &size, FALSE))
        return size;
    if (GetLastError() != ERROR_IO_INCOMPLETE)
        return std::nullopt;
    const HANDLE objects[] = {event_.get(), cancelled};
    if (WaitForMultipleObjects(cancelled ? 2 : 1, objects, FALSE, milliseconds) != WAIT_OBJECT_0)
        CancelIoEx(file, &overlapped_);
    if (!GetOverlappedResult(file, &overlapped_, &size, TRUE))
        return std::nullopt;
    return size;
}

Handle CreatePipeInstance(const std::wstring& name, bool first)
{
    const Descriptor descriptor = OwnUserOnly();
    if (!descriptor)
        return {};
    SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor.get(), FALSE};
    const DWORD open = PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | (first ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0);
    const DWORD mode = PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_REJECT_REMOTE_CLIENTS;
    return OwnFile(
        CreateNamedPipeW(name.c_str(), open, mode, PIPE_UNLIMITED_INSTANCES, BufferSize, BufferSize, 0, &attributes));
}

Handle OpenPipe(const std::wstring& name, const Deadline& deadline)
{
    for (;;)
    {
        // The server may identify the client, but not impersonate it.
        Handle pipe =
            OwnFile(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
        if (pipe || GetLastError() != ERROR_PIPE_BUSY)
            return pipe;
        // Other clients connect at the same time. A limit of 0 would mean the pipe's own.
        const DWORD left = deadline.Left();
        if (left == 0 || !WaitNamedPipeW(name.c_str(), left))
            return {};
    }
}

std::string WhyNotTrusted(HANDLE pipe, const std::wstring& executable)
{
    ULONG id = 0;
    if (!GetNamedPipeServerProcessId(pipe, &id))
        return "the system does not tell which process it is";
    const Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
    const std::string name = "process " + std::to_string(id);
    if (!process || UserSidOf(process.get()) != OwnUserSid())
        return name + " is not this user's";
    const std::wstring path = ExecutableOf(process.get());
    if (!IsSameFile(path, executable))
        return name + " is " + Narrow(path) + ", not " + Narrow(executable) +
               "; quit it (Pellwick.exe --quit), or give this installation a data folder of its own "
               "(PELLWICK_SIMULATOR_DATA)";
    return {};
}

bool IsBroken(HANDLE pipe)
{
    return !PeekNamedPipe(pipe, nullptr, 0, nullptr, nullptr, nullptr);
}

PipeClient::PipeClient(Handle file) : file_(std::move(file)), broken_(MakeEvent()) {}

bool PipeClient::Write(const std::string& message, const Deadline& deadline)
{
    const std::string frame = WriteFrame(message);
    const std::lock_guard lock(writing_);
    const auto size = static_cast<DWORD>(frame.size());
    write_.Write(file_.get(), frame.data(), size);
    if (write_.Finish(file_.get(), deadline.Left(), broken_.get()) == size)
        return true;
    // Part of the frame may have been sent: the server could not find the start of a further one.
    Break();
    return false;
}

std::optional<std::string> PipeClient::Read(const Deadline* deadline)
{
    for (;;)
    {
        if (std::optional<std::string> message = frames_.Next())
            return message;
        if (frames_.IsBroken())
            break;
        char bytes[ReadSize];
        read_.Read(file_.get(), bytes, ReadSize);
        const std::optional<DWORD> size =
            read_.Finish(file_.get(), deadline == nullptr ? INFINITE : deadline->Left(), broken_.get());
        const bool isCancelled = !size && GetLastError() == ERROR_OPERATION_ABORTED;
        if (isCancelled && deadline != nullptr && deadline->Left() == 0)
            return std::nullopt;
        if (!size || *size == 0)
            break;
        frames_.Add(bytes, *size);
    }
    isOver_ = true;
    return std::nullopt;
}

} // namespace Kestrany::Agent
