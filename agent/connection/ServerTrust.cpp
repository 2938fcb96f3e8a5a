#include "connection/ServerTrust.h"

#include "platform/Text.h"
#include "platform/User.h"

namespace Kestrany::Agent {

namespace {

std::wstring ExecutableOf(HANDLE process)
{
    std::wstring path(32'768, L'\0');
    auto size = static_cast<DWORD>(path.size());
    path.resize(QueryFullProcessImageNameW(process, 0, path.data(), &size) ? size : 0);
    return path;
}

/// Links, short names and drives that stand for a folder lead to one file by several paths.
bool SameFile(const std::wstring& left, const std::wstring& right)
{
    const auto open = [](const std::wstring& path) {
        return OwnValid(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    };
    // Both stay open while they are compared: an index is reused after a file's end.
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

std::string Distrust(HANDLE pipe, const std::wstring& executable)
{
    ULONG id = 0;
    if (!GetNamedPipeServerProcessId(pipe, &id))
        return "the system does not tell which process it is";
    const Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
    const std::string name = "process " + std::to_string(id);
    if (!process || UserSidOf(process.get()) != OwnUserSid())
        return name + " is not this user's";
    const std::wstring path = ExecutableOf(process.get());
    if (!SameFile(path, executable))
        return name + " is " + ToDisplay(path) + ", not " + ToDisplay(executable) +
               "; quit it (Pellwick.exe --quit), or give this installation a data folder of its own "
               "(PELLWICK_SIMULATOR_DATA)";
    return {};
}

} // namespace Kestrany::Agent
